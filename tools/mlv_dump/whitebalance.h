// SPDX-License-Identifier: MIT
#pragma once

#include "mlv_dump/calibration.h"
#include "mlv_dump/colour.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace mlvdump {

/// Which white the frames of a recording are developed for.
struct BalanceChoice
{
    enum class Kind {
        Camera, ///< that of the camera's setting, which may change on the way
        Auto,   ///< one that is found in the frames
        Kelvin, ///< daylight of `kelvin`
        Given,  ///< `neutral`
    };
    Kind kind = Kind::Camera;
    double kelvin = 0;
    Neutral neutral{};
};

/// "camera", "auto", a colour temperature from 2000 to 25000, or "R,G,B", what the camera's colours
/// are multiplied by. None when it is none of these.
std::optional<BalanceChoice> parseBalance(std::string_view text);

struct FrameBalance
{
    std::optional<Neutral> neutral;   ///< the same for every frame; none: the camera's
    std::vector<std::string> remarks; ///< what was found, a sentence each
};

/// What the choice means for a recording. `format` has the levels at which its samples begin and
/// end; `matrix` is the one of its frames. Decodes frames where the choice asks for it, on several
/// threads. Throws raw::Error.
FrameBalance frameBalance(const mlv::Recording &recording, const BalanceChoice &choice,
                          const Calibration &calibration, const mlv::FrameFormat &format,
                          const ColourMatrix &matrix, unsigned threads);

} // namespace mlvdump
