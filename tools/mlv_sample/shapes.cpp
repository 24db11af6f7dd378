// SPDX-License-Identifier: MIT
#include "mlv_sample/shapes.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numbers>

namespace sample {

double coverage(double distance, double pixel)
{
    return std::clamp(0.5 - distance / pixel, 0.0, 1.0);
}

Rgb blended(const Rgb &below, const Rgb &above, double share)
{
    Rgb result{};
    for (std::size_t i = 0; i < 3; ++i)
        result[i] = below[i] + (above[i] - below[i]) * share;
    return result;
}

double discDistance(Point point, Point centre, double radius)
{
    return std::hypot(point.x - centre.x, point.y - centre.y) - radius;
}

double boxDistance(Point point, Point centre, Point half, double angle)
{
    const double dx = point.x - centre.x;
    const double dy = point.y - centre.y;
    const double turnedX = dx * std::cos(angle) + dy * std::sin(angle);
    const double turnedY = dy * std::cos(angle) - dx * std::sin(angle);
    return std::max(std::abs(turnedX) - half.x, std::abs(turnedY) - half.y);
}

double starShare(Point fromCentre, int spokes, double pixel)
{
    const double radius = std::hypot(fromCentre.x, fromCentre.y);
    const double wave = std::sin(spokes * std::atan2(fromCentre.y, fromCentre.x));
    // Near an edge the sine times this is the distance to it; towards the centre, where spokes are
    // thinner than a pixel, the share falls to an even grey.
    return coverage(-wave * radius / spokes, pixel);
}

double linesShare(double x, int lines, double width, double pixel)
{
    if (std::abs(x) > width / 2)
        return 0;
    const double period = width / (lines - 0.5);
    const double wave = std::sin(2 * std::numbers::pi * (x + width / 2) / period);
    return coverage(-wave * period / (2 * std::numbers::pi), pixel);
}

double digitDistance(Point point, int digit)
{
    struct Segment
    {
        Point centre;
        Point half;
    };
    constexpr double thick = 0.055;
    constexpr double upright = 0.19;
    constexpr double level = 0.17;
    // In the usual order a to g: clockwise from the top, the middle last.
    constexpr std::array<Segment, 7> segments{{{{0.25, 0.06}, {level, thick}},
                                               {{0.44, 0.28}, {thick, upright}},
                                               {{0.44, 0.72}, {thick, upright}},
                                               {{0.25, 0.94}, {level, thick}},
                                               {{0.06, 0.72}, {thick, upright}},
                                               {{0.06, 0.28}, {thick, upright}},
                                               {{0.25, 0.50}, {level, thick}}}};
    constexpr std::array<unsigned, 10> lit{0x3f, 0x06, 0x5b, 0x4f, 0x66,
                                           0x6d, 0x7d, 0x07, 0x7f, 0x6f};

    double nearest = std::numeric_limits<double>::max();
    for (std::size_t i = 0; i < segments.size(); ++i)
        if ((lit[static_cast<std::size_t>(digit)] >> i) & 1U)
            nearest = std::min(nearest, boxDistance(point, segments[i].centre, segments[i].half));
    return nearest;
}

} // namespace sample
