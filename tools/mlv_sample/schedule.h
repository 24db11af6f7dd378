// SPDX-License-Identifier: MIT
// Which block comes when in a recording.
#pragma once

#include "mlv_sample/settings.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace sample {

/// One block after the head of the recording.
struct Event
{
    enum class Kind { Frame, Sound, Exposure, Lens, RawInfo };

    Kind kind;
    int number = 0; ///< of the frame or the piece of sound
    std::uint64_t timestamp = 0;
    std::int64_t firstSample = 0; ///< sound: counted from the start of the picture
    std::size_t sampleCount = 0;  ///< sound
    double stops = 0;             ///< exposure: brighter than the settings say
};

/// All blocks of the recording in the order of writing: by time, or disordered if the settings want
/// it; less what they drop, twice what they repeat.
std::vector<Event> schedule(const Settings &settings);

} // namespace sample
