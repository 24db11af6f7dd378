// SPDX-License-Identifier: MIT
#pragma once

#include "mlv/frameformat.h"
#include "mlv/recording.h"

#include <cstdint>
#include <optional>
#include <span>

namespace mlvdump {

/// What the samples of one frame say of the sensor's range.
struct FrameExtremes
{
    int darkest;             ///< the level below which one in a thousand samples lies
    int brightest;           ///< the highest level that isn't reached by a few stray samples alone
    std::optional<int> clip; ///< where samples pile up because the sensor can't go higher
};

/// `samples` are pairs of rows of a frame of that format.
FrameExtremes frameExtremes(std::span<const std::uint16_t> samples, const mlv::FrameFormat &format);

/// The range that the sensor really had, found in frames spread over the whole recording.
struct LevelSurvey
{
    int darkest;             ///< of all surveyed frames
    std::optional<int> clip; ///< none where no frame clips, or where samples lie above
};

/// Decodes at most 256 frames, on several threads; damaged ones are left out. None where no frame
/// is left. Throws raw::ReadError, or raw::Error where the frames can't be read at all.
std::optional<LevelSurvey> surveyLevels(const mlv::Recording &recording, unsigned threads);

} // namespace mlvdump
