// SPDX-License-Identifier: MIT
#pragma once

#include "mlv/recording.h"
#include "mlv_dump/options.h"
#include "mlv_dump/output.h"
#include "mlv_dump/survey.h"

#include <cstddef>
#include <optional>

namespace mlvdump {

/// Writes frames and sound as the options ask, and says what a person should know of them; or
/// writes the sound and a survey of what the frames need. With a `known` survey, of this recording,
/// it writes frames alone and says nothing but what becomes of them. Answers the number of frames.
/// Throws RefusedOutput, output::WriteError, CalibrationError, MapError, raw::Error.
std::size_t runFrames(const Options &options, const mlv::Recording &recording,
                      const std::optional<Survey> &known, Output &output);

} // namespace mlvdump
