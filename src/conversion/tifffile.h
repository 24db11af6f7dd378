// SPDX-License-Identifier: MIT
#pragma once

#include <QFileDevice>

#include <tiffio.h>

#include <memory>

namespace filmwright {

struct TiffCloser
{
    void operator()(TIFF *tiff) const { TIFFClose(tiff); }
};
using TiffHandle = std::unique_ptr<TIFF, TiffCloser>;

enum class TiffAccess { Read, Write };

/// Opens the TIFF file behind an open file, which stays open and its owner's; null when it is none.
/// libtiff's own messages are dropped: callers tell what failed by what they got. Any thread.
TiffHandle openTiff(const QFileDevice &file, TiffAccess access);

} // namespace filmwright
