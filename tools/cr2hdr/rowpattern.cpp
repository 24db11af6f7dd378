// SPDX-License-Identifier: MIT
#include "cr2hdr/rowpattern.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numeric>

namespace dualiso {
namespace {

// Below, noise decides the ratio; above, saturation does.
constexpr float leastLight = 32.0F;
constexpr float mostOfSaturation = 0.9F;
// Beside a saturated value one up to here is darker by more than half a stop, however much more.
constexpr float clearlyUnsaturated = 0.6F;

// Sensitivities are whole stops apart; less than half a stop is an uneven sensor or the scene.
constexpr double leastContrastStops = 0.5;

constexpr std::uint64_t leastPairs = 200;

} // namespace

std::string RowPattern::letters() const
{
    std::string letters;
    for (const bool isHighRow : high)
        letters += isHighRow ? 'H' : 'L';
    return letters;
}

void PatternSearch::add(const Frame &frame)
{
    const float most = mostOfSaturation * frame.saturation;
    for (int y = 0; y + 2 < frame.height; ++y) {
        Histogram &histogram = m_ratios[static_cast<std::size_t>(y & 3)];
        const auto upper = frame.row(y);
        const auto lower = frame.row(y + 2);
        for (std::size_t x = 0; x < upper.size(); ++x) {
            const auto [less, more] = std::minmax(upper[x], lower[x]);
            const bool saturated = more > most && less > clearlyUnsaturated * frame.saturation;
            if (more < leastLight || saturated)
                continue;
            const float stops = std::log2(std::max(1.0F, lower[x]) / std::max(1.0F, upper[x]));
            const long bin = std::lround((stops + largestStops) * stepsPerStop);
            ++histogram[static_cast<std::size_t>(bin)];
        }
    }
}

std::uint64_t PatternSearch::pairs(std::size_t rowClass) const
{
    const Histogram &histogram = m_ratios[rowClass];
    return std::accumulate(histogram.begin(), histogram.end(), std::uint64_t{0});
}

double PatternSearch::medianStops(std::size_t rowClass) const
{
    const std::uint64_t half = pairs(rowClass) / 2;
    std::uint64_t counted = 0;
    std::size_t bin = 0;
    for (; counted <= half; ++bin)
        counted += m_ratios[rowClass][bin];
    return (static_cast<double>(bin) - 1) / stepsPerStop - largestStops;
}

Finding PatternSearch::finding() const
{
    for (std::size_t rowClass = 0; rowClass < m_ratios.size(); ++rowClass)
        if (pairs(rowClass) < leastPairs)
            return Finding::Unclear;
    for (const std::size_t rowClass : {std::size_t{0}, std::size_t{1}}) {
        const double down = medianStops(rowClass);
        const double downAgain = medianStops(rowClass + 2);
        if (down * downAgain >= 0 || std::abs(down - downAgain) / 2 < leastContrastStops)
            return Finding::NotDualIso;
    }
    return Finding::DualIso;
}

RowPattern PatternSearch::pattern() const
{
    RowPattern pattern;
    for (const std::size_t rowClass : {std::size_t{0}, std::size_t{1}}) {
        const bool isHigh = medianStops(rowClass) < medianStops(rowClass + 2);
        pattern.high[rowClass] = isHigh;
        pattern.high[rowClass + 2] = !isHigh;
    }
    return pattern;
}

} // namespace dualiso
