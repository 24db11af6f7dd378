// SPDX-License-Identifier: MIT
#include "cr2hdr/blending.h"

#include "cr2hdr/badpixels.h"
#include "cr2hdr/boxmean.h"
#include "cr2hdr/interpolation.h"
#include "cr2hdr/parallelrows.h"

#include <algorithm>

namespace dualiso {
namespace {

// High values are trusted less and less over the last part below saturation.
constexpr float trustEnds = 0.85F;

// Two values interpolated into one have half of the variance.
constexpr float interpolatedShare = 0.5F;

// The square of a difference beyond three deviations is no noise, whatever those around it are; nor
// does it tell more about them than that.
constexpr float mostOfNoise = 9.0F;

// Wide enough to tell an interpolation's error from noise, small enough to stay at its edge.
constexpr int errorReachX = 4;
constexpr int errorReachY = 3;
// Two standard deviations of the mean of so many squares, in shares of the noise's variance.
constexpr float meanUncertainty = 0.36F;

void matchExposures(Frame &frame, const Model &model)
{
    for (int y = 0; y < frame.height; ++y) {
        if (model.pattern.isHigh(y))
            for (float &value : frame.row(y))
                value = model.matched(value);
    }
}

/// Where a native value and the interpolated one of the other exposure differ by more than noise,
/// the interpolation missed detail. With the variance of that error known, weights by variance give
/// the blend with the least error: shadows lose the low rows' noise, detail stays where it is.
class Blend
{
public:
    Blend(const Frame &native, const Frame &interpolated, const Model &model)
        : m_native(native)
        , m_interpolated(interpolated)
        , m_pattern(model.pattern)
        , m_lowNoise(model.lowNoise)
        , m_highNoise(model.matchedHighNoise())
        , m_clippedFrom(model.matched(model.clippedFrom))
    {
    }

    /// What the square of the difference has beyond noise; scattered around 0 in even places.
    float errorAt(std::size_t x, int y) const
    {
        const Pair pair = at(x, y);
        const float noiseVariance = pair.nativeVariance + pair.interpolatedVariance;
        const float difference = pair.low - pair.high;
        const float square = std::min(difference * difference, mostOfNoise * noiseVariance);
        return trust(pair.high) * (square - noiseVariance);
    }

    float blendedAt(std::size_t x, int y, float meanError) const
    {
        const Pair pair = at(x, y);
        const float noiseVariance = pair.nativeVariance + pair.interpolatedVariance;
        const float difference = pair.low - pair.high;
        const float ownError = difference * difference - mostOfNoise * noiseVariance;
        const float errorVariance =
            std::max({0.0F, meanError - meanUncertainty * noiseVariance, ownError});
        float toInterpolated =
            pair.nativeVariance / (pair.nativeVariance + pair.interpolatedVariance + errorVariance);
        const float trusted = trust(pair.high);
        if (!m_pattern.isHigh(y))
            return pair.low + trusted * toInterpolated * (pair.high - pair.low);
        const float both = pair.high + toInterpolated * (pair.low - pair.high);
        // A saturated value is a lower bound of the light.
        return trusted * both + (1 - trusted) * std::max(pair.low, pair.high);
    }

private:
    struct Pair
    {
        float low;
        float high;
        float nativeVariance;
        float interpolatedVariance;
    };

    Pair at(std::size_t x, int y) const
    {
        const float native = m_native.row(y)[x];
        const float interpolated = m_interpolated.row(y)[x];
        const bool highRow = m_pattern.isHigh(y);
        const float low = highRow ? interpolated : native;
        const float high = highRow ? native : interpolated;
        const float light = high < m_clippedFrom ? high : low;
        const float lowVariance = m_lowNoise.variance(light);
        const float highVariance = m_highNoise.variance(light);
        return highRow ? Pair{low, high, highVariance, interpolatedShare * lowVariance}
                       : Pair{low, high, lowVariance, interpolatedShare * highVariance};
    }

    /// 1 for high values well below saturation, 0 for saturated ones.
    float trust(float high) const
    {
        const float way = (m_clippedFrom - high) / (m_clippedFrom * (1 - trustEnds));
        const float share = std::clamp(way, 0.0F, 1.0F);
        return share * share * (3 - 2 * share); // no kink at either end
    }

    const Frame &m_native;
    const Frame &m_interpolated;
    const RowPattern &m_pattern;
    Noise m_lowNoise;
    Noise m_highNoise;
    float m_clippedFrom;
};

Frame interpolated(const Frame &frame, const Model &model, int threads)
{
    Frame result(frame.width, frame.height);
    const float clippedFrom = model.matched(model.clippedFrom);
    parallelRows(frame.height, threads, [&](int first, int end) {
        Interpolation interpolation(frame, model.pattern);
        for (int y = first; y < end; ++y)
            interpolation.fillRow(y, clippedFrom, result.row(y));
    });
    return result;
}

} // namespace

void blend(Frame &frame, const Model &model, int threads)
{
    matchExposures(frame, model);
    repairBadPixels(frame, model, threads);

    const Frame other = interpolated(frame, model, threads);
    const Blend weighed(frame, other, model);
    Frame errors(frame.width, frame.height);
    parallelRows(frame.height, threads, [&](int first, int end) {
        for (int y = first; y < end; ++y) {
            auto row = errors.row(y);
            for (std::size_t x = 0; x < row.size(); ++x)
                row[x] = weighed.errorAt(x, y);
        }
    });
    errors = boxMean(errors, errorReachX, errorReachY, threads);
    parallelRows(frame.height, threads, [&](int first, int end) {
        for (int y = first; y < end; ++y) {
            auto row = frame.row(y);
            const auto errorRow = errors.row(y);
            for (std::size_t x = 0; x < row.size(); ++x)
                row[x] = weighed.blendedAt(x, y, errorRow[x]);
        }
    });
}

} // namespace dualiso
