// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>

namespace dcraw {

/// The light of one row of samples on the scale of 16 bits, divided into even and odd columns.
struct ScaledRow
{
    const std::uint16_t *samples; ///< 2 × `columns`, readable 64 further
    std::int32_t black;
    float scale[2];
    std::uint16_t *light[2]; ///< writable up to the next multiple of 32
};

/// `columns` of each half.
void scale(const ScaledRow &row, std::size_t columns);

} // namespace dcraw
