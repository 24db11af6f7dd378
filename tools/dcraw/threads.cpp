// SPDX-License-Identifier: MIT
#include "dcraw/threads.h"

#include <algorithm>

#include <sched.h>

namespace dcraw {

unsigned threadsFor(std::int64_t pixels)
{
    // Some two milliseconds of work: a thread takes a twentieth of that to start.
    constexpr std::int64_t pixelsPerThread = 250000;
    constexpr std::int64_t mostThreads = 16;
    cpu_set_t cores;
    // On a machine with more cores than the set has room for, one is all that is certain.
    const std::int64_t usable =
        ::sched_getaffinity(0, sizeof cores, &cores) == 0 ? CPU_COUNT(&cores) : 1;
    const std::int64_t busy = std::min(pixels / pixelsPerThread, mostThreads);
    return static_cast<unsigned>(std::max<std::int64_t>(1, std::min(usable, busy)));
}

} // namespace dcraw
