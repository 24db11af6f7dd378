// SPDX-License-Identifier: MIT
#include "cr2hdr/exposure.h"

#include <algorithm>
#include <cmath>

namespace dualiso {
namespace {

constexpr float exposureBinsPerStop = 8.0F;
// High values that differ by more than noise and this share stand at an edge.
constexpr float likelyDeviations = 4.0F;
constexpr float likelyShare = 0.03F;
// Far enough below saturation that no noise reaches it, or the brightest values would be missing.
constexpr float shareOfClipped = 0.7F;
constexpr double fewestValues = 50;
constexpr int fittingRounds = 5;
// Bins that lie further off than this share count less and less: texture, moving edges.
constexpr double expectedMisfit = 0.01;

} // namespace

bool ExposureMatching::areAlike(float one, float other) const
{
    const float mean = (one + other) / 2;
    const float noise = std::sqrt(2 * m_highNoise.variance(mean));
    return std::abs(one - other) < likelyDeviations * noise + likelyShare * std::abs(mean);
}

void ExposureMatching::add(const Frame &frame, const RowPattern &pattern)
{
    for (int y = 4; y + 4 < frame.height; ++y) {
        if (!pattern.isHigh(y))
            continue;
        const auto highAbove = frame.row(y - 4);
        const auto lowAbove = frame.row(y - 2);
        const auto high = frame.row(y);
        const auto lowBelow = frame.row(y + 2);
        const auto highBelow = frame.row(y + 4);
        for (std::size_t x = 2; x + 2 < high.size(); ++x) {
            // Brightness and evenness are judged by other values than the two that are compared,
            // so that neither is favoured.
            const float around = (high[x - 2] + high[x + 2]) / 2;
            if (around > shareOfClipped * m_clippedFrom || !areAlike(high[x - 2], high[x + 2]) ||
                !areAlike(highAbove[x], highBelow[x]) || !areAlike(highAbove[x], around))
                continue;
            const float bin = exposureBinsPerStop * std::log2(1 + std::max(0.0F, around));
            Bin &sums = m_bins[std::min(static_cast<std::size_t>(bin), m_bins.size() - 1)];
            sums.low += static_cast<double>(lowAbove[x] + lowBelow[x]) / 2;
            sums.high += static_cast<double>(high[x]);
            sums.count += 1;
        }
    }
}

// A straight line through the bins' means, the weights adapted to how well each bin fits.
std::optional<ExposureMatch> ExposureMatching::match() const
{
    double gain = 0;
    double offset = 0;
    for (int round = 0; round < fittingRounds; ++round) {
        double weights = 0;
        double low = 0;
        double high = 0;
        double lowLow = 0;
        double lowHigh = 0;
        for (const Bin &bin : m_bins) {
            if (bin.count < fewestValues)
                continue;
            const double x = bin.low / bin.count;
            const double y = bin.high / bin.count;
            const double expected = 1 + expectedMisfit * std::abs(y);
            const double misfit = round == 0 ? 0 : (y - gain * x - offset) / expected;
            const double weight =
                std::sqrt(bin.count) / (expected * expected) / (1 + misfit * misfit);
            weights += weight;
            low += weight * x;
            high += weight * y;
            lowLow += weight * x * x;
            lowHigh += weight * x * y;
        }
        const double spread = weights * lowLow - low * low;
        if (!(spread > 0))
            return std::nullopt;
        gain = (weights * lowHigh - low * high) / spread;
        offset = (high - gain * low) / weights;
    }
    return ExposureMatch{static_cast<float>(gain), static_cast<float>(offset)};
}

} // namespace dualiso
