// SPDX-License-Identifier: MIT
#pragma once

#include "mlv_dump/calibration.h"
#include "mlv_dump/colour.h"

#include <optional>

namespace mlvdump {

/// What the camera saw of white surfaces, one answer for the whole recording: the colour that the
/// light parts of its frames have most in common, where daylight and lamps could have it; where
/// nothing has such a colour, what all parts have in common. It is the same on every run and for
/// any number of threads.
///
/// Decodes at most 24 frames, spread over the recording, and calibrates them; damaged ones are left
/// out. `format` has the levels at which samples begin and end. None where everything is dark or
/// clipped. Throws raw::ReadError, or raw::Error where the frames can't be read at all.
std::optional<Neutral> surveyBalance(const mlv::Recording &recording,
                                     const Calibration &calibration, const mlv::FrameFormat &format,
                                     const ColourMatrix &matrix, unsigned threads);

} // namespace mlvdump
