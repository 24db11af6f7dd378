// SPDX-License-Identifier: MIT
#pragma once

#include "dng/ifd.h"
#include "mlv/file.h"

#include <cstdint>
#include <vector>

namespace dng {

/// The directories of a little-endian TIFF file that describe its picture.
struct Directories
{
    Ifd image; ///< without what points to other directories
    Ifd exif;  ///< empty if the file has none
};

/// Reads the first directory of the file and its EXIF directory. Fields of unknown types are left
/// out. Throws mlv::Error when the file is no such file or damaged; never takes more memory for the
/// fields than the file is large.
[[nodiscard]] Directories readDirectories(const mlv::File &file);

/// The values of a field of whole numbers (Byte, Short, Long, or Rational if its values are whole);
/// empty if there is no such field or it has another type.
[[nodiscard]] std::vector<std::uint32_t> wholeNumbers(const Ifd &ifd, std::uint16_t tag);

} // namespace dng
