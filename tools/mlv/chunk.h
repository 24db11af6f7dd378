// SPDX-License-Identifier: MIT
#pragma once

#include "mlv/blocks.h"
#include "raw/file.h"

#include <array>
#include <cstdint>
#include <filesystem>
#include <optional>

namespace mlv {

/// A larger block is damage, not footage: a frame of 8K at 16 bits has about 66 MB.
inline constexpr std::uint32_t maxBlockSize = 256U * 1024 * 1024;

/// One file of a recording: a file header, then blocks up to its end.
class Chunk
{
public:
    /// Throws raw::Error when the file can't be read or does not begin with a file header.
    explicit Chunk(const std::filesystem::path &path);

    const FileHeader &header() const { return m_header; }
    const raw::File &file() const { return m_file; }

private:
    raw::File m_file;
    FileHeader m_header;
};

/// 0 when the header gives none.
double framesPerSecond(const FileHeader &header);

/// A block that lies whole within its file.
struct Block
{
    BlockHeader header;
    std::uint64_t offset; ///< of the header in the file
};

/// Walks over the blocks behind the file header in file order, without reading their data.
class BlockWalk
{
public:
    enum class End {
        Whole,   ///< the file ends where a block ends
        CutOff,  ///< the last block ends behind the end of the file
        Damaged, ///< a block's size can't be true; what follows is not read
    };

    /// The chunk outlives the walk.
    explicit BlockWalk(const Chunk &chunk);
    /// Begins at a block that another walk met.
    BlockWalk(const Chunk &chunk, std::uint64_t offset);

    /// The next block, or none at the end. Throws raw::Error when the file can't be read.
    std::optional<Block> next();

    /// The layout of the block that next() gave last.
    template <typename Layout>
    Layout layout()
    {
        static_assert(sizeof(Layout) <= windowSize / 2);
        const std::uint64_t available = m_position - (m_start + sizeof(BlockHeader));
        return decodeLayout<Layout>(window(m_start + sizeof(BlockHeader),
                                           std::min<std::uint64_t>(available, sizeof(Layout))));
    }

    /// Why next() gave none.
    End end() const { return m_end; }
    /// Where the walk stands: behind the last block, in bytes from the start of the file.
    std::uint64_t position() const { return m_position; }
    /// Whether a filler block without a size was stepped over.
    bool repaired() const { return m_repaired; }

private:
    static constexpr std::size_t windowSize = 4096;

    std::span<const std::byte> window(std::uint64_t offset, std::uint64_t size);

    const raw::File &m_file;
    std::uint64_t m_start = 0;    // of the current block
    std::uint64_t m_position = 0; // of the next one
    End m_end = End::Whole;
    bool m_repaired = false;
    std::array<std::byte, windowSize> m_window;
    std::uint64_t m_windowStart = 0;
    std::uint64_t m_windowFilled = 0;
};

} // namespace mlv
