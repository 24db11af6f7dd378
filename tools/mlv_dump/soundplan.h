// SPDX-License-Identifier: MIT
#pragma once

#include "mlv/recording.h"

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace mlvdump {

/// A stretch of the sound: some silence, then `bytes` of a block's data from `skip` on.
struct SoundPiece
{
    std::uint64_t silence; ///< bytes
    const mlv::DataBlock *block;
    std::uint32_t skip;  ///< bytes
    std::uint32_t bytes; ///< skip + bytes are at most block->size
};

struct SoundPlan
{
    std::vector<SoundPiece> pieces;
    std::uint64_t bytes = 0;           ///< of all pieces
    std::vector<std::string> warnings; ///< a sentence each
};

inline constexpr auto endless = std::numeric_limits<std::uint64_t>::max();

/// Lays the blocks out so that the sound starts `lead` bytes behind the picture, or before it when
/// `lead` is negative: then the sound before the picture is left out. A lost block leaves silence
/// of the size of the first one. More silence than `mostSilence` bytes in one place can't be true
/// and is left out. What lies behind `mostBytes` is cut off. The blocks outlive the plan.
SoundPlan planSound(const mlv::DataIndex &blocks, std::int64_t lead, std::uint64_t mostSilence,
                    std::uint64_t mostBytes = endless);

} // namespace mlvdump
