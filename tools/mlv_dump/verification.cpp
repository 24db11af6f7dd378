// SPDX-License-Identifier: MIT
#include "mlv_dump/verification.h"

#include "mlv/framedecoder.h"
#include "mlv_dump/numberranges.h"

#include <algorithm>

namespace mlvdump {
namespace {

/// Which numbers are missing: those before the first one, too, as cameras count from 0.
NumberRanges gaps(const mlv::DataIndex &index)
{
    NumberRanges missing;
    std::uint64_t expected = 0;
    for (const auto &block : index) {
        if (block.number > expected)
            missing.add(expected, block.number - 1U);
        expected = std::uint64_t{block.number} + 1;
    }
    return missing;
}

void tellGaps(const NumberRanges &missing, const char *one, const char *many, Findings &findings)
{
    if (!missing.isEmpty()) {
        findings.losses.push_back(std::to_string(missing.count()) +
                                  (missing.count() == 1 ? one : many) + missing.text());
    }
}

/// Cameras write sound blocks of one size, but for the last one.
void tellUnevenSound(const mlv::DataIndex &sounds, Findings &findings)
{
    NumberRanges uneven;
    for (std::size_t i = 1; i + 1 < sounds.size(); ++i)
        if (sounds[i].size != sounds.front().size)
            uneven.add(sounds[i].number, sounds[i].number);
    if (!uneven.isEmpty()) {
        findings.remarks.push_back("some sound blocks are not of the size of the first one: " +
                                   uneven.text());
    }
}

/// Cameras fill frames up to a boundary, but not by whole rows.
void tellOversizedFrames(const mlv::Recording &recording, Findings &findings)
{
    const mlv::FrameDecoder decoder(recording);
    const auto &format = decoder.format();
    const auto row = raw::packedSize(static_cast<std::size_t>(format.width), format.bitsPerSample);
    const auto expected = format.packedBytes() + std::max<std::size_t>(row, 512);
    if (decoder.compression() == mlv::Compression::None &&
        std::ranges::any_of(recording.videoFrames(),
                            [expected](const auto &frame) { return frame.size >= expected; })) {
        findings.remarks.push_back("frames have more data than their width, height and depth "
                                   "need, which may be recorded wrong");
    }
}

/// What the blocks of a file are against what its header says.
class ChunkCheck
{
public:
    ChunkCheck(const mlv::Chunk &chunk, std::size_t number)
        : m_header(chunk.header())
        , m_name("chunk " + std::to_string(number + 1) + " of the recording")
    {
        mlv::BlockWalk walk(chunk);
        while (const auto block = walk.next())
            take(block->header.type);
        m_rest = chunk.file().size() - walk.position();
    }

    void tell(Findings &findings) const
    {
        tellCount(m_header.videoFrames, m_frames, "frames", findings);
        tellCount(m_header.audioFrames, m_sounds, "sound blocks", findings);
        if (m_header.videoFrames == 0 && m_frames > 0) {
            findings.remarks.push_back(m_name + " was not closed by the camera, which may have "
                                                "lost what came last");
        }
        if (m_rest > 0 && m_rest < sizeof(mlv::BlockHeader)) {
            findings.remarks.push_back("the last " + std::to_string(m_rest) + " bytes of " +
                                       m_name + " are no block");
        }
        if (m_damagedTypes > 0) {
            findings.losses.push_back(m_name + " has " + std::to_string(m_damagedTypes) +
                                      " blocks whose kind is damaged");
        }
    }

private:
    void take(const mlv::BlockType &type)
    {
        m_frames += type == mlv::blocktype::videoFrame ? 1U : 0U;
        m_sounds += type == mlv::blocktype::audioFrame ? 1U : 0U;
        // Later recorders may have blocks of further kinds, all of which have readable names.
        const bool isName = std::ranges::all_of(
            type, [](char c) { return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9'); });
        m_damagedTypes += isName ? 0U : 1U;
    }

    void tellCount(std::uint32_t said, std::uint32_t there, const char *what,
                   Findings &findings) const
    {
        if (said == there || said == 0)
            return;
        auto &told = said > there ? findings.losses : findings.remarks;
        told.push_back(m_name + " should have " + std::to_string(said) + " " + what + ", but has " +
                       std::to_string(there));
    }

    const mlv::FileHeader &m_header;
    std::string m_name;
    std::uint32_t m_frames = 0;
    std::uint32_t m_sounds = 0;
    std::uint32_t m_damagedTypes = 0;
    std::uint64_t m_rest = 0; ///< bytes behind the last block
};

} // namespace

Findings verify(const mlv::Recording &recording, unsigned threads, const ReadingProgress &progress)
{
    Findings findings{recording.warnings(), recording.remarks()};
    for (std::size_t i = 0; i < recording.chunks().size(); ++i)
        ChunkCheck(recording.chunks()[i], i).tell(findings);
    tellGaps(gaps(recording.videoFrames()),
             " frame is missing: ", " frames are missing: ", findings);
    tellGaps(gaps(recording.audioBlocks()),
             " sound block is missing: ", " sound blocks are missing: ", findings);
    tellUnevenSound(recording.audioBlocks(), findings);
    tellOversizedFrames(recording, findings);
    if (!recording.audioBlocks().empty() && !recording.waveInfo())
        findings.losses.push_back("nothing says what the sound is, so that it can't be used");

    const auto lost = readWhole(recording, threads, progress);
    NumberRanges damaged;
    for (const std::uint32_t number : lost.damagedFrames)
        damaged.add(number, number);
    tellGaps(damaged, " frame is damaged: ", " frames are damaged: ", findings);
    if (lost.unreadableBytes > 0) {
        findings.losses.push_back("the disk can't read " + std::to_string(lost.unreadableBytes) +
                                  " bytes or so");
    }
    return findings;
}

} // namespace mlvdump
