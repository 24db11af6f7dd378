// SPDX-License-Identifier: MIT
#pragma once

#include "dcraw/development.h"
#include "dcraw/picture.h"
#include "dcraw/pixelpacker.h"
#include "dcraw/stretch.h"

#include <optional>
#include <vector>

namespace dcraw {

/// Turns rows of output colour into bytes and hands them on, some dozens at a time. Used by one
/// thread.
class RowWriter
{
public:
    /// All outlive it.
    RowWriter(const Development &development, const PixelPacker &packer, PixelSink &sink);

    /// Row `from` of a picture becomes row `y` of the result.
    void write(int y, const Picture &picture, int from);
    /// Has to be called at the end.
    void flush();

    /// False once the sink has refused rows.
    bool isWanted() const { return m_isWanted; }

private:
    void stretchColumns(const Picture &picture, int from);

    const PixelPacker &m_packer;
    PixelSink &m_sink;
    int m_width; ///< of the picture
    std::size_t m_rowBytes;
    std::optional<Stretch> m_stretch;   ///< of columns
    std::optional<Picture> m_stretched; ///< one row
    std::vector<std::byte> m_waiting;   ///< whole rows
    std::size_t m_waitingBytes = 0;
    int m_first = 0; ///< of the waiting rows
    bool m_isWanted = true;
};

} // namespace dcraw
