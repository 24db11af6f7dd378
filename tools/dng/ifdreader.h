// SPDX-License-Identifier: MIT
#pragma once

#include "dng/ifd.h"
#include "raw/file.h"

#include <cstdint>
#include <vector>

namespace dng {

/// The directories of a little-endian TIFF file that describe its picture.
struct Directories
{
    Ifd image; ///< without what points to other directories
    Ifd exif;  ///< empty if the file has none
};

/// One field of a directory, in the place where the file has it.
struct Entry
{
    std::uint16_t tag;
    Field field; ///< without data if its type is unknown
};

/// Reads a little-endian TIFF file directory by directory. All functions throw raw::Error when the
/// file is no such file or damaged; together they never take more memory than the file is large.
class DirectoryReader
{
public:
    explicit DirectoryReader(const raw::File &file);

    /// Where the first directory is, bytes from the start of the file.
    std::uint32_t firstDirectory();
    /// The directory there, in the order of the file.
    std::vector<Entry> entries(std::uint32_t directory);
    /// Where the directory behind this one is, 0 if it is the last.
    std::uint32_t successor(std::uint32_t directory);

private:
    std::vector<std::byte> bytes(std::uint64_t offset, std::uint64_t size);

    const raw::File &m_file;
    std::uint64_t m_bytesLeft;
};

/// Reads the first directory of the file and its EXIF directory. Fields of unknown types are left
/// out. Throws raw::Error when the file is no such file or damaged; never takes more memory for the
/// fields than the file is large.
Directories readDirectories(const raw::File &file);

/// The values of a field of whole numbers (Byte, Short, Long, or Rational if its values are whole);
/// empty if there is no such field or it has another type.
std::vector<std::uint32_t> wholeNumbers(const Ifd &ifd, std::uint16_t tag);

} // namespace dng
