// SPDX-License-Identifier: MIT
#pragma once

#include "mlv_dump/residuals.h"

#include <array>

namespace mlvdump {

/// What deviates in a frame, measured against the rest of the same frame: no camera's noise has to
/// be known. Levels are those of Residuals.
class FrameNoise
{
public:
    /// Measures the frame that is loaded.
    FrameNoise(Residuals &residuals, const mlv::FrameFormat &format);

    /// What is known for samples that should measure `expected`.
    struct Limits
    {
        int even;     ///< neighbours that differ by no more lie in the more even half of the frame
        int usual;    ///< of the samples there, three in ten lie farther off; 0: nothing is known
        int striking; ///< noise goes nowhere near it
        unsigned
            clarity; ///< how far a change of the light by a quarter stands out of what is usual
    };
    Limits at(int expected) const
    {
        const int light = expected - m_black;
        const int step = light > 0 ? light >> m_shift : 0;
        auto limits = m_limits[static_cast<unsigned>(step < steps ? step : steps - 1)];
        limits.striking += light > 0 ? light / smallestShare : 0;
        return limits;
    }
    /// Whether the sensor could have measured more than that.
    bool isBelowClip(int level) const { return level < m_nearClip; }

    /// Whether that is so much above black.
    bool isAbove(int level, int light) const { return level - m_black > light; }

private:
    static constexpr int steps = 32;         // of light, evenly wide
    static constexpr int smallestShare = 32; // of the light: nobody sees less

    int m_black;
    int m_nearClip;
    int m_shift; ///< from light above black to a step
    std::array<Limits, steps> m_limits{};
};

} // namespace mlvdump
