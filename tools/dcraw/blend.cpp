// SPDX-License-Identifier: MIT
// Must be compiled with -ffp-contract=off.
#include "dcraw/blend.h"

#include <algorithm>
#include <cmath>

namespace dcraw {
namespace {

/// A colour's place in the plane of equal lightness.
struct Chroma
{
    Chroma(float red, float green, float blue)
        : p(1.7320508F * red - 1.7320508F * green)
        , q((-red - green) + 2 * blue)
    {
    }

    float squared() const { return p * p + q * q; }

    float p;
    float q;
};

/// The low 16 bits, which is what is kept of a colour that leaves their range.
std::uint16_t low16(float value)
{
    return static_cast<std::uint16_t>(static_cast<int>(value));
}

} // namespace

void blendHighlights(const Development &development, Picture &rows)
{
    int lowest = 65535;
    for (const float multiplier : development.multipliers)
        lowest = std::min(lowest, static_cast<int>(65535 * multiplier));
    const auto limit = static_cast<float>(lowest);

    for (int row = 0; row < rows.rows(); ++row) {
        std::uint16_t *reds = rows.row(0, row);
        std::uint16_t *greens = rows.row(1, row);
        std::uint16_t *blues = rows.row(2, row);
        for (int x = 0; x < rows.width(); ++x) {
            if (std::max({reds[x], greens[x], blues[x]}) <= lowest)
                continue;
            const auto red = static_cast<float>(reds[x]);
            const auto green = static_cast<float>(greens[x]);
            const auto blue = static_cast<float>(blues[x]);
            const Chroma full(red, green, blue);
            if (full.squared() == 0) { // grey: there is no ratio, and black is written
                reds[x] = greens[x] = blues[x] = 0;
                continue;
            }
            const Chroma limited(std::min(red, limit), std::min(green, limit),
                                 std::min(blue, limit));
            const float ratio = std::sqrt(limited.squared() / full.squared());
            const float light = (red + green) + blue;
            const float p = full.p * ratio;
            const float q = full.q * ratio;
            reds[x] = low16(((light + 0.8660254F * p) - 0.5F * q) / 3);
            greens[x] = low16(((light - 0.8660254F * p) - 0.5F * q) / 3);
            blues[x] = low16((light + q) / 3);
        }
    }
}

} // namespace dcraw
