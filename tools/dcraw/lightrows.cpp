// SPDX-License-Identifier: MIT
#include "dcraw/lightrows.h"

#include "dcraw/scaling.h"

namespace dcraw {

namespace {

constexpr int rowsReadAtOnce = 16; // are read

} // namespace

LightRows::LightRows(const Development &development, const SampleRows &samples)
    : m_development(development)
    , m_samples(samples)
    , m_width(static_cast<std::size_t>(development.width))
    , m_read(roundedUp(rowsReadAtOnce * m_width, 64) + 64)
    , m_light(development.width)
{
}

void LightRows::make(int y)
{
    if (y < m_firstRead || y >= m_endRead) {
        m_firstRead = y;
        m_endRead = std::min(y + rowsReadAtOnce, m_development.height);
        m_samples.read(y, {m_read.get(), static_cast<std::size_t>(m_endRead - y) * m_width});
    }
    const auto &colours = m_development.pattern[static_cast<unsigned>(y % 2)];
    scale({&m_read[static_cast<std::size_t>(y - m_firstRead) * m_width],
           m_development.black,
           {m_development.scale[colours[0]], m_development.scale[colours[1]]},
           {m_light.row(y, 0), m_light.row(y, 1)}},
          (m_width + 1) / 2);
    if (m_width % 2 != 0)
        m_light.row(y, 1)[m_width / 2] = 0;
}

void LightRows::interpolate(int y, int first, int end, Picture &rows, int row) const
{
    const int lastRow = m_development.height - 1;
    const int lastColumn = m_development.width - 1;
    if (y == 0 || y == lastRow) {
        for (int x = first; x < end; ++x)
            interpolateAtEdge(y, x, rows, row);
        return;
    }
    if (first == 0)
        interpolateAtEdge(y, 0, rows, row);
    if (end > lastColumn)
        interpolateAtEdge(y, lastColumn, rows, row);

    const int coloured = colouredHalf(y);
    const int own = rowColour(y);
    for (int x = std::max(first, 1); x < std::min(end, lastColumn); ++x) {
        const int half = x % 2;
        const int i = x / 2;
        const int left = i + half - 1;
        const int right = i + half;
        const auto here = [&](int line) { return this->row(line, half); };
        const auto beside = [&](int line) { return this->row(line, 1 - half); };
        const auto set = [&](int c, int value) {
            rows.row(c, row)[x] = static_cast<std::uint16_t>(value);
        };
        const int sides = beside(y)[left] + beside(y)[right];
        const int verticals = here(y - 1)[i] + here(y + 1)[i];
        if (half == coloured) {
            set(own, here(y)[i]);
            set(1, (sides + verticals) >> 2);
            set(2 - own, (beside(y - 1)[left] + beside(y - 1)[right] + beside(y + 1)[left] +
                          beside(y + 1)[right]) >>
                             2);
        } else {
            set(1, here(y)[i]);
            set(own, sides >> 1);
            set(2 - own, verticals >> 1);
        }
    }
}

/// Where the picture ends, fewer neighbours are there to take the mean of.
void LightRows::interpolateAtEdge(int y, int x, Picture &rows, int row) const
{
    int sums[3] = {};
    int counts[3] = {};
    for (int ny = std::max(y - 1, 0); ny <= std::min(y + 1, m_development.height - 1); ++ny) {
        for (int nx = std::max(x - 1, 0); nx <= std::min(x + 1, m_development.width - 1); ++nx) {
            sums[colour(ny, nx)] += at(ny, nx);
            ++counts[colour(ny, nx)];
        }
    }
    for (int c = 0; c < 3; ++c) {
        const int value = c == colour(y, x) ? at(y, x) : sums[c] / counts[c];
        rows.row(c, row)[x] = static_cast<std::uint16_t>(value);
    }
}

} // namespace dcraw
