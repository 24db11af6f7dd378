// SPDX-License-Identifier: MIT
// The invented camera's colours: what its three filters see of a colour on a screen.
#pragma once

#include <array>

namespace sample {

using Rgb = std::array<double, 3>;
using Matrix = std::array<std::array<double, 3>, 3>;

/// From XYZ to camera red, green, blue, under daylight (D65). Rows × 10000 are whole numbers, as a
/// recording stores them.
constexpr Matrix xyzToCamera{
    {{0.7100, -0.1800, -0.0700}, {-0.4500, 1.2400, 0.2300}, {-0.0900, 0.2200, 0.6000}}};

/// Camera values of a colour given as linear sRGB.
Rgb cameraColour(const Rgb &linearSrgb);

/// Camera values of white, green being 1.
Rgb cameraNeutral();

/// The linear value of an sRGB component from 0 to 255 (IEC 61966-2-1).
double linearFromSrgb(double component);

} // namespace sample
