// SPDX-License-Identifier: MIT
#include "mlv_dump/frameencoder.h"

#include "dng/filehead.h"
#include "mlv_dump/repairsurvey.h"

#include <algorithm>

namespace mlvdump {

FrameEncoder::FrameEncoder(const mlv::Recording &recording, const Calibration &calibration,
                           const FrameTags &tags, const Repair *repair)
    : m_calibration(calibration)
    , m_tags(tags)
    , m_decoder(recording)
{
    if (repair != nullptr && !repair->isEmpty())
        m_repairer.emplace(*repair);
}

std::span<const std::byte> FrameEncoder::encode(const PlannedFrame &frame)
{
    const auto &format = m_decoder.format();
    const bool isLossless = m_decoder.compression() == mlv::Compression::LosslessJpeg;
    const bool rowsEndWithWords = format.width * format.bitsPerSample % 16 == 0;
    const bool onlyPixels = !m_repairer || m_repairer->leavesColumns();
    if (m_calibration.isEmpty() && onlyPixels && !isLossless && rowsEndWithWords)
        encodePacked(frame);
    else
        encodeSamples(frame);
    return m_file;
}

/// Puts everything before the strip into the file and answers the place of the strip.
std::span<std::byte> FrameEncoder::beginFile(const PlannedFrame &frame, std::size_t stripBytes)
{
    const auto head =
        dng::encodeFileHead(m_tags.image(frame.number, *frame.block), m_tags.exif(*frame.block),
                            static_cast<std::uint32_t>(stripBytes));
    m_file.resize(head.size() + stripBytes);
    std::copy(head.begin(), head.end(), m_file.begin());
    return std::span(m_file).subspan(head.size());
}

/// A DNG has the same stream of bits, in words of the other byte order.
void FrameEncoder::encodePacked(const PlannedFrame &frame)
{
    m_decoder.requirePlausible(*frame.block);
    const auto strip = beginFile(frame, m_decoder.format().packedBytes());
    m_decoder.decodePacked(*frame.block, strip);
    if (m_decoder.format().bitsPerSample != 16)
        raw::swapWordBytes(strip);
    if (m_repairer) {
        m_repairer->apply(raw::PackedSamples(strip, m_decoder.format().bitsPerSample),
                          cropOf(*frame.block));
    }
}

void FrameEncoder::encodeSamples(const PlannedFrame &frame)
{
    const auto samples = m_decoder.decode(*frame.block);
    m_calibration.apply(samples);
    if (m_repairer)
        m_repairer->apply(samples, cropOf(*frame.block));
    const auto &format = m_decoder.format();
    const auto width = static_cast<std::size_t>(format.width);
    const auto order =
        format.bitsPerSample == 16 ? raw::WordOrder::LittleEndian : raw::WordOrder::BigEndian;
    auto strip = beginFile(frame, rowBytes() * static_cast<std::size_t>(format.height));
    if (rowBytes() * 8 == width * static_cast<std::size_t>(format.bitsPerSample) &&
        rowBytes() % 2 == 0) {
        raw::packSamples(samples, format.bitsPerSample, order, strip);
        return;
    }
    // The rows of a DNG start at whole bytes, those of a recording do not.
    std::vector<std::byte> row(raw::packedSize(width, format.bitsPerSample));
    for (std::size_t start = 0; start < samples.size(); start += width) {
        raw::packSamples(samples.subspan(start, width), format.bitsPerSample, order, row);
        std::copy_n(row.begin(), rowBytes(), strip.begin());
        strip = strip.subspan(rowBytes());
    }
}

std::size_t FrameEncoder::rowBytes() const
{
    const auto &format = m_decoder.format();
    return (static_cast<std::size_t>(format.width) *
                static_cast<std::size_t>(format.bitsPerSample) +
            7) /
           8;
}

} // namespace mlvdump
