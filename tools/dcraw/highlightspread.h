// SPDX-License-Identifier: MIT
#pragma once

#include "dcraw/rowring.h"

#include <vector>

namespace dcraw {

/// The ratios of blocks, 0 where they aren't known.
class RatioGrid
{
public:
    RatioGrid(int width, int height);

    float *row(int y) { return &m_values[static_cast<std::size_t>(y + 1) * m_stride + lead]; }
    const float *row(int y) const
    {
        return &m_values[static_cast<std::size_t>(y + 1) * m_stride + lead];
    }

    /// Lets blocks take over the mean of known neighbours, up to `passes` blocks away from those
    /// that are known now.
    void spread(int passes);

private:
    static constexpr std::size_t lead = 16;

    bool spreadOnce();

    int m_width;
    int m_height;
    std::size_t m_stride;
    AlignedArray<float> m_values; ///< with a row of zeros above and below
    std::vector<char> m_changed;  ///< rows of the pass before, with one above and below
};

} // namespace dcraw
