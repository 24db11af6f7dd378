// SPDX-License-Identifier: MIT
#pragma once

#include "dcraw/texts.h"
#include "raw/file.h"

#include <array>
#include <cstdint>
#include <ctime>

namespace dcraw {

/// A rectangle of the frame: columns `left` to `right` - 1, rows `top` to `bottom` - 1.
struct Area
{
    int top = 0;
    int left = 0;
    int bottom = 0;
    int right = 0;

    int width() const { return right - left; }
    int height() const { return bottom - top; }
};

/// The facts of a DNG of the kind that mlv_dump and cr2hdr write.
struct Negative
{
    int width = 0; ///< of the stored frame
    int height = 0;
    Area active; ///< inside the frame, at least 22 × 22
    int bitsPerSample = 0;
    bool isLosslessJpeg = false;
    std::uint32_t stripOffset = 0;
    std::uint32_t stripBytes = 0; ///< the strip lies inside the file
    /// The colours of a 2 × 2 cell, row by row: 0 red, 1 green, 2 blue.
    std::array<std::uint8_t, 4> pattern{};
    std::uint32_t black = 0; ///< at most 65535, below `white`
    std::uint32_t white = 0;
    std::array<std::array<double, 3>, 3> colorMatrix{};
    std::array<double, 3> neutral{}; ///< each above 0
    double pixelAspect = 1;          ///< above 0
    Texts texts;                     ///< as the TIFF gets them
    std::time_t time = 0;            ///< as the camera's clock showed it, in UTC; at least 0
    float exposureSeconds = 0;       ///< 0 where the file doesn't say, as in the next three
    float fNumber = 0;
    float focalLength = 0; ///< millimetres
    std::uint16_t iso = 0;
};

/// Reads a DNG. Throws NotCovered or raw::Error for every other file.
Negative readNegative(const raw::File &file);

} // namespace dcraw
