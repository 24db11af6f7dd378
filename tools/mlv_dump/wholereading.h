// SPDX-License-Identifier: MIT
#pragma once

#include "mlv/recording.h"

#include <cstdint>
#include <functional>
#include <set>

namespace mlvdump {

/// What a reading of the whole recording couldn't have.
struct Unread
{
    std::set<std::uint32_t> damagedFrames; ///< their numbers
    std::uint64_t unreadableBytes = 0;     ///< of the pieces in which the disk failed
};

/// Told now and then of the bytes that are read, on any thread, one call at a time.
using ReadingProgress = std::function<void(std::uint64_t done, std::uint64_t total)>;

/// Reads every byte of the recording, in the order in which it lies on the disk, and decodes every
/// frame that is compressed, on several threads. Of frames that aren't compressed every sample
/// could be true: being there is all that can be asked of them. Throws raw::Error when frames of
/// that recording can't be read at all.
Unread readWhole(const mlv::Recording &recording, unsigned threads,
                 const ReadingProgress &progress);

} // namespace mlvdump
