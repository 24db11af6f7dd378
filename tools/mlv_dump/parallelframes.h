// SPDX-License-Identifier: MIT
#pragma once

#include "mlv/framedecoder.h"
#include "parallel/sharedwork.h"

#include <span>

namespace mlvdump {

/// Calls `work(decoder, block)` once for each of the blocks, on up to `threads` threads at once and
/// in no order; each thread has a decoder of its own. The first exception ends the work and is
/// thrown here.
template <typename Work>
void forEachFrame(const mlv::Recording &recording, std::span<const mlv::DataBlock> blocks,
                  unsigned threads, Work work)
{
    parallel::shareWork(blocks.size(), threads, [&] {
        return [&, decoder = mlv::FrameDecoder(recording)](std::size_t i) mutable {
            work(decoder, blocks[i]);
        };
    });
}

} // namespace mlvdump
