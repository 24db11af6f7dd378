// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace dcraw {

/// How many threads a frame is developed on: one for each core that this process may use, but no
/// more than have work for some milliseconds.
unsigned threadsFor(std::int64_t pixels);

} // namespace dcraw
