// SPDX-License-Identifier: MIT
#pragma once

#include "dcraw/cores.h"

#include <future>
#include <system_error>
#include <thread>
#include <vector>

namespace dcraw {

/// Calls `work()` on up to `threads` threads at the same time, the caller's being one of them, and
/// returns when all have ended. Where the system has no further thread to give, it does with fewer.
/// Throws what one of the calls has thrown.
template <typename Work>
void onThreads(unsigned threads, const Work &work)
{
    const Cores cores;
    std::vector<std::future<void>> results;
    std::vector<std::jthread> others;
    try {
        while (others.size() + 1 < threads) {
            std::packaged_task<void()> task([&cores, &work] {
                cores.useAll();
                work();
            });
            auto result = task.get_future();
            others.emplace_back(std::move(task));
            cores.takeElsewhere(others.back());
            results.push_back(std::move(result));
        }
    } catch (const std::system_error &) {
    }
    work();
    for (auto &result : results)
        result.get();
}

} // namespace dcraw
