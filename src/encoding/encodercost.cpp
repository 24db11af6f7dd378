// SPDX-License-Identifier: MIT
#include "encoding/encodercost.h"

namespace filmwright {

namespace {

struct Encoder
{
    QLatin1String name;
    QLatin1String profile;
    EncoderCost cost;
};

/// DNxHR has one size for each picture size; those of ProRes are the format's usual rates at 1080p,
/// 102, 220 and 330 megabits a second; lossless frames of 16 bits with next to no noise take a
/// third of their samples.
constexpr Encoder encoders[] = {
    {QLatin1String("dnxhd"), QLatin1String("dnxhr_hqx"), {0.09, 0.44}},
    {QLatin1String("prores_ks"), QLatin1String("lt"), {0.13, 0.2}},
    {QLatin1String("prores_ks"), QLatin1String("hq"), {0.13, 0.44}},
    {QLatin1String("prores_ks"), QLatin1String("4444"), {0.13, 0.66}},
    {QLatin1String("ffv1"), QLatin1String(""), {0.24, 2}},
    {QLatin1String("libx264"), QLatin1String(""), {0.062, 0}},
    {QLatin1String("libx265"), QLatin1String(""), {0.13, 0}},
};

QString profileOf(const Recipe &recipe)
{
    const qsizetype option = recipe.video.indexOf(QLatin1String("-profile:v"));
    return option < 0 ? QString() : recipe.video.value(option + 1);
}

} // namespace

EncoderCost encoderCost(const Recipe &recipe)
{
    const QString profile = profileOf(recipe);
    EncoderCost cost{0.1, 0};
    for (const Encoder &encoder : encoders) {
        if (recipe.videoEncoder() != encoder.name)
            continue;
        cost.secondsOfMegapixel = encoder.cost.secondsOfMegapixel;
        if (profile == encoder.profile)
            cost.bytesOfPixel = encoder.cost.bytesOfPixel;
    }
    if (recipe.developsHalfSize())
        cost = {cost.secondsOfMegapixel / 4, cost.bytesOfPixel / 4};
    return cost;
}

} // namespace filmwright
