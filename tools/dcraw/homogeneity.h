// SPDX-License-Identifier: MIT
// Which of the two candidates is taken.
#pragma once

#include "dcraw/candidates.h"

namespace dcraw {

/// One half of a row of one candidate in Lab, and its neighbours.
template <typename T>
struct Neighbourhood
{
    T here;
    std::array<T, 4> around; ///< left, right, above, below
};

/// How many more of its four neighbours a sample resembles in the first candidate than in the
/// second: −4 to 4.
struct PreferenceRow
{
    Both<Neighbourhood<const std::int32_t *>> lightness;
    Both<Neighbourhood<const std::int32_t *>> chroma;
    std::int16_t *preference;
};

/// No two values of a may be further apart than this for judge() to compute in 16 bits.
constexpr int largestNarrowDifference = 32767;

/// `wide`: they may be.
void judge(const PreferenceRow &row, bool wide, std::size_t columns);

/// The values of one colour in both halves of a row: what is equal in both candidates is one
/// pointer twice.
struct ChosenPlane
{
    std::array<Both<const std::uint16_t *>, 2> candidates; ///< of the even and of the odd columns
    std::uint16_t *result;                                 ///< all columns
};

struct ChosenRow
{
    std::array<Both<const std::int16_t *>, 3> preferences; ///< rows above, here, below: both halves
    std::array<ChosenPlane, 3> planes;
};

/// `columns` of each half.
void choose(const ChosenRow &row, std::size_t columns);

} // namespace dcraw
