// SPDX-License-Identifier: MIT
#pragma once

#include "mlv/recording.h"
#include "mlv_dump/options.h"
#include "mlv_dump/output.h"
#include "mlv_dump/survey.h"

#include <cstddef>

namespace mlvdump {

/// Writes frames and sound as the options ask, and says what a person should know of them; or
/// writes the sound and a survey of what the frames need. With a `known` survey, of this recording,
/// it writes frames alone and says nothing but what becomes of them; null: none. Answers the number
/// of frames. Throws RefusedOutput, output::WriteError, CalibrationError, MapError, mlv::Error.
std::size_t runFrames(const Options &options, const mlv::Recording &recording, const Survey *known,
                      Output &output);

} // namespace mlvdump
