// SPDX-License-Identifier: MIT
#pragma once

#include "mlv/framedecoder.h"
#include "mlv_dump/frameplan.h"

#include <cstddef>
#include <span>

namespace mlvdump {

/// How many of the frames before the first good one are damaged. That one stands in for them: they
/// have none before them. Throws raw::ReadError, or raw::Error when no frame can be decoded.
std::size_t leadingDamage(mlv::FrameDecoder &decoder, std::span<const PlannedFrame> frames);

/// The last of the frames that isn't damaged: it stands in for those behind it. Throws likewise.
const mlv::DataBlock *lastGood(mlv::FrameDecoder &decoder, std::span<const PlannedFrame> frames);

} // namespace mlvdump
