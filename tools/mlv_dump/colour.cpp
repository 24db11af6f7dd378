// SPDX-License-Identifier: MIT
#include "mlv_dump/colour.h"

#include <algorithm>
#include <cmath>

namespace mlvdump {
namespace {

// IEC 61966-2-1, XYZ to linear sRGB.
constexpr ColourMatrix srgb{3.2406,  -1.5372, -0.4986, //
                            -0.9689, 1.8758,  0.0415,  //
                            0.0557,  -0.2040, 1.0570};

constexpr double daylightKelvin = 5500;

double determinant(const ColourMatrix &m)
{
    return m[0] * (m[4] * m[8] - m[5] * m[7]) - m[1] * (m[3] * m[8] - m[5] * m[6]) +
           m[2] * (m[3] * m[7] - m[4] * m[6]);
}

bool isUsableMatrix(const ColourMatrix &matrix)
{
    const bool moderate = std::all_of(matrix.begin(), matrix.end(), [](double value) {
        return std::isfinite(value) && std::abs(value) <= 10;
    });
    return moderate && std::abs(determinant(matrix)) > 1e-3;
}

/// x of the CIE daylight locus: a/T³ + b/T² + c/T + d, each set of constants for a stretch of it.
double daylightX(double kelvin)
{
    struct Stretch
    {
        double a, b, c, d;
    };
    constexpr Stretch below4000{0.27475e9, -0.98598e6, 1174.44, 0.145986};
    constexpr Stretch below7000{-4.6070e9, 2.9678e6, 99.11, 0.244063};
    constexpr Stretch above7000{-2.0064e9, 1.9018e6, 247.48, 0.237040};
    const auto &s = kelvin <= 4000 ? below4000 : kelvin <= 7000 ? below7000 : above7000;
    return ((s.a / kelvin + s.b) / kelvin + s.c) / kelvin + s.d;
}

bool hasGains(const mlv::WhiteBalance &balance)
{
    const bool all = balance.gainRed != 0 && balance.gainGreen != 0 && balance.gainBlue != 0;
    const bool allAlike =
        balance.gainRed == balance.gainGreen && balance.gainBlue == balance.gainGreen;
    return all && !allAlike;
}

Neutral neutralOfGains(const mlv::WhiteBalance &balance)
{
    const double green = balance.gainGreen;
    return {balance.gainRed / green, 1.0, balance.gainBlue / green};
}

double kelvinOf(const mlv::WhiteBalance &balance)
{
    switch (balance.mode) {
    case mlv::WhiteBalanceMode::Auto:
    case mlv::WhiteBalanceMode::Kelvin:
        return balance.kelvin;
    case mlv::WhiteBalanceMode::Cloudy:
        return 6000;
    case mlv::WhiteBalanceMode::Tungsten:
        return 3200;
    case mlv::WhiteBalanceMode::Fluorescent:
        return 4000;
    case mlv::WhiteBalanceMode::Shade:
        return 7000;
    default:
        return daylightKelvin;
    }
}

} // namespace

bool isUsable(const Neutral &neutral)
{
    return std::all_of(neutral.begin(), neutral.end(), [](double value) {
        return std::isfinite(value) && value >= 0.01 && value <= 100;
    });
}

ColourMatrix colourMatrix(const mlv::RawInfo &rawInfo)
{
    ColourMatrix matrix{};
    for (std::size_t i = 0; i < matrix.size(); ++i) {
        const double numerator = rawInfo.colourMatrix[2 * i];
        matrix[i] = numerator / rawInfo.colourMatrix[2 * i + 1];
    }
    return isUsableMatrix(matrix) ? matrix : srgb;
}

Neutral neutralOfKelvin(double kelvin, const ColourMatrix &matrix)
{
    const double x = daylightX(std::clamp(kelvin, 2000.0, 25000.0));
    const double y = -3 * x * x + 2.87 * x - 0.275;
    const std::array<double, 3> xyz{x / y, 1, (1 - x - y) / y};
    Neutral neutral{};
    for (std::size_t row = 0; row < 3; ++row)
        for (std::size_t column = 0; column < 3; ++column)
            neutral[row] += matrix[row * 3 + column] * xyz[column];
    const double green = neutral[1];
    for (auto &value : neutral)
        value /= green;
    return isUsable(neutral) ? neutral : Neutral{1, 1, 1};
}

Neutral asShotNeutral(const mlv::WhiteBalance *balance, const ColourMatrix &matrix)
{
    if (balance == nullptr)
        return neutralOfKelvin(daylightKelvin, matrix);
    const bool custom = balance->mode == mlv::WhiteBalanceMode::Custom;
    const double kelvin = kelvinOf(*balance);
    if (hasGains(*balance) && (custom || kelvin == 0) && isUsable(neutralOfGains(*balance)))
        return neutralOfGains(*balance);
    if (custom && balance->gainRed != 0 && !hasGains(*balance))
        return {1, 1, 1};
    return neutralOfKelvin(kelvin == 0 ? daylightKelvin : kelvin, matrix);
}

} // namespace mlvdump
