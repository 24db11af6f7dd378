// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <span>

namespace dualiso {

/// Blends the frames of one recording in place and prints what it finds. Answers whether none
/// failed; a frame that needs no blending has not failed.
[[nodiscard]] bool blendRecording(std::span<const std::filesystem::path> paths);

/// Keeps what blendRecording() would have found out, in a file of its own; frames stay as they are.
/// Answers whether that file is there. Throws output::WriteError.
[[nodiscard]] bool surveyRecording(std::span<const std::filesystem::path> paths,
                                   const std::filesystem::path &surveyPath);

/// Blends some frames of a recording, in as many calls as one likes, as blendRecording() would all
/// of them. Throws surveyfile::SurveyError when the survey is not that of these frames.
[[nodiscard]] bool blendSurveyed(std::span<const std::filesystem::path> paths,
                                 const std::filesystem::path &surveyPath);

} // namespace dualiso
