// SPDX-License-Identifier: MIT
#include "mlv_dump/recordingwriter.h"

#include "raw/samples.h"

#include <algorithm>
#include <array>

namespace mlvdump {
namespace {

namespace blocktype = mlv::blocktype;

/// An index would lead to the old places; a filler has nothing to keep on a boundary any more.
bool isCopied(const mlv::BlockType &type)
{
    constexpr std::array leftOut{blocktype::videoFrame, blocktype::audioFrame, blocktype::waveInfo,
                                 blocktype::filler,     blocktype::backup,     blocktype::index};
    return std::find(leftOut.begin(), leftOut.end(), type) == leftOut.end();
}

} // namespace

RecordingWriter::RecordingWriter(const mlv::Recording &source, const std::filesystem::path &path,
                                 std::uint32_t frameCount)
    : m_format(mlv::frameFormat(source.rawInfo().value()))
    , m_file(path)
{
    writeHeader(source.header(), frameCount);
    for (const auto &chunk : source.chunks())
        copyMetadata(chunk);
}

void RecordingWriter::writeHeader(const mlv::FileHeader &source, std::uint32_t frameCount)
{
    auto header = source;
    header.size = sizeof header;
    header.chunk = 0;
    header.chunkCount = 1;
    header.videoClass = mlv::videoclass::raw;
    header.audioClass = mlv::audioclass::none;
    header.videoFrames = frameCount;
    header.audioFrames = 0;
    m_file.write(mlv::encodeLayout(header));
}

void RecordingWriter::copyMetadata(const mlv::Chunk &chunk)
{
    std::array<std::byte, 65536> buffer;
    mlv::BlockWalk walk(chunk);
    while (const auto block = walk.next()) {
        if (!isCopied(block->header.type))
            continue;
        for (std::uint32_t copied = 0; copied < block->header.size;) {
            const auto part = std::span(buffer).first(
                std::min<std::size_t>(buffer.size(), block->header.size - copied));
            chunk.file().read(block->offset + copied, part);
            m_file.write(part);
            copied += static_cast<std::uint32_t>(part.size());
        }
    }
}

void RecordingWriter::addFrame(std::uint32_t number, std::uint64_t timestamp,
                               std::span<const std::uint16_t> samples)
{
    m_packed.resize(m_format.packedBytes());
    raw::packSamples(samples, m_format.bitsPerSample, raw::WordOrder::LittleEndian, m_packed);
    mlv::VideoFrame frame{};
    frame.number = number;
    const auto size =
        static_cast<std::uint32_t>(sizeof(mlv::BlockHeader) + sizeof frame + m_packed.size());
    m_file.write(mlv::encodeLayout(mlv::BlockHeader{blocktype::videoFrame, size, timestamp}));
    m_file.write(mlv::encodeLayout(frame));
    m_file.write(m_packed);
}

// An averaged dark frame or flat field serves many recordings later and is not looked at again.
void RecordingWriter::commit()
{
    m_file.commitToDisk();
}

} // namespace mlvdump
