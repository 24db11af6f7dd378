// SPDX-License-Identifier: MIT
#pragma once

#include "mlv/framedecoder.h"
#include "mlv_dump/frameplan.h"

#include <cstddef>
#include <span>

namespace mlvdump {

/// How many of the frames before the first good one are damaged. That one stands in for them: they
/// have none before them. Throws mlv::ReadError, or mlv::Error when no frame can be decoded.
[[nodiscard]] std::size_t leadingDamage(mlv::FrameDecoder &decoder,
                                        std::span<const PlannedFrame> frames);

/// The last of the frames that isn't damaged: it stands in for those behind it. Throws likewise.
[[nodiscard]] const mlv::DataBlock *lastGood(mlv::FrameDecoder &decoder,
                                             std::span<const PlannedFrame> frames);

} // namespace mlvdump
