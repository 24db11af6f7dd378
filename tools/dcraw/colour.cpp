// SPDX-License-Identifier: MIT
#include "dcraw/colour.h"

#include <algorithm>
#include <cassert>

namespace dcraw {
namespace {

using DoubleMatrix = std::array<std::array<double, 3>, 3>;

// Linear sRGB to XYZ, and the white point of 6500 K in XYZ.
constexpr DoubleMatrix rgbToXyz{{{0.412453, 0.357580, 0.180423},
                                 {0.212671, 0.715160, 0.072169},
                                 {0.019334, 0.119193, 0.950227}}};
constexpr std::array<float, 3> whitePoint{0.950456F, 1.0F, 1.088754F};

// From linear sRGB to the output's primaries.
constexpr std::array<DoubleMatrix, 5> rgbToOutput{{
    // Adobe RGB (1998)
    {{{0.715146, 0.284856, 0.000000},
      {0.000000, 1.000000, 0.000000},
      {0.000000, 0.041166, 0.958839}}},
    // WideGamut
    {{{0.593087, 0.404710, 0.002206},
      {0.095413, 0.843149, 0.061439},
      {0.011621, 0.069091, 0.919288}}},
    // ProPhoto
    {{{0.529317, 0.330092, 0.140588},
      {0.098368, 0.873465, 0.028169},
      {0.016879, 0.117663, 0.865457}}},
    // XYZ
    rgbToXyz,
    // ACES
    {{{0.432996, 0.375380, 0.189317},
      {0.089427, 0.816523, 0.102989},
      {0.019165, 0.118150, 0.941914}}},
}};

/// A product whose elements are rounded to single precision after each term.
Matrix product(const DoubleMatrix &left, const Matrix &right)
{
    Matrix result{};
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t j = 0; j < 3; ++j)
            for (std::size_t k = 0; k < 3; ++k)
                result[i][j] = static_cast<float>(result[i][j] + left[i][k] * right[k][j]);
    }
    return result;
}

/// From linear sRGB to the camera's colours, and what each row added up to before it was made 1.
struct RgbToCamera
{
    DoubleMatrix matrix{};
    std::array<double, 3> rowSums{};
};

RgbToCamera rgbToCamera(const DoubleMatrix &colorMatrix)
{
    RgbToCamera result;
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t j = 0; j < 3; ++j)
            for (std::size_t k = 0; k < 3; ++k)
                result.matrix[i][j] += colorMatrix[i][k] * rgbToXyz[k][j];
        for (const double value : result.matrix[i])
            result.rowSums[i] += value;
        for (double &value : result.matrix[i])
            value /= result.rowSums[i];
    }
    return result;
}

/// The inverse of (transposed m) × m.
DoubleMatrix inverseOfSquare(const DoubleMatrix &matrix)
{
    // Gauss and Jordan: the square beside the unit matrix.
    std::array<std::array<double, 6>, 3> work{};
    for (std::size_t i = 0; i < 3; ++i) {
        work[i][i + 3] = 1;
        for (std::size_t j = 0; j < 3; ++j)
            for (std::size_t k = 0; k < 3; ++k)
                work[i][j] += matrix[k][i] * matrix[k][j];
    }
    for (std::size_t i = 0; i < 3; ++i) {
        const double pivot = work[i][i];
        for (double &value : work[i])
            value /= pivot;
        for (std::size_t k = 0; k < 3; ++k) {
            if (k == i)
                continue;
            const double factor = work[k][i];
            for (std::size_t j = 0; j < 6; ++j)
                work[k][j] -= work[i][j] * factor;
        }
    }
    DoubleMatrix inverse{};
    for (std::size_t i = 0; i < 3; ++i)
        std::copy(work[i].begin() + 3, work[i].end(), inverse[i].begin());
    return inverse;
}

Matrix pseudoInverse(const DoubleMatrix &matrix)
{
    const DoubleMatrix inverse = inverseOfSquare(matrix);
    Matrix result{};
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t j = 0; j < 3; ++j) {
            double sum = 0;
            for (std::size_t k = 0; k < 3; ++k)
                sum += inverse[j][k] * matrix[i][k];
            result[j][i] = static_cast<float>(sum);
        }
    }
    return result;
}

Matrix relativeXyz(const Matrix &cameraToRgb)
{
    Matrix result{};
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t j = 0; j < 3; ++j) {
            for (std::size_t k = 0; k < 3; ++k) {
                const double term = rgbToXyz[i][k] * cameraToRgb[k][j] / whitePoint[i];
                result[i][j] = static_cast<float>(result[i][j] + term);
            }
        }
    }
    return result;
}

} // namespace

CameraColour cameraColour(const std::array<std::array<double, 3>, 3> &colorMatrix)
{
    const RgbToCamera camera = rgbToCamera(colorMatrix);
    CameraColour colour{};
    colour.cameraToRgb = pseudoInverse(camera.matrix);
    colour.cameraToXyz = relativeXyz(colour.cameraToRgb);
    for (std::size_t i = 0; i < 3; ++i)
        colour.daylight[i] = static_cast<float>(1 / camera.rowSums[i]);
    colour.daylight[3] = colour.daylight[1];
    return colour;
}

Matrix cameraToOutput(const Matrix &cameraToRgb, int colourSpace)
{
    constexpr int sRgb = 1;
    assert(colourSpace >= sRgb && colourSpace <= 6);
    return colourSpace == sRgb
               ? cameraToRgb
               : product(rgbToOutput[static_cast<std::size_t>(colourSpace) - 2], cameraToRgb);
}

} // namespace dcraw
