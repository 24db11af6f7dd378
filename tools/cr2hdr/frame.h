// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace dualiso {

/// The colours of the filters in a 2 × 2 cell, row by row: 0 red, 1 green, 2 blue.
using ColourPattern = std::array<std::uint8_t, 4>;

inline constexpr std::uint8_t green = 1;

/// A raw picture, one value a sample, row by row. Values are above black, on the scale of 14 bits a
/// sample whatever the file's depth: noise and thresholds have one meaning then.
struct Frame
{
    Frame() = default;
    Frame(int frameWidth, int frameHeight)
        : width(frameWidth)
        , height(frameHeight)
        , values(static_cast<std::size_t>(frameWidth) * static_cast<std::size_t>(frameHeight))
    {
    }

    std::span<float> row(int y) { return {values.data() + start(y), rowSize()}; }
    std::span<const float> row(int y) const { return {values.data() + start(y), rowSize()}; }
    bool isGreen(int x, int y) const
    {
        return colours[(y & 1 ? 2U : 0U) + (x & 1 ? 1U : 0U)] == green;
    }

    int width = 0; ///< even, at least 16, as is the height
    int height = 0;
    ColourPattern colours{0, 1, 1, 2};
    float saturation = 0; ///< the white level above black
    float step = 1;       ///< between two neighbouring levels of the file
    std::vector<float> values;

private:
    std::size_t rowSize() const { return static_cast<std::size_t>(width); }
    std::size_t start(int y) const { return static_cast<std::size_t>(y) * rowSize(); }
};

} // namespace dualiso
