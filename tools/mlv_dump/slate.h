// SPDX-License-Identifier: MIT
#pragma once

#include "mlv/recording.h"
#include "mlv_dump/cameraclock.h"
#include "mlv_dump/framerate.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>

namespace mlvdump {

/// The bytes of the tag TimeCodes: hours, minutes, seconds and the frame in its second, below 40,
/// as binary coded decimals, the smallest first. Hours begin anew after a day.
std::array<std::uint8_t, 8> timeCodeBytes(std::uint64_t seconds, std::uint64_t frame);

/// What the frames and the sound of a CinemaDNG clip say alike, so that an editor takes them for
/// one clip: the exact rate, and a timecode that begins with what the camera's clock showed when it
/// was read first, as that of a movie does. It never drops a number, so that at 29.97 frames a
/// second it falls behind the clock.
struct Slate
{
    FrameRate rate;
    std::uint64_t firstNumber;       ///< of frame 0: frames of timecode since midnight
    std::optional<CameraTime> begin; ///< of frame 0
    std::string reel;                ///< ASCII
    std::uint64_t guid;              ///< of the recording

    /// The tag TimeCodes of a frame. Above 30 frames a second two share a number, of which the
    /// second has the field bit. Nothing above 79, whose numbers don't fit.
    std::optional<std::array<std::uint8_t, 8>> timeCode(std::uint64_t frame) const;
};

/// `reelName` is what the recording is called. Throws raw::Error when it has no frame rate.
Slate slateOf(const mlv::Recording &recording, const std::string &reelName);

} // namespace mlvdump
