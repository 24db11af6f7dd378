// SPDX-License-Identifier: MIT
#include "dcraw/multipliers.h"

#include "dcraw/notcovered.h"

#include <algorithm>
#include <cmath>

namespace dcraw {
namespace {

using Multipliers = std::array<float, 4>;

Multipliers ofCamera(const std::array<double, 3> &neutral)
{
    Multipliers result{};
    for (std::size_t i = 0; i < 3; ++i)
        result[i] = static_cast<float>(1 / neutral[i]);
    result[3] = result[1];
    return result;
}

/// What -r gives. A green of 0 stands for 1, a second green of 0 for the first.
Multipliers given(const std::array<double, 4> &numbers)
{
    Multipliers result{};
    std::transform(numbers.begin(), numbers.end(), result.begin(),
                   [](double number) { return static_cast<float>(number); });
    if (result[1] == 0)
        result[1] = 1;
    if (result[3] == 0)
        result[3] = result[1];
    return result;
}

Multipliers chosen(const Negative &negative, const Options &options, const CameraColour &colour)
{
    if (options.cameraWhiteBalance)
        return ofCamera(negative.neutral);
    if (options.multipliers && static_cast<float>(options.multipliers->front()) != 0)
        return given(*options.multipliers);
    return colour.daylight;
}

void requireOrdinary(float smallest, float largest)
{
    require(smallest >= 0.000001F && largest <= 1000000 && largest <= 1000 * smallest,
            "has or is given an extreme white balance");
}

} // namespace

std::array<float, 4> multipliers(const Negative &negative, const Options &options,
                                 const CameraColour &colour)
{
    const Multipliers camera = ofCamera(negative.neutral);
    require(std::all_of(camera.begin(), camera.end(),
                        [](float value) { return std::isfinite(value) && value > 0; }),
            "has an impossible white balance");
    Multipliers result = chosen(negative, options, colour);
    require(std::all_of(result.begin(), result.end(),
                        [](float value) { return std::isfinite(value) && value > 0; }),
            "has or is given an extreme white balance");
    const auto [smallest, largest] = std::minmax_element(result.begin(), result.end());
    requireOrdinary(*smallest, *largest);
    const float one = options.highlights == 0 ? *smallest : *largest;
    for (float &multiplier : result)
        multiplier /= one;
    return result;
}

std::array<float, 4> scaleOf(const Negative &negative, const std::array<float, 4> &multipliers)
{
    const double range = static_cast<double>(negative.white) - negative.black;
    std::array<float, 4> scale{};
    std::transform(
        multipliers.begin(), multipliers.end(), scale.begin(),
        [range](float multiplier) { return static_cast<float>(multiplier * 65535.0 / range); });
    return scale;
}

} // namespace dcraw
