// SPDX-License-Identifier: MIT
#pragma once

#include "cr2hdr/model.h"
#include "dng/rawfile.h"

#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace dualiso {

/// What was found out about a recording before any of its frames is blended.
struct Survey
{
    dng::RawFormat format;      ///< that of its frames
    std::optional<Model> model; ///< nothing if there is nothing to blend
    std::string reason;         ///< without a model: why
    bool failed = false;        ///< without a model: its rows alternate, but could not be matched
};

/// Looks at some frames from all over the recording. Files that cannot be read, and those that were
/// blended before, count as if they weren't there; nothing if no file is left.
[[nodiscard]] std::optional<Survey> survey(std::span<const std::filesystem::path> paths);

} // namespace dualiso
