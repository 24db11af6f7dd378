// SPDX-License-Identifier: MIT
#pragma once

#include "encoding/recipe.h"

namespace filmwright {

/// What the movie of a recipe usually takes, for a pixel of the recording: for estimates.
struct EncoderCost
{
    double secondsOfMegapixel; ///< of one core, measured on frames of 1920x1080
    double bytesOfPixel;       ///< 0: that depends on the picture
};

/// An encoder that isn't known is taken for one in the middle.
EncoderCost encoderCost(const Recipe &recipe);

} // namespace filmwright
