// SPDX-License-Identifier: MIT
#include "cr2hdr/noise.h"

#include <algorithm>
#include <cmath>

namespace dualiso {
namespace {

constexpr float firstBinLight = 16.0F;
constexpr float noiseBinsPerStop = 2.0F;
constexpr std::size_t enoughDifferences = 20000;
constexpr std::size_t fewestDifferences = 200;

// A value less the mean of two others.
constexpr double varianceOfDifference = 1.5;

// Edges make a few differences far larger than noise does, so the largest tenth is left out; of a
// normal distribution the rest has this share of the variance.
constexpr double keptShare = 0.9;
constexpr double keptVariance = 0.623;

double trimmedVariance(std::vector<float> differences)
{
    const auto kept =
        static_cast<std::ptrdiff_t>(keptShare * static_cast<double>(differences.size()));
    const auto smaller = [](float a, float b) { return std::abs(a) < std::abs(b); };
    std::nth_element(differences.begin(), differences.begin() + kept, differences.end(), smaller);
    double sum = 0;
    for (auto value = differences.begin(); value != differences.begin() + kept; ++value)
        sum += static_cast<double>(*value) * static_cast<double>(*value);
    return sum / static_cast<double>(kept) / keptVariance / varianceOfDifference;
}

} // namespace

std::size_t NoiseMeasurement::binOf(float light)
{
    if (light <= firstBinLight)
        return 0;
    const float bin = 1 + noiseBinsPerStop * std::log2(light / firstBinLight);
    return std::min(static_cast<std::size_t>(bin), binCount - 1);
}

void NoiseMeasurement::add(const Frame &frame, const RowPattern &pattern, bool highRows)
{
    // Every row of a small frame; of a large one no more than fill the bins several times over.
    const int pairsApart = std::max(1, frame.height / 400) * 4;
    for (int y = 0; y < frame.height; ++y) {
        if (pattern.isHigh(y) != highRows || y % pairsApart >= 4)
            continue;
        const auto row = frame.row(y);
        for (std::size_t x = 2; x + 2 < row.size(); ++x) {
            const float around = (row[x - 2] + row[x + 2]) / 2;
            if (std::max({row[x - 2], row[x], row[x + 2]}) > 0.9F * frame.saturation)
                continue;
            const std::size_t bin = binOf(around);
            if (m_differences[bin].size() < enoughDifferences) {
                m_differences[bin].push_back(row[x] - around);
                m_light[bin] += static_cast<double>(around);
            }
        }
    }
}

std::vector<NoiseMeasurement::Point> NoiseMeasurement::points() const
{
    std::vector<Point> points;
    for (std::size_t bin = 0; bin < binCount; ++bin) {
        if (m_differences[bin].size() >= fewestDifferences) {
            const double light = m_light[bin] / static_cast<double>(m_differences[bin].size());
            points.push_back({std::max(0.0, light), trimmedVariance(m_differences[bin])});
        }
    }
    return points;
}

Noise NoiseMeasurement::noise(float step) const
{
    const double rounding = static_cast<double>(step) * static_cast<double>(step) / 12;
    Noise noise;
    const std::vector<Point> measured = points();
    if (measured.empty())
        return noise;
    const auto quietest = std::min_element(
        measured.begin(), measured.end(),
        [](const Point &one, const Point &other) { return one.variance < other.variance; });
    const double read = std::max(quietest->variance, rounding);

    // Texture only ever adds to the differences, so the smaller of the slopes are the noise's.
    std::vector<double> slopes;
    for (const Point &point : measured)
        if (point.light > quietest->light + 4 * std::sqrt(read))
            slopes.push_back(std::max(0.0, point.variance - read) / point.light);
    double slope = 0;
    if (!slopes.empty()) {
        const auto quarter = slopes.begin() + static_cast<std::ptrdiff_t>(slopes.size() / 4);
        std::nth_element(slopes.begin(), quarter, slopes.end());
        slope = *quarter;
    }
    // The quietest place is not without light.
    noise.readVariance =
        static_cast<float>(std::max(read - slope * quietest->light, read / 4 + rounding));
    noise.varianceOfLight = static_cast<float>(slope);
    return noise;
}

} // namespace dualiso
