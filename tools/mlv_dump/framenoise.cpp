// SPDX-License-Identifier: MIT
#include "mlv_dump/framenoise.h"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <numeric>
#include <vector>

namespace mlvdump {
namespace {

constexpr int noiseRowStride = 7;         // every seventh row is measured, so that all colours are
constexpr std::uint32_t fewSamples = 200; // samples tell nothing of a step
constexpr int levels = 2048;              // of a histogram; what lies beyond counts as the last
constexpr int strikingTimes = 5;

using Histogram = std::vector<std::uint32_t>;

void count(Histogram &histogram, int level)
{
    ++histogram[static_cast<std::size_t>(std::min(level, levels - 1))];
}

/// The level that `share` of the counted ones don't exceed.
int quantile(const Histogram &histogram, double share)
{
    const auto total = std::accumulate(histogram.begin(), histogram.end(), 0.0);
    double below = 0;
    int level = 0;
    while (level < levels - 1 &&
           (below += histogram[static_cast<std::size_t>(level)]) < share * total)
        ++level;
    return level;
}

} // namespace

FrameNoise::FrameNoise(Residuals &residuals, const mlv::FrameFormat &format)
    : m_black(format.blackLevel >> residuals.shift())
{
    const int range = (format.whiteLevel >> residuals.shift()) - m_black;
    m_nearClip = m_black + range - range / 32;
    m_shift = std::max(0, static_cast<int>(std::bit_width(static_cast<unsigned>(range))) -
                              std::countr_zero(static_cast<unsigned>(steps)));
    std::array<Histogram, steps> spreads;
    std::array<Histogram, steps> residualsOfEven;
    spreads.fill(Histogram(levels));
    residualsOfEven.fill(Histogram(levels));
    const auto forEachSample = [&](const auto &visit) {
        for (int y = 0; y < format.height; y += noiseRowStride) {
            const auto row = residuals.row(y);
            for (std::size_t x = 0; x < row.samples.size(); ++x) {
                const int light = row.samples[x] - row.residuals[x] - m_black;
                const int step = std::min(light > 0 ? light >> m_shift : 0, steps - 1);
                visit(static_cast<std::size_t>(step), int{row.spreads[x]},
                      std::abs(int{row.distances[x]}));
            }
        }
    };
    forEachSample([&](std::size_t step, int spread, int) { count(spreads[step], spread); });
    for (std::size_t step = 0; step < steps; ++step)
        m_limits[step].even = quantile(spreads[step], 0.5);
    forEachSample([&](std::size_t step, int spread, int residual) {
        if (spread <= m_limits[step].even)
            count(residualsOfEven[step], residual);
    });
    int striking = 1 << 14; // without samples nothing strikes
    for (std::size_t step = 0; step < steps; ++step) {
        const auto &histogram = residualsOfEven[step];
        auto &limits = m_limits[step];
        if (std::accumulate(histogram.begin(), histogram.end(), 0U) >= fewSamples) {
            limits.usual = std::max(1, quantile(histogram, 0.7));
            striking = strikingTimes * (limits.usual + 1);
            const int light = static_cast<int>(2 * step + 1) << m_shift >> 1;
            limits.clarity = static_cast<unsigned>(light / 4 / limits.usual);
        }
        limits.striking = striking;
    }
}

} // namespace mlvdump
