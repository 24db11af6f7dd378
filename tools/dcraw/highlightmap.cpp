// SPDX-License-Identifier: MIT
#include "dcraw/highlightmap.h"

#include "dcraw/highlightblocks.h"
#include "dcraw/highlightspread.h"

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
    for (Colour &colour : m_colours) {
        isSaturated = noteRatios(colour, group) || isSaturated;
    }
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

void HighlightMap::rebuild(int first, int end, std::vector<RowGroup> &groups) const
{
    if (groups.empty())
        return;
    const int firstBlock = first / m_blockSize;
    const int endBlock = std::min(end / m_blockSize, m_height);
    for (const Colour &colour : m_colours) {
        const std::vector<float> map = spread(colour, firstBlock, endBlock);
        for (RowGroup &group : groups) {
            for (int row = 0; row < group.rows.rows(); row += m_blockSize) {
                const int block = (group.first + row) / m_blockSize;
                if (block < endBlock)
                    raiseBlocks(colour, &map[size(block - firstBlock) * size(m_width)], group.rows,
                                row);
            }
        }
    }
}

/// The ratios of the rows of blocks from `first` to `end`. Those further away than the reach have
/// no influence, so that the rows between are all that has to be looked at.
std::vector<float> HighlightMap::spread(const Colour &colour, int first, int end) const
{
    const int low = std::max(first - reach, 0);
    const int high = std::min(end + reach, m_height);
    RatioGrid grid(m_width, high - low);
    for (int row = low; row < high; ++row) {
        std::copy(colour.ratios[size(row)].begin(), colour.ratios[size(row)].end(),
                  grid.row(row - low));
    }
    grid.spread(reach);
    std::vector<float> map(size(end - first) * size(m_width));
    for (int row = first; row < end; ++row) {
        const float *ratios = grid.row(row - low);
        std::transform(ratios, ratios + m_width, &map[size(row - first) * size(m_width)],
                       [](float ratio) { return ratio > 0 ? ratio : 1.0F; });
    }
    return map;
}

void HighlightMap::raiseBlocks(const Colour &colour, const float *ratios, Picture &rows,
                               int firstRow) const
{
    const std::size_t columns = size(m_width * m_blockSize);
    std::vector<float> ratioOfColumn(roundedUp(columns, 64));
    for (std::size_t x = 0; x < columns; ++x) {
        ratioOfColumn[x] = ratios[x / size(m_blockSize)];
    }
    for (int row = firstRow; row < firstRow + m_blockSize; ++row) {
        raise({rows.row(colour.index, row), rows.row(m_strongest, row), ratioOfColumn.data()},
              2 * colour.saturation, columns);
    }
}

} // namespace dcraw
