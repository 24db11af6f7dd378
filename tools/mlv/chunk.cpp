// SPDX-License-Identifier: MIT
#include "mlv/chunk.h"

#include "raw/error.h"

namespace mlv {
namespace {

// Recorders keep their writes on these boundaries.
constexpr std::uint64_t writeBoundary = 512;

FileHeader readHeader(const raw::File &file)
{
    std::array<std::byte, sizeof(FileHeader)> bytes{};
    const auto available = std::min<std::uint64_t>(file.size(), bytes.size());
    file.read(0, std::span(bytes).first(static_cast<std::size_t>(available)));
    const auto header = decodeLayout<FileHeader>(bytes);
    if (header.type != blocktype::fileHeader)
        throw raw::Error("does not begin with an MLV file header");
    if (header.size < sizeof(BlockHeader) || header.size > file.size())
        throw raw::Error("is cut off within its file header");
    if (header.size >= sizeof(FileHeader))
        return header;
    return decodeLayout<FileHeader>(std::span(bytes).first(header.size));
}

bool isPadding(const BlockType &type)
{
    return type == blocktype::filler || type == blocktype::backup;
}

} // namespace

Chunk::Chunk(const std::filesystem::path &path)
    : m_file(path)
    , m_header(readHeader(m_file))
{
}

double framesPerSecond(const FileHeader &header)
{
    if (header.frameRateDenominator == 0)
        return 0;
    return static_cast<double>(header.frameRateNumerator) / header.frameRateDenominator;
}

BlockWalk::BlockWalk(const Chunk &chunk)
    : BlockWalk(chunk, chunk.header().size)
{
}

BlockWalk::BlockWalk(const Chunk &chunk, std::uint64_t offset)
    : m_file(chunk.file())
    , m_position(std::min(offset, m_file.size()))
{
}

std::optional<Block> BlockWalk::next()
{
    while (m_file.size() - m_position >= sizeof(BlockHeader)) {
        const auto header = decodeLayout<BlockHeader>(window(m_position, sizeof(BlockHeader)));
        if (header.type == blocktype::filler && header.size < sizeof(BlockHeader)) {
            // A known writer leaves fillers without a size; the next block is on a boundary.
            const std::uint64_t next = (m_position / writeBoundary + 1) * writeBoundary;
            m_position = std::min(next, m_file.size());
            m_repaired = true;
            continue;
        }
        if (header.size < sizeof(BlockHeader) ||
            (header.size > maxBlockSize && !isPadding(header.type))) {
            m_end = End::Damaged;
            return std::nullopt;
        }
        if (header.size > m_file.size() - m_position) {
            m_end = isPadding(header.type) ? End::Whole : End::CutOff;
            return std::nullopt;
        }
        m_start = m_position;
        m_position += header.size;
        return Block{header, m_start};
    }
    return std::nullopt;
}

std::span<const std::byte> BlockWalk::window(std::uint64_t offset, std::uint64_t size)
{
    const bool inside = offset >= m_windowStart && offset + size <= m_windowStart + m_windowFilled;
    if (!inside) {
        m_windowStart = offset;
        m_windowFilled = std::min<std::uint64_t>(m_file.size() - offset, windowSize);
        m_file.read(offset, std::span(m_window).first(static_cast<std::size_t>(m_windowFilled)));
    }
    return std::span(m_window).subspan(static_cast<std::size_t>(offset - m_windowStart),
                                       static_cast<std::size_t>(size));
}

} // namespace mlv
