// SPDX-License-Identifier: MIT
#pragma once

#include "mlv/framedecoder.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <span>
#include <thread>
#include <vector>

namespace mlvdump {

/// Calls `work(decoder, block)` once for each of the blocks, on up to `threads` threads at once and
/// in no order; each thread has a decoder of its own. The first exception ends the work and is
/// thrown here.
template <typename Work>
void forEachFrame(const mlv::Recording &recording, std::span<const mlv::DataBlock> blocks,
                  unsigned threads, Work work)
{
    std::atomic<std::size_t> next = 0;
    std::mutex mutex;
    std::exception_ptr failure; // guarded by mutex
    const auto run = [&] {
        try {
            mlv::FrameDecoder decoder(recording);
            for (std::size_t i = next++; i < blocks.size(); i = next++) {
                work(decoder, blocks[i]);
            }
        } catch (...) {
            const std::lock_guard lock(mutex);
            failure = std::current_exception();
            next = blocks.size();
        }
    };
    {
        std::vector<std::jthread> workers;
        for (std::size_t i = 0; i < std::min<std::size_t>(threads, blocks.size()); ++i) {
            workers.emplace_back(run);
        }
    }
    if (failure) {
        std::rethrow_exception(failure);
    }
}

} // namespace mlvdump
