// SPDX-License-Identifier: MIT
#include "mergereference.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

template <typename Sample>
constexpr int highest = std::numeric_limits<Sample>::max();

struct Colour
{
    float hue = 0; // degrees
    float saturation = 0;
    float top = 0;
    float range = 0;
};

template <typename Sample>
Colour colourOf(const Sample *pixel)
{
    const float r = pixel[0];
    const float g = pixel[1];
    const float b = pixel[2];
    Colour colour;
    colour.top = std::max({r, g, b});
    const float d = colour.top - std::min({r, g, b});
    colour.range = d;
    if (d > 0) {
        if (colour.top == r)
            colour.hue = static_cast<float>(60.0 * std::fmod(double((g - b) / d), 6.0));
        else if (colour.top == g)
            colour.hue = 60.0F * ((b - r) / d + 2.0F);
        else
            colour.hue = 60.0F * ((r - g) / d + 4.0F);
        colour.saturation = colour.top > 0 ? d / colour.top : 0;
        if (colour.hue < 0)
            colour.hue += 360.0F;
    }
    return colour;
}

template <typename Sample>
float lumaOf(const Sample *first, const Sample *second)
{
    const auto mean = [&](int channel) {
        return static_cast<float>((first[channel] + second[channel]) * 0.5 / highest<Sample>);
    };
    return static_cast<float>(0.299 * double(mean(0)) + 0.587 * double(mean(1)) +
                              0.114 * double(mean(2)));
}

template <typename Sample>
bool isMoreSaturated(const Colour &one, const Colour &other)
{
    return one.saturation > other.saturation;
}

/// Quotients of 16-bit numbers may be equal in single precision though they differ.
template <>
bool isMoreSaturated<std::uint16_t>(const Colour &one, const Colour &other)
{
    return double(one.range) * double(other.top) > double(other.range) * double(one.top);
}

template <typename Sample>
Colour chosen(const Colour &colour1, Sample green1, const Colour &colour2, Sample green2)
{
    constexpr float dark = 63 * (highest<Sample> / 255);
    if (green1 < green2) {
        if (isMoreSaturated<Sample>(colour1, colour2) && colour2.top >= colour1.top &&
            colour1.top > dark)
            return colour1;
        return colour2;
    }
    if (isMoreSaturated<Sample>(colour2, colour1) && colour1.top >= colour2.top &&
        colour2.top > dark)
        return colour2;
    return colour1;
}

template <typename Sample>
Sample toSample(float component)
{
    return static_cast<Sample>(static_cast<int>(component * float(highest<Sample>)));
}

template <typename Sample>
void mergePixel(const Sample *first, const Sample *second, Sample *result)
{
    const Colour colour = chosen(colourOf(first), first[1], colourOf(second), second[1]);
    const float y = lumaOf(first, second);
    const float c = colour.saturation * y;
    const auto h = static_cast<float>(std::fmod(double(colour.hue) / 60.0, 6.0));
    const auto x =
        static_cast<float>((1.0 - std::fabs(std::fmod(double(h), 2.0) - 1.0)) * double(c));
    const float m = y - c;
    float r = 0;
    float g = 0;
    float b = 0;
    if (h >= 0 && h < 1) {
        r = c;
        g = x;
    } else if (h >= 1 && h < 2) {
        r = x;
        g = c;
    } else if (h >= 2 && h < 3) {
        g = c;
        b = x;
    } else if (h >= 3 && h < 4) {
        g = x;
        b = c;
    } else if (h >= 4 && h < 5) {
        r = x;
        b = c;
    } else if (h >= 5 && h < 6) {
        r = c;
        b = x;
    }
    result[0] = toSample<Sample>(r + m);
    result[1] = toSample<Sample>(g + m);
    result[2] = toSample<Sample>(b + m);
}

} // namespace

void mergeReference(const std::uint8_t *first, const std::uint8_t *second, std::uint8_t *result,
                    std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i)
        mergePixel(first + 3 * i, second + 3 * i, result + 3 * i);
}

void mergeReference(const std::uint16_t *first, const std::uint16_t *second, std::uint16_t *result,
                    std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i)
        mergePixel(first + 3 * i, second + 3 * i, result + 3 * i);
}
