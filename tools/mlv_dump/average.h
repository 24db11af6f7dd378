// SPDX-License-Identifier: MIT
#pragma once

#include "mlv/recording.h"
#include "mlv_dump/calibration.h"
#include "mlv_dump/output.h"

#include <cstdint>
#include <vector>

namespace mlvdump {

struct Average
{
    std::vector<std::uint16_t> samples; ///< the mean, half rounded up
    std::size_t frames;                 ///< that went into it, at least 1
};

/// The average of all frames, each calibrated, on several threads. Damaged frames are left out with
/// a warning. Throws raw::Error when no frame is left, raw::ReadError.
Average averageFrames(const mlv::Recording &recording, const Calibration &calibration,
                      unsigned threads, Output &output);

} // namespace mlvdump
