// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <span>

namespace dualiso {

/// Blends the frames of one recording in place and prints what it finds. Answers whether none
/// failed; a frame that needs no blending has not failed.
[[nodiscard]] bool blendRecording(std::span<const std::filesystem::path> paths);

} // namespace dualiso
