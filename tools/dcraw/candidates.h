// SPDX-License-Identifier: MIT
// The two candidates of adaptive homogeneity: colours that were found along the rows (0) and along
// the columns (1). Each function makes one row, or the half of a row that has the sampled colour.
#pragma once

#include "dcraw/development.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace dcraw {

template <typename T>
using Both = std::array<T, 2>; // candidates

/// Green where red or blue was sampled.
struct GreenRow
{
    const std::uint16_t *own;
    const std::uint16_t *left; ///< the green neighbours
    const std::uint16_t *right;
    const std::uint16_t *above;
    const std::uint16_t *below;
    const std::uint16_t *twoAbove; ///< of the own colour again
    const std::uint16_t *twoBelow;
    Both<std::uint16_t *> green;
    Both<std::int32_t *> difference; ///< own colour − green
};

void findGreen(const GreenRow &row, std::size_t columns);

/// Where homogeneity is judged: CIE L*a*b*.
struct LabRow
{
    std::int32_t *lightness; ///< 0 to 6400
    std::int32_t *chroma;    ///< a in the low 16 bits, b in the high ones, both with sign
};

/// The smallest and the largest a of a row.
struct Range
{
    std::int32_t low = INT16_MAX;
    std::int32_t high = INT16_MIN;

    void include(Range other);
};

/// The opposite colour (blue or red) where red or blue was sampled.
struct OppositeRow
{
    bool ownIsRed;
    const std::uint16_t *own;
    Both<const std::uint16_t *> green;
    Both<std::array<const std::int32_t *, 4>> differences; ///< of the diagonal neighbours
    Both<std::uint16_t *> opposite;
    Both<LabRow> lab;
};

Both<Range> findOpposite(const OppositeRow &row, const Matrix &toXyz, std::size_t columns);

/// Red and blue where green was sampled.
struct RedBlueRow
{
    bool redIsBeside; ///< red left and right, blue above and below; or the other way round
    const std::uint16_t *green;
    Both<std::array<const std::int32_t *, 2>> besideDifferences;   ///< left and right
    Both<std::array<const std::int32_t *, 2>> verticalDifferences; ///< above and below
    Both<std::uint16_t *> beside;
    Both<std::uint16_t *> vertical;
    Both<LabRow> lab;
};

Both<Range> findRedAndBlue(const RedBlueRow &row, const Matrix &toXyz, std::size_t columns);

} // namespace dcraw
