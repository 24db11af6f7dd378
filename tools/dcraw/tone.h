// SPDX-License-Identifier: MIT
#pragma once

#include "dcraw/options.h"

#include <cstdint>
#include <vector>

namespace dcraw {

/// The curve from light to what is stored: a straight line below `end`, then a power that meets it.
struct ToneCurve
{
    double exponent;
    double slope;
    double end;    ///< of the straight line, 0 to 1
    double offset; ///< that the power is lowered by

    /// The stored value for a share of the light, both 0 to 1.
    double operator()(double light) const;
};

/// The curve whose two parts meet without a bend; without a straight line where the slope allows
/// none.
ToneCurve toneCurve(const Gamma &gamma);

/// What is stored for each of the 65536 values of light at the brightness: 0 to 255, or to 65535.
std::vector<std::uint16_t> toneTable(const Gamma &gamma, double brightness, bool sixteenBits);

/// The curve's mean power in 256ths, which the colour profile names in place of the curve.
double meanPower(const ToneCurve &curve);

} // namespace dcraw
