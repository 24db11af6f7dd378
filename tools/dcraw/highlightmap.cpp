// SPDX-License-Identifier: MIT
#include "highlightmap.h"

#include "highlightspread.h"

#include <algorithm>

namespace dcraw {
namespace {

constexpr int lowestOfStrongest = 24000;

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
                                 std::vector<float>(size(m_width) * size(m_height))});
        }
    }
}

float *HighlightMap::ratios(Colour &colour, int blockRow) const
{
    return colour.ratios.data() + size(blockRow) * size(m_width);
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
    const int columns = m_width * m_blockSize;
    const int rows = std::min(group.rows.rows(), m_height * m_blockSize - group.first);
    std::uint16_t largest = 0;
    for (int row = 0; row < rows; ++row) {
        const std::uint16_t *values = group.rows.row(colour.index, row);
        for (int x = 0; x < columns; ++x) {
            largest = std::max(largest, values[x]);
        }
    }
    if (largest < colour.saturation)
        return false;
    for (int row = 0; row + m_blockSize <= rows; row += m_blockSize) {
        float *result = ratios(colour, (group.first + row) / m_blockSize);
        for (int block = 0; block < m_width; ++block) {
            int sum = 0;
            int strongestSum = 0;
            bool isKnown = true;
            for (int y = row; y < row + m_blockSize && isKnown; ++y) {
                const std::uint16_t *values = group.rows.row(colour.index, y);
                const std::uint16_t *strongest = group.rows.row(m_strongest, y);
                for (int x = block * m_blockSize; x < (block + 1) * m_blockSize; ++x) {
                    isKnown = isKnown && values[x] >= colour.saturation &&
                              values[x] < 2 * colour.saturation && strongest[x] > lowestOfStrongest;
                    sum += values[x];
                    strongestSum += strongest[x];
                }
            }
            if (isKnown)
                result[block] = static_cast<float>(sum) / static_cast<float>(strongestSum);
        }
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
                    raise(colour, &map[size(block - firstBlock) * size(m_width)], group.rows, row);
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
        std::copy_n(&colour.ratios[size(row) * size(m_width)], m_width, grid.row(row - low));
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

void HighlightMap::raise(const Colour &colour, const float *ratios, Picture &rows,
                         int firstRow) const
{
    for (int row = firstRow; row < firstRow + m_blockSize; ++row) {
        std::uint16_t *values = rows.row(colour.index, row);
        const std::uint16_t *strongest = rows.row(m_strongest, row);
        for (int x = 0; x < m_width * m_blockSize; ++x) {
            const int raised = std::min(
                static_cast<int>(static_cast<float>(strongest[x]) * ratios[x / m_blockSize]),
                65535);
            if (values[x] >= 2 * colour.saturation && values[x] < raised)
                values[x] = static_cast<std::uint16_t>(raised);
        }
    }
}

} // namespace dcraw
