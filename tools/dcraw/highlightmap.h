// SPDX-License-Identifier: MIT
#pragma once

#include "dcraw/development.h"
#include "dcraw/picture.h"

#include <vector>

namespace dcraw {

/// Rows that lie side by side in a picture.
struct RowGroup
{
    int first;
    Picture rows;
};

/// Rebuilds saturated colours: they follow the ratio to the strongest colour that the blocks around
/// them have, where neither is saturated.
class HighlightMap
{
public:
    /// Rows of blocks that a ratio can spread over.
    static constexpr int reach = 16;

    explicit HighlightMap(const Development &development);

    /// The rows, and columns, of a block.
    int blockSize() const { return m_blockSize; }

    /// Notes the ratios of the rows' blocks. Answers true when samples are saturated: rebuild()
    /// has to be called as soon as all rows are known that are up to `reach` blocks away. The
    /// first row is the first of a block. From several threads, for different rows.
    bool examine(const RowGroup &group);

    /// Rebuilds what is saturated in `groups`, which lie between the rows `first` and `end`, the
    /// first rows of blocks. From several threads.
    void rebuild(int first, int end, std::vector<RowGroup> &groups) const;

private:
    struct Colour
    {
        int index;
        int saturation; ///< the lowest value that a block's ratio is taken from; clipped is twice
        /// Of the blocks, 0 where unknown; rows without any are empty.
        std::vector<std::vector<float>> ratios;
    };

    bool noteRatios(Colour &colour, const RowGroup &group);
    std::vector<float> spread(const Colour &colour, int first, int end) const;
    void raiseBlocks(const Colour &colour, const float *ratios, Picture &rows, int firstRow) const;

    int m_blockSize;
    int m_width;  ///< in blocks
    int m_height; ///< in blocks
    int m_strongest;
    std::vector<Colour> m_colours; ///< the two others
};

} // namespace dcraw
