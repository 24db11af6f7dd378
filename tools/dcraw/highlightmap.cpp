// SPDX-License-Identifier: MIT
#include "dcraw/highlightmap.h"

#include "dcraw/highlightblocks.h"

#include <algorithm>

namespace dcraw {
namespace {

std::size_t size(int value)
{
    return static_cast<std::size_t>(value);
}

} // namespace

HighlightMap::HighlightMap(const Development &development)
    : m_blockSize(development.interpolation == Interpolation::HalfSize ? 2 : 4)
    , m_width(development.pictureWidth() / m_blockSize)
    , m_height(development.pictureHeight() / m_blockSize)
{
    const auto &multipliers = development.multipliers;
    m_strongest = static_cast<int>(std::max_element(multipliers.begin(), multipliers.end()) -
                                   multipliers.begin());
    for (int c = 0; c < 3; ++c) {
        if (c != m_strongest) {
            m_colours.push_back({c, static_cast<int>(32000 * multipliers[size(c)]),
                                 std::vector<std::vector<float>>(size(m_height))});
        }
    }
}

bool HighlightMap::examine(const RowGroup &group)
{
    bool isSaturated = false;
    for (Colour &colour : m_colours)
        isSaturated = noteRatios(colour, group) || isSaturated;
    return isSaturated;
}

bool HighlightMap::noteRatios(Colour &colour, const RowGroup &group)
{
    // What is left of the last blocks to the right and at the bottom stays as it is.
    const Picture &rows = group.rows;
    const int count = std::min(rows.rows() / m_blockSize, m_height - group.first / m_blockSize);
    std::uint16_t largest = 0;
    for (int row = 0; row < count * m_blockSize; ++row) {
        largest = std::max(largest,
                           largestValue(rows.row(colour.index, row), size(m_width * m_blockSize)));
    }
    if (largest < colour.saturation)
        return false;
    for (int block = 0; block < count; ++block) {
        const int row = block * m_blockSize;
        auto &ratios = colour.ratios[size(group.first / m_blockSize + block)];
        ratios.resize(size(m_width));
        findRatios({rows.row(colour.index, row), rows.row(m_strongest, row), rows.stride(),
                    m_blockSize, size(m_width)},
                   colour.saturation, ratios.data());
    }
    return largest >= 2 * colour.saturation;
}

HighlightRebuilder::HighlightRebuilder(const HighlightMap &map, int mostRows)
    : m_map(map)
{
    const int blocks = mostRows / map.blockSize() + 2 * HighlightMap::reach;
    for (std::size_t i = 0; i < map.colours().size(); ++i)
        m_grids.emplace_back(map.width(), blocks);
}

/// Blocks further away than the reach have no influence, so that those between are all that has to
/// be looked at.
void HighlightRebuilder::setBand(int first, int end)
{
    const int last = std::min(end / m_map.blockSize() + HighlightMap::reach, m_map.height());
    m_first = std::max(first / m_map.blockSize() - HighlightMap::reach, 0);
    for (std::size_t i = 0; i < m_grids.size(); ++i) {
        m_grids[i].clear(last - m_first);
        for (int row = m_first; row < last; ++row) {
            const auto &ratios = m_map.colours()[i].ratios[size(row)];
            std::copy(ratios.begin(), ratios.end(), m_grids[i].row(row - m_first));
        }
        m_grids[i].spread(HighlightMap::reach);
    }
}

void HighlightRebuilder::rebuild(RowGroup &group) const
{
    Picture &rows = group.rows;
    const int blockSize = m_map.blockSize();
    const int strongest = m_map.strongest();
    for (int row = 0; row + blockSize <= rows.rows(); row += blockSize) {
        for (std::size_t i = 0; i < m_grids.size(); ++i) {
            const HighlightMap::Colour &colour = m_map.colours()[i];
            raise({rows.row(colour.index, row), rows.row(strongest, row), rows.stride(), blockSize,
                   size(m_map.width())},
                  m_grids[i].row((group.first + row) / blockSize - m_first), 2 * colour.saturation);
        }
    }
}

} // namespace dcraw
