// SPDX-License-Identifier: MIT
#pragma once

#include "dng/ifdreader.h"
#include "raw/file.h"

#include <array>
#include <cstdint>
#include <filesystem>
#include <vector>

namespace dng {

/// What all frames of a recording have in common.
struct RawFormat
{
    int width = 0; ///< even, 16 to 65534, as is the height
    int height = 0;
    int bitsPerSample = 0;                 ///< 10, 12, 14 or 16
    std::uint32_t blackLevel = 0;          ///< below whiteLevel
    std::uint32_t whiteLevel = 0;          ///< fits into bitsPerSample
    std::array<std::uint8_t, 4> colours{}; ///< of a 2 × 2 cell: 0 red, 1 green, 2 blue

    bool operator==(const RawFormat &) const = default;
};

/// A DNG file with one strip of raw samples: packed, or lossless JPEG. May be used by several
/// threads at once.
class RawFile
{
public:
    /// Throws raw::Error when the file can't be read, is damaged or of another kind.
    explicit RawFile(const std::filesystem::path &path);

    const RawFormat &format() const { return m_format; }
    const Directories &directories() const { return m_directories; }

    /// All samples, row by row. Throws raw::Error.
    std::vector<std::uint16_t> samples() const;

private:
    raw::File m_file;
    Directories m_directories;
    RawFormat m_format;
    bool m_isLosslessJpeg = false;
    std::uint32_t m_stripOffset = 0;
    std::uint32_t m_stripBytes = 0;
};

} // namespace dng
