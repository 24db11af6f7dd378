// SPDX-License-Identifier: MIT
#include "mlv_sample/scenery.h"

#include "mlv_sample/random.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace sample {

namespace {

enum SceneryPurpose : std::uint64_t { Presence = 101, OffsetX, OffsetY, Brightness, Roughness };

constexpr double pointRadius = 0.65; // pixels: the lens's blur, a standard deviation

/// Points of light, at most one in each cell of `pitch` pixels, `share` of the cells having one.
struct Points
{
    int pitch;
    double share;
    double brightest;
};

int cellOf(int position, int pitch)
{
    return position >= 0 ? position / pitch : -((pitch - 1 - position) / pitch);
}

double pointsAt(int x, int y, const Points &points)
{
    double light = 0;
    for (int cellY = cellOf(y - 4, points.pitch); cellY <= cellOf(y + 4, points.pitch); ++cellY) {
        for (int cellX = cellOf(x - 4, points.pitch); cellX <= cellOf(x + 4, points.pitch);
             ++cellX) {
            if (scattered(cellX, cellY, Presence) >= points.share)
                continue;
            const double shareX = scattered(cellX, cellY, OffsetX);
            const double shareY = scattered(cellX, cellY, OffsetY);
            const double dx = x - (cellX + shareX) * points.pitch;
            const double dy = y - (cellY + shareY) * points.pitch;
            // Few are bright, many are faint.
            const double brightness =
                points.brightest * std::pow(scattered(cellX, cellY, Brightness), 4);
            light += brightness * std::exp(-(dx * dx + dy * dy) / (2 * pointRadius * pointRadius));
        }
    }
    return light;
}

/// Random grain of about `pixels` a piece, 0 to 1, smoothed between the pieces.
double grainAt(double x, double y, double pixels)
{
    const double column = std::floor(x / pixels);
    const double row = std::floor(y / pixels);
    const double shareX = x / pixels - column;
    const double shareY = y / pixels - row;
    const auto piece = [&](int right, int down) {
        return scattered(static_cast<int>(column) + right, static_cast<int>(row) + down, Roughness);
    };
    // Much quicker than std::lerp, whose extra cases don't come here.
    const auto between = [](double first, double second, double share) {
        return first + share * (second - first);
    };
    return between(between(piece(0, 0), piece(1, 0), shareX),
                   between(piece(0, 1), piece(1, 1), shareX), shareY);
}

double waves(double position, double period)
{
    return 0.5 + 0.5 * std::sin(2 * std::numbers::pi * position / period);
}

/// Four fabrics in turn, the first of which repeats as columns and lines of sensors do.
double fabricAt(int x, int y)
{
    switch ((x / 160 + y / 120) % 4) {
    case 0:
        return waves(x, 8) * waves(y, 10);
    case 1:
        return waves(x + 0.3 * y, 3.7);
    case 2:
        return grainAt(x, y, 1.7);
    default:
        return waves(x, 4.3) * waves(y, 3.1);
    }
}

Rgb landscapeAt(int x, int y, int frame)
{
    const double movedX = x + 3.3 * frame;
    const double movedY = y + 1.7 * frame;
    const double clouds = grainAt(movedX, movedY, 160);
    if (grainAt(movedX, 0, 220) * 200 + 100 > y % 600)
        return {0.45 + 0.3 * clouds, 0.55 + 0.25 * clouds, 0.75};
    const double grass =
        0.5 * grainAt(movedX, movedY, 4.5) + 0.3 * grainAt(movedX, movedY, 11) + 0.2 * clouds;
    return {0.15 + 0.5 * grass, 0.2 + 0.6 * grass, 0.1 + 0.35 * grass};
}

} // namespace

Rgb sceneryColour(Subject subject, int x, int y, int frame)
{
    const auto grey = [](double level) { return Rgb{level, level, level}; };
    switch (subject) {
    case Subject::Stars:
        return grey(0.004 + pointsAt(x, y, {24, 0.4, 3.0}));
    case Subject::Specular: {
        const double cloth = 0.05 + 0.1 * grainAt(x, y, 40);
        return grey(cloth + pointsAt(x, y, {12, 0.15, 6.0}));
    }
    case Subject::Texture:
        return grey(0.1 + 0.6 * fabricAt(x, y));
    case Subject::Grain:
        return grey(0.1 + 0.6 * grainAt(x + 5.7 * frame, y - 2.9 * frame, 1.6));
    default:
        return landscapeAt(x, y, frame);
    }
}

} // namespace sample
