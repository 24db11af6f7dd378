// SPDX-License-Identifier: MIT
#pragma once

#include "dcraw/development.h"
#include "dcraw/highlightspread.h"
#include "dcraw/picture.h"

#include <vector>

namespace dcraw {

/// Rows that lie side by side in a picture.
struct RowGroup
{
    int first;
    Picture rows;
};

/// What the blocks of a picture tell of saturated colours: their ratio to the strongest colour,
/// where neither is saturated.
class HighlightMap
{
public:
    /// Rows of blocks that a ratio can spread over.
    static constexpr int reach = 16;

    struct Colour
    {
        int index;
        int saturation; ///< the lowest value that a block's ratio is taken from; clipped is twice
        /// Of the blocks, 0 where unknown; rows without any are empty.
        std::vector<std::vector<float>> ratios;
    };

    explicit HighlightMap(const Development &development);

    /// The rows, and columns, of a block.
    int blockSize() const { return m_blockSize; }
    /// In blocks. What is left of the last blocks to the right and at the bottom isn't rebuilt.
    int width() const { return m_width; }
    int height() const { return m_height; }
    /// The colour that the others follow.
    int strongest() const { return m_strongest; }
    /// The two others.
    const std::vector<Colour> &colours() const { return m_colours; }

    /// Notes the ratios of the rows' blocks. Answers true when samples are saturated: they can be
    /// rebuilt as soon as all rows are known that are up to `reach` blocks away. The first row is
    /// the first of a block. From several threads, for different rows.
    bool examine(const RowGroup &group);

private:
    bool noteRatios(Colour &colour, const RowGroup &group);

    int m_blockSize;
    int m_width;
    int m_height;
    int m_strongest;
    std::vector<Colour> m_colours;
};

/// Rebuilds saturated colours: they follow the ratios of the blocks around them. Used by one
/// thread.
class HighlightRebuilder
{
public:
    /// For bands of up to `mostRows`. The map outlives it.
    HighlightRebuilder(const HighlightMap &map, int mostRows);

    /// Has to be called before rows from `first` to `end`, the first rows of blocks, are rebuilt.
    void setBand(int first, int end);
    void rebuild(RowGroup &group) const;

private:
    const HighlightMap &m_map;
    std::vector<RatioGrid> m_grids; ///< of each colour
    int m_first = 0;                ///< row of blocks in the grids
};

} // namespace dcraw
