// SPDX-License-Identifier: MIT
#include "mlv_sample/camera.h"

#include <cmath>

namespace sample {

namespace {

// IEC 61966-2-1: linear sRGB to XYZ, white being D65.
constexpr Matrix srgbToXyz{
    {{0.4124, 0.3576, 0.1805}, {0.2126, 0.7152, 0.0722}, {0.0193, 0.1192, 0.9505}}};

Rgb product(const Matrix &matrix, const Rgb &colour)
{
    Rgb result{};
    for (std::size_t row = 0; row < 3; ++row)
        for (std::size_t column = 0; column < 3; ++column)
            result[row] += matrix[row][column] * colour[column];
    return result;
}

} // namespace

Rgb cameraColour(const Rgb &linearSrgb)
{
    return product(xyzToCamera, product(srgbToXyz, linearSrgb));
}

Rgb cameraNeutral()
{
    const Rgb white = cameraColour({1, 1, 1});
    return {white[0] / white[1], 1.0, white[2] / white[1]};
}

double linearFromSrgb(double component)
{
    const double share = component / 255;
    return share <= 0.04045 ? share / 12.92 : std::pow((share + 0.055) / 1.055, 2.4);
}

} // namespace sample
