// SPDX-License-Identifier: MIT
// Writes the blocks of one file of a recording.
#pragma once

#include "mlv/blocks.h"

#include <cstdint>
#include <fstream>
#include <initializer_list>
#include <span>
#include <string>

namespace sample {

/// One file. Every failure to write throws std::system_error with the path.
class ChunkWriter
{
public:
    /// Creates the file, or empties it, and writes `header`.
    ChunkWriter(std::string path, const mlv::FileHeader &header);

    /// Writes a block of the given parts; its size is worked out from them.
    void write(mlv::BlockType type, std::uint64_t timestamp,
               std::initializer_list<std::span<const std::byte>> parts);

    /// Fills up with a NULL block to the next multiple of `boundary` bytes.
    void fillTo(std::uint64_t boundary);

    /// Replaces the header with `header` and closes the file.
    void close(const mlv::FileHeader &header);

private:
    void writeBytes(std::span<const std::byte> bytes);
    void check() const;

    std::string m_path;
    std::ofstream m_file;
    std::uint64_t m_position = 0;
};

} // namespace sample
