// SPDX-License-Identifier: MIT
#include "mlv/framedecoder.h"

#include "mlv/lzmaframe.h"
#include "raw/error.h"
#include "raw/losslessjpeg.h"

#include <algorithm>

namespace mlv {
namespace {

FrameFormat checkedFormat(const Recording &recording)
{
    if (!recording.rawInfo())
        throw raw::Error("does not say what its frames look like (no RAWI block)");
    if (recording.changesFormat())
        throw raw::Error("changes the size or depth of its frames on the way, which can't be read");
    return frameFormat(*recording.rawInfo());
}

Compression checkedCompression(const FileHeader &header)
{
    const std::uint16_t videoClass = header.videoClass;
    if ((videoClass & videoclass::kindMask) != videoclass::raw)
        throw raw::Error("holds no raw video");
    switch (videoClass & ~videoclass::kindMask) {
    case 0:
        return Compression::None;
    case videoclass::losslessJpeg:
        return Compression::LosslessJpeg;
    case videoclass::lzma:
        return Compression::Lzma;
    case videoclass::delta:
    case videoclass::delta | videoclass::losslessJpeg:
    case videoclass::delta | videoclass::lzma:
        throw raw::Error("has frames that are stored as differences, which can't be read");
    default:
        throw raw::Error("has frames of a compression that can't be read");
    }
}

} // namespace

FrameDecoder::FrameDecoder(const Recording &recording)
    : m_recording(recording)
    , m_format(checkedFormat(recording))
    , m_compression(checkedCompression(recording.header()))
{
}

std::span<std::uint16_t> FrameDecoder::decode(const DataBlock &block)
{
    requirePlausible(block);
    if (m_compression == Compression::LosslessJpeg) {
        decodeLossless(block);
        return m_samples;
    }
    m_packed.resize(m_format.packedBytes());
    decodePacked(block, m_packed);
    m_samples.resize(m_format.sampleCount());
    raw::unpackSamples(m_packed, m_format.bitsPerSample, raw::WordOrder::LittleEndian, m_samples);
    return m_samples;
}

std::span<std::uint16_t> FrameDecoder::decodeRowPairs(const DataBlock &block, int step)
{
    const auto pairSamples = 2 * static_cast<std::size_t>(m_format.width);
    const auto bits = static_cast<std::size_t>(m_format.bitsPerSample);
    const bool isApart = m_compression == Compression::None && pairSamples * bits % 16 == 0;
    if (isApart) {
        requirePlausible(block);
        m_samples.resize(m_format.sampleCount());
        m_packed.resize(raw::packedSize(pairSamples, m_format.bitsPerSample));
    } else {
        decode(block);
    }
    std::size_t kept = 0;
    for (int row = 0; row + 1 < m_format.height; row += 2 * step) {
        const auto pair = std::span(m_samples).subspan(kept, pairSamples);
        const auto index = static_cast<std::size_t>(row / 2);
        if (isApart) {
            auto packed = block;
            packed.offset += index * m_packed.size();
            m_recording.read(packed, m_packed);
            raw::unpackSamples(m_packed, m_format.bitsPerSample, raw::WordOrder::LittleEndian,
                               pair);
        } else {
            std::copy_n(m_samples.begin() + static_cast<std::ptrdiff_t>(index * pairSamples),
                        pairSamples, pair.begin());
        }
        kept += pairSamples;
    }
    return std::span(m_samples).first(kept);
}

void FrameDecoder::decodePacked(const DataBlock &block, std::span<std::byte> packed)
{
    requirePlausible(block);
    if (m_compression == Compression::Lzma)
        decodeLzmaFrame(readData(block), packed);
    else
        m_recording.read(block, packed);
}

void FrameDecoder::decodeLossless(const DataBlock &block)
{
    m_samples.resize(m_format.sampleCount());
    raw::decodeLosslessJpeg(readData(block), m_samples);
    const bool tooLarge =
        std::any_of(m_samples.begin(), m_samples.end(),
                    [level = m_format.maxLevel()](std::uint16_t sample) { return sample > level; });
    if (tooLarge)
        throw raw::Error("has a lossless picture with levels beyond its depth");
}

void FrameDecoder::requirePlausible(const DataBlock &block) const
{
    bool plausible = false;
    switch (m_compression) {
    case Compression::None:
        plausible = block.size >= m_format.packedBytes();
        break;
    case Compression::LosslessJpeg:
        // A sample costs at least one bit.
        plausible = m_format.sampleCount() / 8 <= block.size;
        break;
    case Compression::Lzma:
        plausible = canLzmaFrameHold(block.size, m_format.packedBytes());
        break;
    }
    if (!plausible)
        throw raw::Error("has a frame that is cut off");
}

std::span<const std::byte> FrameDecoder::readData(const DataBlock &block)
{
    m_data.resize(block.size);
    m_recording.read(block, m_data);
    return m_data;
}

} // namespace mlv
