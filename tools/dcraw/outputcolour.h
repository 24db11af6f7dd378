// SPDX-License-Identifier: MIT
#pragma once

#include "dcraw/development.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace dcraw {

/// Red, green and blue of one row.
using PixelRow = std::array<std::uint16_t *, 3>;

/// Multiplies the pixels of a row by a matrix, in place. `columns` may be overrun up to the next
/// multiple of 64. What is above `limit` becomes it.
void convertColour(const PixelRow &row, const Matrix &matrix, std::uint16_t limit,
                   std::size_t columns);

} // namespace dcraw
