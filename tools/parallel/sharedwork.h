// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <exception>
#include <mutex>
#include <thread>
#include <vector>

namespace parallel {

/// Has up to `threads` threads, at least one, share the numbers from 0 to below `count`. Each takes
/// the next one when it is free and gives it to what `makeWork()` answers it at its start, which
/// keeps what a thread needs from number to number. The first exception ends the work, each thread
/// after the number that it is at, and is thrown here.
template <typename MakeWork>
void shareWork(std::size_t count, std::size_t threads, const MakeWork &makeWork)
{
    std::atomic<std::size_t> next = 0;
    std::mutex mutex;
    std::exception_ptr error; // guarded by mutex
    const auto run = [&] {
        try {
            auto work = makeWork();
            for (std::size_t i = next++; i < count; i = next++)
                work(i);
        } catch (...) {
            next = count;
            const std::lock_guard lock(mutex);
            if (!error)
                error = std::current_exception();
        }
    };
    {
        std::vector<std::jthread> others;
        while (others.size() + 1 < std::min(threads, count))
            others.emplace_back(run);
        run();
    }
    if (error)
        std::rethrow_exception(error);
}

} // namespace parallel
