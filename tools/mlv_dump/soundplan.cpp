// SPDX-License-Identifier: MIT
#include "mlv_dump/soundplan.h"

#include <algorithm>

namespace mlvdump {

namespace {

/// Appends as much of the piece as there is room for.
void append(SoundPlan &plan, SoundPiece piece, std::uint64_t mostBytes)
{
    piece.silence = std::min(piece.silence, mostBytes - plan.bytes);
    plan.bytes += piece.silence;
    piece.bytes =
        static_cast<std::uint32_t>(std::min<std::uint64_t>(piece.bytes, mostBytes - plan.bytes));
    plan.bytes += piece.bytes;
    plan.pieces.push_back(piece);
}

} // namespace

SoundPlan planSound(const mlv::DataIndex &blocks, std::int64_t lead, std::uint64_t mostSilence,
                    std::uint64_t mostBytes)
{
    SoundPlan plan;
    std::uint64_t toSkip = lead < 0 ? static_cast<std::uint64_t>(-lead) : 0;
    std::uint64_t silenceLeft = mostSilence;
    std::size_t lost = 0;
    std::size_t jumps = 0;
    for (std::size_t i = 0; i < blocks.size() && plan.bytes < mostBytes; ++i) {
        const auto &block = blocks[i];
        std::uint64_t silence = lead > 0 && i == 0 ? static_cast<std::uint64_t>(lead) : 0;
        if (i > 0) {
            const std::uint64_t missing = block.number - blocks[i - 1].number - 1;
            silence = missing * blocks.front().size;
            lost += silence <= silenceLeft ? missing : 0;
        }
        if (silence > silenceLeft) {
            ++jumps;
            silence = 0;
        }
        silenceLeft -= silence;
        const std::uint64_t skippedSilence = std::min(toSkip, silence);
        toSkip -= skippedSilence;
        const auto skip = static_cast<std::uint32_t>(std::min<std::uint64_t>(toSkip, block.size));
        toSkip -= skip;
        append(plan, {silence - skippedSilence, &block, skip, block.size - skip}, mostBytes);
    }
    if (lost > 0)
        plan.warnings.push_back(std::to_string(lost) + " lost sound blocks are silent");
    if (jumps > 0) {
        plan.warnings.push_back("the times or numbers of the sound jump too far to be true in " +
                                std::to_string(jumps) + " places, which are left out");
    }
    return plan;
}

} // namespace mlvdump
