// SPDX-License-Identifier: MIT
#pragma once

#include "dcraw/colour.h"
#include "dcraw/negative.h"
#include "dcraw/options.h"

#include <array>

namespace dcraw {

/// The white balance: what each colour is multiplied by, in the order red, green, blue, second
/// green; the largest of them is 1, the smallest where highlights are clipped (-H 0). Throws
/// NotCovered when one is extreme.
std::array<float, 4> multipliers(const Negative &negative, const Options &options,
                                 const CameraColour &colour);

/// What leads from a sample above black to 16 bits.
std::array<float, 4> scaleOf(const Negative &negative, const std::array<float, 4> &multipliers);

} // namespace dcraw
