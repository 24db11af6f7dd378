// SPDX-License-Identifier: MIT
// What highlights are rebuilt from, and the rebuilding: one colour beside the strongest one.
#pragma once

#include <cstddef>
#include <cstdint>

namespace dcraw {

std::uint16_t largestValue(const std::uint16_t *values, std::size_t columns);

/// A row of blocks. Their rows of samples are `stride` apart and readable up to the next multiple
/// of 64 columns.
struct BlockRow
{
    const std::uint16_t *values;
    const std::uint16_t *strongest;
    std::size_t stride;
    int size; ///< of a block: 2 or 4 rows and columns
    std::size_t count;
};

/// The ratio of the colour to the strongest one in each block, or 0: in a block that tells it all
/// values are `saturation` to twice that, and the strongest colour isn't dark.
void findRatios(const BlockRow &blocks, int saturation, float *ratios);

/// The same to be changed.
struct RaisedBlocks
{
    std::uint16_t *values;
    const std::uint16_t *strongest;
    std::size_t stride;
    int size;
    std::size_t count;
};

/// Raises what is `clipped` or more to the strongest colour times the ratio of its block. Where the
/// ratio isn't known, 0, it is 1. `ratios` are readable up to the next multiple of 16.
void raise(const RaisedBlocks &blocks, const float *ratios, int clipped);

} // namespace dcraw
