// SPDX-License-Identifier: MIT
#pragma once

#include "mlv/framedecoder.h"
#include "mlv_dump/calibration.h"
#include "mlv_dump/frameplan.h"
#include "mlv_dump/framerepairer.h"
#include "mlv_dump/frametags.h"

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

namespace mlvdump {

/// Makes DNG files of frames. Their samples are not compressed, whatever the recording's are: few
/// readers take lossless JPEG in the shapes and with the predictors that cameras use. It keeps its
/// buffers from frame to frame: one encoder a thread.
class FrameEncoder
{
public:
    /// The arguments outlive the encoder. Frames are repaired after they are calibrated.
    FrameEncoder(const mlv::Recording &recording, const Calibration &calibration,
                 const FrameTags &tags, const Repair *repair = nullptr);

    /// The whole file. It stays until the next call. Throws raw::Error when the frame is damaged.
    std::span<const std::byte> encode(const PlannedFrame &frame);

private:
    std::span<std::byte> beginFile(const PlannedFrame &frame, std::size_t stripBytes);
    void encodePacked(const PlannedFrame &frame);
    void encodeSamples(const PlannedFrame &frame);
    std::size_t rowBytes() const;

    const Calibration &m_calibration;
    const FrameTags &m_tags;
    mlv::FrameDecoder m_decoder;
    std::optional<FrameRepairer> m_repairer; ///< none where nothing is repaired
    std::vector<std::byte> m_file;
};

} // namespace mlvdump
