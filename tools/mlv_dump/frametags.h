// SPDX-License-Identifier: MIT
#pragma once

#include "dng/ifd.h"
#include "mlv/frameformat.h"
#include "mlv/recording.h"
#include "mlv_dump/colour.h"
#include "mlv_dump/slate.h"

#include <optional>
#include <string>

namespace mlvdump {

/// What the DNG files of a recording say of their frames. Nothing changes after construction, so
/// that threads may share it.
class FrameTags
{
public:
    /// What is the same for all frames and isn't recorded.
    struct Choices
    {
        std::optional<Neutral> neutral{}; ///< none: the camera's
        double exposure = 0;              ///< beside the recorded bias, EV
        std::optional<Slate> slate{};     ///< of a CinemaDNG clip
    };

    /// `matrix` leads from XYZ to the camera's colours; `reelName` is what the recording is called.
    /// The recording has a RAWI block; it outlives the tags. With a slate the frames are those of a
    /// CinemaDNG clip: its rate and timecodes in place of the recorded rate and of timecodes that
    /// begin at 0, and the fraction of the second.
    FrameTags(const mlv::Recording &recording, const mlv::FrameFormat &format,
              const ColourMatrix &matrix, const std::string &reelName, const Choices &choices);
    FrameTags(const mlv::Recording &recording, const mlv::FrameFormat &format,
              const ColourMatrix &matrix, const std::string &reelName)
        : FrameTags(recording, format, matrix, reelName, Choices{})
    {
    }

    /// The image directory of the frame of that number from `block`, but for the strip.
    dng::Ifd image(std::uint32_t number, const mlv::DataBlock &block) const;
    dng::Ifd exif(const mlv::DataBlock &block) const;

private:
    void setShape(const mlv::FrameFormat &format);
    void setCamera();
    void setLevels(const mlv::FrameFormat &format);
    void setBias(const dng::SRational &bias);
    void setColour();
    void setAreas(const mlv::FrameFormat &format);
    void setRate();
    void setTimeCode(dng::Ifd &image, std::uint32_t number) const;
    std::string dateTime(std::uint64_t timestamp) const;

    const mlv::Recording &m_recording;
    ColourMatrix m_matrix;
    Choices m_choices;
    dng::Ifd m_common; ///< what is the same in all frames
};

} // namespace mlvdump
