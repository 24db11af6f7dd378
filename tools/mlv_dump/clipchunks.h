// SPDX-License-Identifier: MIT
#pragma once

#include "mlv/blocks.h"
#include "mlv_dump/slate.h"

#include <cstdint>
#include <string>

namespace mlvdump {

/// The chunks of a WAV file by which an editor finds the picture that the sound belongs to: "bext"
/// (EBU Tech 3285, version 1), which tells the time of the first sample in samples since midnight,
/// and "iXML", which tells the rate of the timecode too. `firstFrame` is the number of the frame
/// that the sound begins with.
std::string clipChunks(const Slate &slate, std::uint64_t firstFrame, const mlv::WaveInfo &info);

} // namespace mlvdump
