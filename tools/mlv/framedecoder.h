// SPDX-License-Identifier: MIT
#pragma once

#include "mlv/frameformat.h"
#include "mlv/recording.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace mlv {

enum class Compression {
    None,
    LosslessJpeg,
    Lzma,
};

/// Reads frames of a recording. It keeps its buffers from frame to frame: one decoder a thread.
class FrameDecoder
{
public:
    /// Throws raw::Error when the frames of the recording can't be read at all. The recording
    /// outlives the decoder.
    explicit FrameDecoder(const Recording &recording);

    const FrameFormat &format() const { return m_format; }
    Compression compression() const { return m_compression; }

    /// The samples of a frame, row by row. They stay until the next call. Throws raw::Error when
    /// the frame is damaged.
    std::span<std::uint16_t> decode(const DataBlock &block);

    /// Every `step`-th pair of rows, from the top, one pair behind the other: where the frame isn't
    /// compressed, only they are read. They stay until the next call. Throws raw::Error when the
    /// frame is damaged.
    std::span<std::uint16_t> decodeRowPairs(const DataBlock &block, int step);

    /// The packed samples of a frame, into format().packedBytes() bytes, without a buffer in
    /// between; not for recordings with lossless JPEG. Throws raw::Error when the frame is damaged.
    void decodePacked(const DataBlock &block, std::span<std::byte> packed);

    /// Throws raw::Error when the frame can't be there in whole. Memory for a frame is taken only
    /// behind this, so that no forged size makes anybody take more than the recording's own size
    /// justifies.
    void requirePlausible(const DataBlock &block) const;

private:
    void decodeLossless(const DataBlock &block);
    std::span<const std::byte> readData(const DataBlock &block);

    const Recording &m_recording;
    FrameFormat m_format;
    Compression m_compression;
    std::vector<std::byte> m_data;
    std::vector<std::byte> m_packed;
    std::vector<std::uint16_t> m_samples;
};

} // namespace mlv
