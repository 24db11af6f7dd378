// SPDX-License-Identifier: MIT
#include "dcraw/development.h"

#include <cmath>

namespace dcraw {
namespace {

int halved(int size)
{
    return (size + 1) / 2;
}

int nearest(double size)
{
    return static_cast<int>(std::floor(size + 0.5));
}

} // namespace

int Development::pictureWidth() const
{
    return interpolation == Interpolation::HalfSize ? halved(width) : width;
}

int Development::pictureHeight() const
{
    return interpolation == Interpolation::HalfSize ? halved(height) : height;
}

int Development::outputWidth() const
{
    return pixelAspect > 1 ? nearest(pictureWidth() * pixelAspect) : pictureWidth();
}

int Development::outputHeight() const
{
    return pixelAspect < 1 ? nearest(pictureHeight() / pixelAspect) : pictureHeight();
}

std::size_t Development::outputRowBytes() const
{
    return static_cast<std::size_t>(outputWidth()) * 3 * (sixteenBits ? 2 : 1);
}

} // namespace dcraw
