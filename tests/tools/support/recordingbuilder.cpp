// SPDX-License-Identifier: MIT
#include "recordingbuilder.h"

#include "raw/samples.h"

#include <QFile>
#include <QTest>

RecordingBuilder::RecordingBuilder()
    : header{}
{
    header.type = mlv::blocktype::fileHeader;
    header.size = sizeof header;
    header.version = {'v', '2', '.', '0'};
    header.guid = 42;
    header.chunkCount = 1;
    header.videoClass = mlv::videoclass::raw;
    header.frameRateNumerator = 25000;
    header.frameRateDenominator = 1000;
}

mlv::RawInfo RecordingBuilder::rawInfo()
{
    mlv::RawInfo info{};
    info.width = width;
    info.height = height;
    info.apiVersion = 1;
    info.bitsPerSample = bits;
    info.blackLevel = black;
    info.whiteLevel = 15000;
    info.activeBottom = height;
    info.activeRight = width;
    info.cfaPattern = mlv::cfaRedGreenGreenBlue;
    info.colourMatrix = {6722,  10000, -635,  10000, -963,  10000, -4287, 10000, 12460,
                         10000, 2028,  10000, -908,  10000, 2162,  10000, 5668,  10000};
    return info;
}

mlv::WaveInfo RecordingBuilder::waveInfo()
{
    return {1, 1, 8000, 16000, 2, 16};
}

QByteArray RecordingBuilder::frameOf(std::uint16_t level)
{
    const std::vector<std::uint16_t> samples(std::size_t{width} * height, level);
    QByteArray packed(static_cast<qsizetype>(raw::packedSize(samples.size(), bits)), '\0');
    raw::packSamples(
        samples, bits, raw::WordOrder::LittleEndian,
        std::as_writable_bytes(std::span(packed.data(), static_cast<std::size_t>(packed.size()))));
    return packed;
}

RecordingBuilder &RecordingBuilder::addBytes(mlv::BlockType type, const QByteArray &data,
                                             std::uint64_t timestamp)
{
    const auto size = static_cast<std::uint32_t>(sizeof(mlv::BlockHeader)) +
                      static_cast<std::uint32_t>(data.size());
    const mlv::BlockHeader blockHeader{type, size, timestamp};
    const auto bytes = mlv::encodeLayout(blockHeader);
    m_blocks.append(reinterpret_cast<const char *>(bytes.data()),
                    static_cast<qsizetype>(bytes.size()));
    m_blocks.append(data);
    return *this;
}

RecordingBuilder &RecordingBuilder::addFrame(std::uint32_t number, std::uint16_t level)
{
    return addFrameData(number, frameOf(level));
}

RecordingBuilder &RecordingBuilder::addFrameData(std::uint32_t number, const QByteArray &data)
{
    mlv::VideoFrame frame{};
    frame.number = number;
    return add(mlv::blocktype::videoFrame, frame, std::uint64_t{number} * frameTime, data);
}

RecordingBuilder &RecordingBuilder::addSound(std::uint32_t number, const QByteArray &data,
                                             std::uint64_t timestamp)
{
    return add(mlv::blocktype::audioFrame, mlv::AudioFrame{number, 0}, timestamp, data);
}

RecordingBuilder &RecordingBuilder::addRaw(const QByteArray &bytes)
{
    m_blocks.append(bytes);
    return *this;
}

QByteArray RecordingBuilder::bytes() const
{
    const auto bytes = mlv::encodeLayout(header);
    return QByteArray(reinterpret_cast<const char *>(bytes.data()),
                      static_cast<qsizetype>(bytes.size())) +
           m_blocks;
}

QString RecordingBuilder::write(const QString &path) const
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes()) != bytes().size())
        qFatal("The test's recording can't be written");
    return path;
}
