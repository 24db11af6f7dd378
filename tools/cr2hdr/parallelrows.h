// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <thread>
#include <vector>

namespace dualiso {

/// Calls `work(first, end)` for runs of rows that together are 0 to `height`, each run on a thread
/// of its own, and returns when all have ended. `work` doesn't throw.
template <typename Work>
void parallelRows(int height, int threads, const Work &work)
{
    std::vector<std::jthread> others;
    const int share = (height + threads - 1) / threads;
    for (int first = share; first < height; first += share)
        others.emplace_back(work, first, std::min(first + share, height));
    work(0, std::min(share, height));
}

} // namespace dualiso
