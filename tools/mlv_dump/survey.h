// SPDX-License-Identifier: MIT
#pragma once

#include "mlv/recordingindex.h"
#include "mlv_dump/colour.h"
#include "mlv_dump/options.h"
#include "mlv_dump/repair.h"

#include <cstdint>
#include <filesystem>
#include <optional>

namespace mlvdump {

/// What has to be known of a whole recording before the first of its frames is written.
struct Survey
{
    mlv::RecordingIndex recording;
    FrameRange selection;        ///< the frames that are the whole to its user
    std::uint32_t firstGood = 0; ///< number of the first of them that isn't damaged
    int blackLevel = 0;
    int whiteLevel = 1;
    std::optional<Neutral> neutral; ///< none: the camera's
    Repair repair;                  ///< its format is complete when it is used
};

/// Keeps the survey for calls with options of the same effect on it. Throws output::WriteError.
void writeSurvey(const Survey &survey, const Options &options, const std::filesystem::path &path);

/// Reads the survey that `options` name. Throws surveyfile::SurveyError when it isn't one, or was
/// made with other options.
Survey readSurvey(const Options &options);

} // namespace mlvdump
