// SPDX-License-Identifier: MIT
#pragma once

#include "mlv/recording.h"
#include "mlv_dump/options.h"

#include <cstdint>
#include <string>
#include <vector>

namespace mlvdump {

/// A frame to be written.
struct PlannedFrame
{
    std::uint32_t number;        ///< from 0, without gaps in the whole recording
    const mlv::DataBlock *block; ///< where it comes from: its own frame or the one before a gap
};

struct FramePlan
{
    std::vector<PlannedFrame> frames;
    std::uint32_t startsBehind = 0;   ///< frames between the first one's block and itself
    bool reachesEnd = false;          ///< holds the last frame of the recording
    std::vector<std::string> remarks; ///< what a person should know of it, a sentence each
};

/// Which frames are written, in order. The first frame of the recording is number 0. A frame that
/// the camera dropped is filled by the one before it, so that sound and picture stay in step,
/// unless more frames are missing than a recording of this length can have lost: then the numbers
/// are wrong. The recording outlives the plan.
FramePlan planFrames(const mlv::DataIndex &frames, const FrameRange &range);

} // namespace mlvdump
