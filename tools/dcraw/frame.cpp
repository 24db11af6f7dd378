// SPDX-License-Identifier: MIT
#include "dcraw/frame.h"

#include "dcraw/badpixels.h"
#include "dcraw/colour.h"
#include "dcraw/losslessrows.h"
#include "dcraw/multipliers.h"
#include "dcraw/negative.h"
#include "dcraw/notcovered.h"
#include "dcraw/packedrows.h"
#include "dcraw/profile.h"
#include "dcraw/tiffhead.h"
#include "dcraw/tone.h"

#include <algorithm>
#include <cmath>

namespace dcraw {
namespace {

/// The pattern with the second green told apart. It counts from the corner of the active area,
/// wherever that is.
std::array<std::array<std::uint8_t, 2>, 2> pattern(const Negative &negative)
{
    constexpr std::uint8_t green = 1;
    constexpr std::uint8_t blue = 2;
    constexpr std::uint8_t secondGreen = 3;
    const auto &cell = negative.pattern;
    std::array<std::array<std::uint8_t, 2>, 2> pattern{{{cell[0], cell[1]}, {cell[2], cell[3]}}};
    auto &rowOfBlue = cell[0] == blue || cell[1] == blue ? pattern[0] : pattern[1];
    std::replace(rowOfBlue.begin(), rowOfBlue.end(), green, secondGreen);
    return pattern;
}

Interpolation interpolation(const Options &options)
{
    if (options.halfSize)
        return Interpolation::HalfSize;
    return options.quality == 0 ? Interpolation::Bilinear : Interpolation::AdaptiveHomogeneity;
}

Highlights highlights(int method)
{
    switch (method) {
    case 2:
        return Highlights::Blend;
    case 3:
        return Highlights::Rebuild;
    default:
        return Highlights::Leave;
    }
}

/// A hostile scale could ask for any size.
void requireOrdinaryResult(const Development &development)
{
    constexpr double longestSide = 65535;
    constexpr double mostBytes = 1U << 31;
    const double width = development.width * std::max(development.pixelAspect, 1.0);
    const double height = development.height / std::min(development.pixelAspect, 1.0);
    require(width < longestSide && height < longestSide && width * height * 6 < mostBytes,
            "would become too large");
}

void setColour(const Negative &negative, const Options &options, Development &development)
{
    const CameraColour colour = cameraColour(negative.colorMatrix);
    require(colour.cameraToRgb[0][0] > 0.125F, "has an unusual colour matrix");
    const auto factors = multipliers(negative, options, colour);
    development.scale = scaleOf(negative, factors);
    std::copy_n(factors.begin(), 3, development.multipliers.begin());
    require(std::all_of(development.multipliers.begin(), development.multipliers.end(),
                        [](float factor) { return 32000 * factor >= 1; }),
            "has or is given an extreme white balance");
    development.cameraToXyz = colour.cameraToXyz;
    development.convertsColour = options.colourSpace != 0;
    if (development.convertsColour)
        development.cameraToOutput = cameraToOutput(colour.cameraToRgb, options.colourSpace);
}

Development developmentOf(const Negative &negative, const Options &options)
{
    Development development;
    development.width = negative.active.width();
    development.height = negative.active.height();
    development.pattern = pattern(negative);
    development.black = static_cast<std::int32_t>(negative.black);
    development.interpolation = interpolation(options);
    development.medianPasses = options.medianPasses;
    development.highlights = highlights(options.highlights);
    development.pixelAspect = negative.pixelAspect;
    development.sixteenBits = options.sixteenBits;
    requireOrdinaryResult(development);
    setColour(negative, options, development);
    development.tone =
        toneTable(options.gamma.value_or(Gamma{}), options.brightness, options.sixteenBits);
    return development;
}

std::vector<std::byte> profileOf(const Options &options)
{
    const double power = std::floor(meanPower(toneCurve(options.gamma.value_or(Gamma{}))) + 0.5);
    require(power >= 1 && power <= 32766, "is to get an extreme curve");
    if (options.colourSpace == 0)
        return {};
    const auto profile = colourProfile(options.colourSpace, static_cast<std::uint16_t>(power));
    return {profile.begin(), profile.end()};
}

} // namespace

Frame readFrame(const Options &options)
{
    raw::File file(options.file);
    require(!file.isSameAs(outputPath(options.file)), "would be written over itself");
    const Negative negative = readNegative(file);
    Frame frame;
    frame.development = developmentOf(negative, options);
    frame.head = tiffHead(negative, frame.development, profileOf(options));
    frame.samples = negative.isLosslessJpeg ? readLosslessRows(file, negative)
                                            : packedRows(std::move(file), negative);
    if (options.badPixels) {
        frame.samples = withoutBadPixels(*frame.samples, frame.development,
                                         readBadPixels(*options.badPixels), negative.time);
    } else {
        requireNoDefaultList();
    }
    return frame;
}

} // namespace dcraw
