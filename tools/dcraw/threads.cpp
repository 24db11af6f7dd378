// SPDX-License-Identifier: MIT
#include "dcraw/threads.h"

#include "dcraw/cores.h"

#include <algorithm>

namespace dcraw {

unsigned threadsFor(std::int64_t pixels)
{
    // Some two milliseconds of work: a thread takes a twentieth of that to start.
    constexpr std::int64_t pixelsPerThread = 250000;
    constexpr std::int64_t mostThreads = 16;
    const std::int64_t busy = std::min(pixels / pixelsPerThread, mostThreads);
    return static_cast<unsigned>(std::clamp<std::int64_t>(busy, 1, Cores().count()));
}

} // namespace dcraw
