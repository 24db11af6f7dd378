// SPDX-License-Identifier: MIT
#include "dcraw/adaptivehomogeneity.h"

namespace dcraw {
namespace {

constexpr int border = 5; // rows and columns that have too few neighbours

} // namespace

AdaptiveHomogeneity::Candidate::Candidate(int columns)
    : green(columns)
    , difference(columns)
    , opposite(columns)
    , beside(columns)
    , vertical(columns)
    , lab(2 * columns)
{
}

AdaptiveHomogeneity::AdaptiveHomogeneity(const Development &development, const SampleRows &samples)
    : m_development(development)
    , m_columns(static_cast<std::size_t>((development.width + 1) / 2))
    , m_light(development, samples)
    , m_candidates{Candidate((development.width + 1) / 2), Candidate((development.width + 1) / 2)}
    , m_preferences(development.width)
{
}

void AdaptiveHomogeneity::read(int first, Picture &rows)
{
    const int end = first + rows.rows();
    if (m_next != first + border) // not where the last call ended
        start(first);
    for (int y = first; y < end; ++y) {
        while (m_next <= y + border)
            advance();
        const int row = y - first;
        const int width = m_development.width;
        if (!isInside(y, border)) {
            m_light.interpolate(y, 0, width, rows, row);
            continue;
        }
        chooseRow(y, rows, row);
        m_light.interpolate(y, 0, border, rows, row);
        m_light.interpolate(y, width - border, width, rows, row);
    }
}

void AdaptiveHomogeneity::start(int row)
{
    m_start = row;
    m_next = std::max(row - border, 0);
}

/// Brings each stage one row further. The stages need rows around theirs that begin before the
/// first row that is wanted: preferences one, colours two, green three.
void AdaptiveHomogeneity::advance()
{
    const int row = m_next++;
    if (row < m_development.height)
        m_light.make(row);
    if (isInside(row - 2, 2) && row - 2 >= m_start - 3)
        makeGreen(row - 2);
    if (isInside(row - 3, 3) && row - 3 >= m_start - 2)
        makeColours(row - 3);
    if (isInside(row - 4, 4) && row - 4 >= m_start - 1)
        makePreferences(row - 4);
}

bool AdaptiveHomogeneity::isInside(int row, int margin) const
{
    return row >= margin && row < m_development.height - margin;
}

void AdaptiveHomogeneity::makeGreen(int row)
{
    const int half = m_light.colouredHalf(row);
    const std::uint16_t *greens = m_light.row(row, 1 - half);
    auto &[across, down] = m_candidates;
    findGreen({m_light.row(row, half),
               greens + half - 1,
               greens + half,
               m_light.row(row - 1, half),
               m_light.row(row + 1, half),
               m_light.row(row - 2, half),
               m_light.row(row + 2, half),
               {across.green[row], down.green[row]},
               {across.difference[row], down.difference[row]}},
              m_columns);
}

LabRow AdaptiveHomogeneity::labRow(std::size_t d, int row, int half)
{
    return {m_candidates[d].lab.lightness.row(row, half),
            m_candidates[d].lab.chroma.row(row, half)};
}

void AdaptiveHomogeneity::makeColours(int row)
{
    const int coloured = m_light.colouredHalf(row);
    const int green = 1 - coloured;
    const bool isRedRow = m_light.rowColour(row) == 0;
    OppositeRow opposites{isRedRow, m_light.row(row, coloured), {}, {}, {}, {}};
    RedBlueRow redsAndBlues{isRedRow, m_light.row(row, green), {}, {}, {}, {}, {}};
    for (std::size_t d = 0; d < 2; ++d) {
        Candidate &candidate = m_candidates[d];
        const std::int32_t *above = candidate.difference[row - 1];
        const std::int32_t *here = candidate.difference[row];
        const std::int32_t *below = candidate.difference[row + 1];
        opposites.green[d] = candidate.green[row];
        opposites.differences[d] = {above + coloured - 1, above + coloured, below + coloured - 1,
                                    below + coloured};
        opposites.opposite[d] = candidate.opposite[row];
        opposites.lab[d] = labRow(d, row, coloured);
        redsAndBlues.besideDifferences[d] = {here + green - 1, here + green};
        redsAndBlues.verticalDifferences[d] = {above, below};
        redsAndBlues.beside[d] = candidate.beside[row];
        redsAndBlues.vertical[d] = candidate.vertical[row];
        redsAndBlues.lab[d] = labRow(d, row, green);
    }
    Both<Range> ranges = findOpposite(opposites, m_development.cameraToXyz, m_columns);
    const Both<Range> others = findRedAndBlue(redsAndBlues, m_development.cameraToXyz, m_columns);
    ranges[0].include(others[0]);
    ranges[1].include(others[1]);
    m_ranges[static_cast<unsigned>(row) % m_ranges.size()] = ranges;
}

void AdaptiveHomogeneity::makePreferences(int row)
{
    bool wide = false;
    for (std::size_t d = 0; d < 2; ++d) {
        Range range;
        for (int y = row - 1; y <= row + 1; ++y)
            range.include(m_ranges[static_cast<unsigned>(y) % m_ranges.size()][d]);
        wide = wide || range.high - range.low > largestNarrowDifference;
    }
    for (int half = 0; half < 2; ++half) {
        const auto neighbourhood = [&](const SplitRing<std::int32_t> &ring) {
            const std::int32_t *others = ring.row(row, 1 - half) + half;
            return Neighbourhood<const std::int32_t *>{
                ring.row(row, half),
                {others - 1, others, ring.row(row - 1, half), ring.row(row + 1, half)}};
        };
        judge(
            {{neighbourhood(m_candidates[0].lab.lightness),
              neighbourhood(m_candidates[1].lab.lightness)},
             {neighbourhood(m_candidates[0].lab.chroma), neighbourhood(m_candidates[1].lab.chroma)},
             m_preferences.row(row, half)},
            wide, m_columns);
    }
}

void AdaptiveHomogeneity::chooseRow(int y, Picture &rows, int row) const
{
    const auto preferences = [&](int line) {
        return Both<const std::int16_t *>{m_preferences.row(line, 0), m_preferences.row(line, 1)};
    };
    const auto both = [&](const Ring<std::uint16_t> Candidate::*ring) {
        return Both<const std::uint16_t *>{(m_candidates[0].*ring)[y], (m_candidates[1].*ring)[y]};
    };
    const auto certain = [&](int half) {
        return Both<const std::uint16_t *>{m_light.row(y, half), m_light.row(y, half)};
    };
    const int coloured = m_light.colouredHalf(y);
    const auto plane = [&](int colour, const Both<const std::uint16_t *> &atColoured,
                           const Both<const std::uint16_t *> &atGreen) {
        return coloured == 0 ? ChosenPlane{{atColoured, atGreen}, rows.row(colour, row)}
                             : ChosenPlane{{atGreen, atColoured}, rows.row(colour, row)};
    };
    const int own = m_light.rowColour(y);
    choose({{preferences(y - 1), preferences(y), preferences(y + 1)},
            {plane(own, certain(coloured), both(&Candidate::beside)),
             plane(1, both(&Candidate::green), certain(1 - coloured)),
             plane(2 - own, both(&Candidate::opposite), both(&Candidate::vertical))}},
           m_columns);
}

} // namespace dcraw
