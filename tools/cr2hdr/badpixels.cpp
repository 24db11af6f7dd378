// SPDX-License-Identifier: MIT
#include "cr2hdr/badpixels.h"

#include "cr2hdr/mirrored.h"
#include "cr2hdr/parallelrows.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace dualiso {
namespace {

// More than a stop away from all neighbours, and further than noise reaches.
constexpr float leastDeviations = 8.0F;

using Neighbours = std::array<float, 8>;

class Repair
{
public:
    Repair(const Frame &frame, const Model &model)
        : m_frame(frame)
        , m_pattern(model.pattern)
        , m_lowNoise(model.lowNoise)
        , m_highNoise(model.matchedHighNoise())
        , m_clippedFrom(model.matched(model.clippedFrom))
    {
    }

    float repaired(int x, int y) const
    {
        const auto row = m_frame.row(y);
        const float value = row[static_cast<std::size_t>(x)];
        const auto isBetween = [value](float one, float other) {
            return std::min(one, other) <= value && value <= std::max(one, other);
        };
        // Most values are done with here.
        if (isBetween(row[static_cast<std::size_t>(mirrored(x - 2, m_frame.width))],
                      row[static_cast<std::size_t>(mirrored(x + 2, m_frame.width))]))
            return value;
        Neighbours around = neighbours(x, y);
        const auto [least, most] = std::minmax_element(around.begin(), around.end());
        if (isBetween(*least, *most))
            return value;
        const bool hot = value > *most + margin(*most, y) && *most < m_clippedFrom;
        // Dark points are common in pictures; a dead pixel shows in an even place.
        const bool cold = value < *least - margin(*least / 2, y) && *most < 2 * *least;
        if (!hot && !cold)
            return value;
        std::nth_element(around.begin(), around.begin() + 4, around.end());
        return around[4];
    }

private:
    Neighbours neighbours(int x, int y) const
    {
        Neighbours around{};
        std::size_t count = 0;
        for (const int rowStep : {-2, 0, 2}) {
            const auto row = m_frame.row(mirrored(y + rowStep, m_frame.height));
            for (const int columnStep : {-2, 0, 2}) {
                if (rowStep != 0 || columnStep != 0) {
                    around[count++] =
                        row[static_cast<std::size_t>(mirrored(x + columnStep, m_frame.width))];
                }
            }
        }
        return around;
    }

    float margin(float light, int y) const
    {
        const Noise &noise = m_pattern.isHigh(y) ? m_highNoise : m_lowNoise;
        // The neighbours in low rows have the low rows' noise.
        const float variance = noise.variance(light) + m_lowNoise.variance(light);
        return std::max(light, leastDeviations * std::sqrt(variance));
    }

    const Frame &m_frame;
    const RowPattern &m_pattern;
    Noise m_lowNoise;
    Noise m_highNoise;
    float m_clippedFrom;
};

} // namespace

void repairBadPixels(Frame &frame, const Model &model, int threads)
{
    const Frame original = frame;
    const Repair repair(original, model);
    parallelRows(frame.height, threads, [&](int first, int end) {
        for (int y = first; y < end; ++y) {
            auto row = frame.row(y);
            for (int x = 0; x < frame.width; ++x)
                row[static_cast<std::size_t>(x)] = repair.repaired(x, y);
        }
    });
}

} // namespace dualiso
