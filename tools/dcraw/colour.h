// SPDX-License-Identifier: MIT
#pragma once

#include "dcraw/development.h"

#include <array>

namespace dcraw {

/// What a colour matrix says about a camera.
struct CameraColour
{
    Matrix cameraToRgb;            ///< linear sRGB
    Matrix cameraToXyz;            ///< divided by the white point
    std::array<float, 4> daylight; ///< multipliers: red, green, blue, second green
};

/// `colorMatrix` leads from XYZ to the camera's colours, row by row. The sums are taken in one
/// fixed order, each rounded by itself: the last bits of the picture depend on it. A matrix without
/// an inverse gives values that aren't finite.
CameraColour cameraColour(const std::array<std::array<double, 3>, 3> &colorMatrix);

/// From the camera's colours to one of the spaces that -o numbers, 1 to 6.
Matrix cameraToOutput(const Matrix &cameraToRgb, int colourSpace);

} // namespace dcraw
