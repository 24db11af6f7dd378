// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <span>

namespace output {

/// Writes all bytes, in one write() where the system takes them in one piece. False, with errno
/// set, when it refuses.
[[nodiscard]] bool writeAll(int descriptor, std::span<const std::byte> bytes);

} // namespace output
