// SPDX-License-Identifier: MIT
#pragma once

#include "cr2hdr/model.h"
#include "dng/rawfile.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string_view>

namespace dualiso {

/// Why there is nothing to blend.
enum class Obstacle {
    None,
    Unclear,    ///< too dark or too bright to tell
    NotDualIso, ///< the rows don't alternate
    Unmatched,  ///< they do, but the two exposures could not be matched: a failure
};

/// For a person.
std::string_view textOf(Obstacle obstacle);

/// What was found out about a recording before any of its frames is blended.
struct Survey
{
    dng::RawFormat format;      ///< that of its frames
    std::uint64_t origin = 0;   ///< originOf() them
    std::optional<Model> model; ///< nothing if there is nothing to blend
    Obstacle obstacle = Obstacle::None;
};

/// Looks at some frames from all over the recording. Files that can't be read, and those that were
/// blended before, count as if they weren't there; nothing if no file is left.
std::optional<Survey> survey(std::span<const std::filesystem::path> paths);

/// Keeps the survey for calls with other frames of the recording. Throws output::WriteError.
void writeSurvey(const Survey &survey, const std::filesystem::path &path);

/// Reads a survey that was kept. Throws surveyfile::SurveyError when it isn't one, or not that of
/// the first of the frames that can be read.
Survey readSurvey(const std::filesystem::path &path, std::span<const std::filesystem::path> frames);

} // namespace dualiso
