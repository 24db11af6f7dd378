// SPDX-License-Identifier: MIT
#include "mlv_dump/standin.h"

#include "raw/error.h"

#include <algorithm>

namespace mlvdump {
namespace {

bool isGood(mlv::FrameDecoder &decoder, const PlannedFrame &frame)
{
    try {
        decoder.decode(*frame.block);
        return true;
    } catch (const raw::ReadError &) {
        throw;
    } catch (const raw::Error &) {
        return false;
    }
}

template <typename Iterator>
Iterator firstGood(mlv::FrameDecoder &decoder, Iterator begin, Iterator end)
{
    const auto good =
        std::find_if(begin, end, [&](const auto &frame) { return isGood(decoder, frame); });
    if (good == end)
        throw raw::Error("holds no frame that can be decoded");
    return good;
}

} // namespace

std::size_t leadingDamage(mlv::FrameDecoder &decoder, std::span<const PlannedFrame> frames)
{
    return static_cast<std::size_t>(firstGood(decoder, frames.begin(), frames.end()) -
                                    frames.begin());
}

const mlv::DataBlock *lastGood(mlv::FrameDecoder &decoder, std::span<const PlannedFrame> frames)
{
    return firstGood(decoder, frames.rbegin(), frames.rend())->block;
}

} // namespace mlvdump
