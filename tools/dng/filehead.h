// SPDX-License-Identifier: MIT
#pragma once

#include "dng/ifd.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace dng {

/// Everything of a little-endian TIFF file with one image that stands before the image's only
/// strip: the header, the directory, the EXIF directory unless it is empty, and their values. The
/// strip follows directly. The strip's place and size and the place of the EXIF directory are set
/// here.
std::vector<std::byte> encodeFileHead(Ifd image, const Ifd &exif, std::uint32_t stripBytes);

} // namespace dng
