// SPDX-License-Identifier: MIT
#pragma once

#include "dcraw/development.h"
#include "dcraw/rowring.h"

namespace dcraw {

/// The newest rows of a frame's light, still in the Bayer pattern.
class LightRows
{
public:
    /// Both outlive it.
    LightRows(const Development &development, const SampleRows &samples);

    /// Reads and scales a row. Beyond a last even column there is a dark odd one.
    void make(int y);

    const std::uint16_t *row(int y, int half) const { return m_light.row(y, half); }
    std::uint16_t at(int y, int x) const { return row(y, x % 2)[x / 2]; }

    /// The half of a row, even (0) or odd columns (1), that has red or blue samples.
    int colouredHalf(int y) const { return colour(y, 0) == 1 ? 1 : 0; }
    /// Their colour.
    int rowColour(int y) const { return colour(y, colouredHalf(y)); }
    /// 0 red, 1 green, 2 blue.
    int colour(int y, int x) const
    {
        const int c =
            m_development.pattern[static_cast<unsigned>(y % 2)][static_cast<unsigned>(x % 2)];
        return c == 3 ? 1 : c;
    }

    /// Makes the pixels of the columns `first` to `end` of a row from the means of their
    /// neighbours. Needs the rows above and below, where the picture has them.
    void interpolate(int y, int first, int end, Picture &rows, int row) const;

private:
    void interpolateAtEdge(int y, int x, Picture &rows, int row) const;

    const Development &m_development;
    const SampleRows &m_samples;
    std::size_t m_width;
    AlignedArray<std::uint16_t> m_read; ///< samples of some rows
    int m_firstRead = 0;
    int m_endRead = 0;
    SplitRowRing<std::uint16_t, 8> m_light;
};

} // namespace dcraw
