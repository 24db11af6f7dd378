// SPDX-License-Identifier: MIT
#include "mlv_dump/verification.h"

#include "mlv/error.h"
#include "mlv/framedecoder.h"
#include "mlv_dump/numberranges.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <mutex>
#include <set>
#include <span>
#include <thread>

namespace mlvdump {
namespace {

using namespace std::chrono_literals;

constexpr std::uint64_t pieceBytes = 1U << 20;
constexpr std::size_t bufferBytes = 64U << 10; // stays in the cache

/// A stretch of a file that one thread reads: a compressed frame, or whatever lies between.
struct Piece
{
    std::uint64_t offset;
    std::uint64_t size;
    const mlv::DataBlock *frame; ///< null: not to be decoded
    std::uint16_t chunk;
};

void addStretch(std::vector<Piece> &pieces, std::uint16_t chunk, std::uint64_t from,
                std::uint64_t to)
{
    for (; from < to; from += std::min(pieceBytes, to - from)) {
        pieces.push_back({from, std::min(pieceBytes, to - from), nullptr, chunk});
    }
}

/// The whole recording in the order in which it lies on the disk.
std::vector<Piece> piecesOf(const mlv::Recording &recording, bool decodes)
{
    std::vector<const mlv::DataBlock *> frames;
    for (const auto &frame : recording.videoFrames()) {
        if (decodes) {
            frames.push_back(&frame);
        }
    }
    std::ranges::sort(frames, {},
                      [](const auto *frame) { return std::pair(frame->chunk, frame->offset); });
    std::vector<Piece> pieces;
    auto frame = frames.begin();
    for (std::size_t i = 0; i < recording.chunks().size(); ++i) {
        const auto chunk = static_cast<std::uint16_t>(i);
        std::uint64_t position = 0;
        for (; frame != frames.end() && (*frame)->chunk == chunk; ++frame) {
            addStretch(pieces, chunk, position, (*frame)->offset);
            pieces.push_back({(*frame)->offset, (*frame)->size, *frame, chunk});
            position = (*frame)->offset + (*frame)->size;
        }
        addStretch(pieces, chunk, position, recording.chunks()[i].file().size());
    }
    return pieces;
}

class Reading
{
public:
    Reading(const mlv::Recording &recording, const ReadingProgress &progress)
        : m_recording(recording)
        , m_progress(progress)
        , m_pieces(piecesOf(recording,
                            mlv::FrameDecoder(recording).compression() != mlv::Compression::None))
    {
        for (const auto &piece : m_pieces) {
            m_total += piece.size;
        }
    }

    void run(unsigned threads)
    {
        std::vector<std::jthread> workers;
        for (std::size_t i = 0; i < std::min<std::size_t>(threads, m_pieces.size()); ++i) {
            workers.emplace_back([this] { work(); });
        }
    }

    /// After run().
    [[nodiscard]] const std::set<std::uint32_t> &damagedFrames() const { return m_damagedFrames; }
    [[nodiscard]] std::uint64_t unreadableBytes() const { return m_unreadableBytes; }

private:
    void work()
    {
        mlv::FrameDecoder decoder(m_recording);
        std::vector<std::byte> buffer(bufferBytes);
        for (std::size_t i = m_next++; i < m_pieces.size(); i = m_next++) {
            const auto &piece = m_pieces[i];
            try {
                if (piece.frame != nullptr) {
                    static_cast<void>(decoder.decode(*piece.frame));
                } else {
                    read(piece, buffer);
                }
            } catch (const mlv::ReadError &) {
                noteUnreadable(piece);
            } catch (const mlv::Error &) {
                const std::lock_guard lock(m_mutex);
                m_damagedFrames.insert(piece.frame->number);
            }
            tell(piece.size);
        }
    }

    void read(const Piece &piece, std::span<std::byte> buffer) const
    {
        const auto &file = m_recording.chunks()[piece.chunk].file();
        for (std::uint64_t done = 0; done < piece.size; done += buffer.size()) {
            const auto part = std::min<std::uint64_t>(buffer.size(), piece.size - done);
            file.read(piece.offset + done, buffer.first(static_cast<std::size_t>(part)));
        }
    }

    void noteUnreadable(const Piece &piece)
    {
        const std::lock_guard lock(m_mutex);
        m_unreadableBytes += piece.size;
        for (const auto &frame : m_recording.videoFrames()) {
            if (frame.chunk == piece.chunk && frame.offset < piece.offset + piece.size &&
                piece.offset < frame.offset + frame.size) {
                m_damagedFrames.insert(frame.number);
            }
        }
    }

    void tell(std::uint64_t bytes)
    {
        const std::lock_guard lock(m_mutex);
        m_done += bytes;
        const auto now = std::chrono::steady_clock::now();
        if (now - m_told >= 200ms) {
            m_told = now;
            m_progress(m_done, m_total);
        }
    }

    const mlv::Recording &m_recording;
    const ReadingProgress &m_progress;
    const std::vector<Piece> m_pieces;
    std::uint64_t m_total = 0;
    std::atomic<std::size_t> m_next = 0;
    std::mutex m_mutex; // guards what follows
    std::uint64_t m_done = 0;
    std::chrono::steady_clock::time_point m_told;
    std::set<std::uint32_t> m_damagedFrames;
    std::uint64_t m_unreadableBytes = 0;
};

/// Which numbers are missing: those before the first one, too, as cameras count from 0.
NumberRanges gaps(const mlv::DataIndex &index)
{
    NumberRanges missing;
    std::uint64_t expected = 0;
    for (const auto &block : index) {
        if (block.number > expected) {
            missing.add(expected, block.number - 1U);
        }
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
    for (std::size_t i = 1; i + 1 < sounds.size(); ++i) {
        if (sounds[i].size != sounds.front().size) {
            uneven.add(sounds[i].number, sounds[i].number);
        }
    }
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
    const auto row = mlv::packedSize(static_cast<std::size_t>(format.width), format.bitsPerSample);
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
        while (const auto block = walk.next()) {
            take(block->header.type);
        }
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
        if (said == there || said == 0) {
            return;
        }
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
    for (std::size_t i = 0; i < recording.chunks().size(); ++i) {
        ChunkCheck(recording.chunks()[i], i).tell(findings);
    }
    tellGaps(gaps(recording.videoFrames()),
             " frame is missing: ", " frames are missing: ", findings);
    tellGaps(gaps(recording.audioBlocks()),
             " sound block is missing: ", " sound blocks are missing: ", findings);
    tellUnevenSound(recording.audioBlocks(), findings);
    tellOversizedFrames(recording, findings);
    if (!recording.audioBlocks().empty() && !recording.waveInfo()) {
        findings.losses.push_back("nothing says what the sound is, so that it can't be used");
    }

    Reading reading(recording, progress);
    reading.run(threads);
    NumberRanges damaged;
    for (const std::uint32_t number : reading.damagedFrames()) {
        damaged.add(number, number);
    }
    tellGaps(damaged, " frame is damaged: ", " frames are damaged: ", findings);
    if (reading.unreadableBytes() > 0) {
        findings.losses.push_back("the disk can't read " +
                                  std::to_string(reading.unreadableBytes()) + " bytes or so");
    }
    return findings;
}

} // namespace mlvdump
