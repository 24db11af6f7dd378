// SPDX-License-Identifier: MIT
#pragma once

#include "mlv/blocks.h"

#include <array>

namespace mlvdump {

/// Three rows (camera red, green, blue) of three columns (X, Y, Z).
using ColourMatrix = std::array<double, 9>;
/// What the camera sees of a white surface: red, green, blue, with green 1.
using Neutral = std::array<double, 3>;

/// From XYZ to the camera's colours in daylight: the recording's own, or that of a camera with the
/// primaries of sRGB when the recording has none that can be used.
ColourMatrix colourMatrix(const mlv::RawInfo &rawInfo);

/// Whether frames can be developed with it.
bool isUsable(const Neutral &neutral);

/// The neutral of daylight of that colour temperature, limited to 2000 to 25000 K.
Neutral neutralOfKelvin(double kelvin, const ColourMatrix &matrix);

/// The neutral of the camera's white balance setting; without one, that of 5500 K.
Neutral asShotNeutral(const mlv::WhiteBalance *balance, const ColourMatrix &matrix);

} // namespace mlvdump
