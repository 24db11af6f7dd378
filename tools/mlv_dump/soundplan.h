// SPDX-License-Identifier: MIT
#pragma once

#include "mlv/recording.h"

#include <cstdint>
#include <string>
#include <vector>

namespace mlvdump {

/// A stretch of the sound: some silence, then the data of a block from `skip` on.
struct SoundPiece
{
    std::uint64_t silence; ///< bytes
    const mlv::DataBlock *block;
    std::uint32_t skip; ///< bytes, at most block->size
};

struct SoundPlan
{
    std::vector<SoundPiece> pieces;
    std::uint64_t bytes = 0;           ///< of all pieces
    std::vector<std::string> warnings; ///< a sentence each
};

/// Lays the blocks out so that the sound starts `lead` bytes behind the picture, or before it when
/// `lead` is negative: then the sound before the picture is left out. A lost block leaves silence
/// of the size of the first one. More silence than `mostSilence` bytes in one place cannot be true
/// and is left out. The blocks outlive the plan.
[[nodiscard]] SoundPlan planSound(const mlv::DataIndex &blocks, std::int64_t lead,
                                  std::uint64_t mostSilence);

} // namespace mlvdump
