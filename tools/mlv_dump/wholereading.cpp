// SPDX-License-Identifier: MIT
#include "mlv_dump/wholereading.h"

#include "mlv/framedecoder.h"
#include "parallel/sharedwork.h"
#include "raw/error.h"

#include <algorithm>
#include <chrono>
#include <mutex>
#include <span>
#include <utility>
#include <vector>

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
    for (; from < to; from += std::min(pieceBytes, to - from))
        pieces.push_back({from, std::min(pieceBytes, to - from), nullptr, chunk});
}

/// The whole recording in the order in which it lies on the disk.
std::vector<Piece> piecesOf(const mlv::Recording &recording, bool decodes)
{
    std::vector<const mlv::DataBlock *> frames;
    for (const auto &frame : recording.videoFrames())
        if (decodes)
            frames.push_back(&frame);
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
        for (const auto &piece : m_pieces)
            m_total += piece.size;
    }

    void run(unsigned threads)
    {
        parallel::shareWork(m_pieces.size(), threads, [this] {
            return [this, decoder = mlv::FrameDecoder(m_recording),
                    buffer = std::vector<std::byte>(bufferBytes)](std::size_t i) mutable {
                take(m_pieces[i], decoder, buffer);
            };
        });
    }

    /// After run().
    Unread unread() const { return m_unread; }

private:
    void take(const Piece &piece, mlv::FrameDecoder &decoder, std::span<std::byte> buffer)
    {
        try {
            if (piece.frame != nullptr)
                decoder.decode(*piece.frame);
            else
                read(piece, buffer);
        } catch (const raw::ReadError &) {
            noteUnreadable(piece);
        } catch (const raw::Error &) {
            const std::lock_guard lock(m_mutex);
            m_unread.damagedFrames.insert(piece.frame->number);
        }
        tell(piece.size);
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
        m_unread.unreadableBytes += piece.size;
        for (const auto &frame : m_recording.videoFrames())
            if (frame.chunk == piece.chunk && frame.offset < piece.offset + piece.size &&
                piece.offset < frame.offset + frame.size)
                m_unread.damagedFrames.insert(frame.number);
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
    std::mutex m_mutex; // guards what follows
    std::uint64_t m_done = 0;
    std::chrono::steady_clock::time_point m_told;
    Unread m_unread;
};

} // namespace

Unread readWhole(const mlv::Recording &recording, unsigned threads, const ReadingProgress &progress)
{
    Reading reading(recording, progress);
    reading.run(threads);
    return reading.unread();
}

} // namespace mlvdump
