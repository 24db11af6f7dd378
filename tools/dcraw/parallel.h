// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <future>
#include <system_error>
#include <vector>

namespace dcraw {

/// Calls `work()` on up to `threads` threads at the same time, the caller's being one of them, and
/// returns when all have ended. Where the system has no further thread to give, it does with fewer.
/// Throws what one of the calls has thrown.
template <typename Work>
void onThreads(unsigned threads, const Work &work)
{
    std::vector<std::future<void>> others;
    try {
        while (others.size() + 1 < threads) {
            others.push_back(std::async(std::launch::async, std::cref(work)));
        }
    } catch (const std::system_error &) {
    }
    work();
    for (auto &other : others) {
        other.get();
    }
}

} // namespace dcraw
