// SPDX-License-Identifier: MIT
#include "mlv_dump/framerate.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace mlvdump {
namespace {

double distance(const FrameRate &rate, double framesPerSecond)
{
    return std::abs(1.0 * rate.numerator / rate.denominator - framesPerSecond);
}

std::uint32_t atLeastOne(double number)
{
    return static_cast<std::uint32_t>(std::max(1L, std::lround(number)));
}

} // namespace

std::uint64_t FrameRate::samplesOf(std::uint64_t frames, std::uint32_t sampleRate) const
{
    return (frames * sampleRate * denominator + numerator / 2) / numerator;
}

std::uint32_t FrameRate::framesOfTimecodeSecond() const
{
    return atLeastOne(1.0 * numerator / denominator);
}

std::optional<FrameRate> exactRate(double framesPerSecond)
{
    constexpr double near = 0.005;
    constexpr double most = 100000;
    if (!(framesPerSecond >= near && framesPerSecond <= most))
        return std::nullopt;
    const FrameRate whole{atLeastOne(framesPerSecond), 1};
    const FrameRate broadcast{1000 * atLeastOne(framesPerSecond * 1.001), 1001};
    const FrameRate &nearest =
        distance(broadcast, framesPerSecond) < distance(whole, framesPerSecond) ? broadcast : whole;
    if (distance(nearest, framesPerSecond) <= near)
        return nearest;
    const std::uint32_t thousandths = atLeastOne(framesPerSecond * 1000);
    const std::uint32_t common = std::gcd(thousandths, 1000U);
    return FrameRate{thousandths / common, 1000 / common};
}

} // namespace mlvdump
