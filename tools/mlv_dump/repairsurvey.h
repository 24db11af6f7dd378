// SPDX-License-Identifier: MIT
#pragma once

#include "mlv_dump/calibration.h"
#include "mlv_dump/repair.h"

#include "mlv/recording.h"

#include <filesystem>
#include <string>
#include <vector>

namespace mlvdump {

/// What a person wants repaired.
struct RepairChoice
{
    enum class Pixels {
        Off,
        Auto, ///< those that deviate in frames spread over the whole recording, and those of a map
              ///< that lies beside it
        Map,  ///< those of `map` alone
    };
    Pixels pixels = Pixels::Off;
    std::filesystem::path map{};
    bool columns = false;

    bool isNothing() const { return pixels == Pixels::Off && !columns; }
};

struct FoundRepair
{
    Repair repair;
    std::vector<std::string> remarks; ///< what is repaired, in numbers, a sentence each
};

/// The place of a frame's corner in the read-out. Cameras cut frames so that the pattern of colours
/// begins with red: an odd number is none of theirs.
inline Place cropOf(const mlv::DataBlock &block)
{
    return {block.cropY & ~1, block.cropX & ~1};
}

/// What is to be repaired in every frame of the recording. Looks at calibrated samples, for it is
/// these that are repaired: a dark takes many hot pixels away, a flat evens columns out. `format`
/// has the levels of the frames. Decodes 8 to 16 frames where the choice asks for it, on several
/// threads; damaged ones are left out. Throws MapError, raw::ReadError, or raw::Error where the
/// frames can't be read at all.
FoundRepair findRepair(const mlv::Recording &recording, const std::filesystem::path &recordingPath,
                       const RepairChoice &choice, const mlv::FrameFormat &format,
                       const Calibration &calibration, unsigned threads);

} // namespace mlvdump
