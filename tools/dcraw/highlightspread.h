// SPDX-License-Identifier: MIT
#pragma once

#include "dcraw/rowring.h"

#include <array>
#include <vector>

namespace dcraw {

/// The ratios of rows of blocks, 0 where they aren't known.
class RatioGrid
{
public:
    /// Has room for `mostRows`.
    RatioGrid(int width, int mostRows);

    /// Begins anew with rows of zeros.
    void clear(int rows);

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

    std::size_t m_width;
    int m_rows = 0;
    std::size_t m_stride;
    AlignedArray<float> m_values; ///< with a row of zeros above and below
    /// Where the pass before has changed a row, one bit for each `m_chunk` blocks; a row more above
    /// and below.
    std::vector<std::uint64_t> m_changed;
    std::vector<std::uint64_t> m_changing; ///< the same of the pass that runs
    std::size_t m_chunk;
    std::array<std::vector<float>, 2> m_kept; ///< rows as they were before the pass
};

} // namespace dcraw
