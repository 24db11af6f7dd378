// SPDX-License-Identifier: MIT
#include "mlv_sample/scene.h"

#include "mlv_sample/shapes.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace sample {

namespace {

constexpr Rgb black{0.005, 0.005, 0.005};
constexpr Rgb white{1, 1, 1};
constexpr Rgb backdrop{0.18, 0.18, 0.18};
constexpr Rgb trackColour{0.04, 0.04, 0.045};
constexpr Rgb ballColour{0.80, 0.22, 0.03};
constexpr Rgb ballHighlight{1.8, 1.8, 1.8};

constexpr double patchLeft = 0.03;
constexpr double patchPitch = 0.94 / 12;
constexpr double patchGap = 0.005;

// The charts in the middle band; x as a share of the width, sizes in picture heights.
constexpr double bandY = 0.565;
constexpr double largestRadius = 0.155;
constexpr double starX = 0.14;
constexpr double squareX = 0.38;
constexpr double wedgeX = 0.62;
constexpr double dialX = 0.86;
constexpr double squareTilt = 5 * std::numbers::pi / 180;

constexpr Area trackArea{0.03, 0.755, 0.97, 0.855};
constexpr double ballRadius = 0.042;
constexpr double crossingSeconds = 2;

constexpr Area counterArea{0.03, 0.88, 0.60, 0.97};
constexpr int counterDigits = 6;
constexpr double digitHeight = 0.075;
constexpr double digitPitch = 0.055;
constexpr Area lampArea{0.86, 0.88, 0.97, 0.97};

bool inside(const Area &area, double x, double y)
{
    return x >= area.left && x < area.right && y >= area.top && y < area.bottom;
}

Area shrunk(Area area, double gap)
{
    return {area.left + gap, area.top, area.right - gap, area.bottom};
}

/// Everything of one pixel that the drawing functions need.
struct Spot
{
    Point point;   // picture heights
    double aspect; // the picture's width in picture heights
    double pixel;
    double chartRadius;
    double shareX() const { return point.x / aspect; }
    Point from(double centreShareX, double centreY) const
    {
        return {point.x - centreShareX * aspect, point.y - centreY};
    }
};

Rgb flatChart(const Spot &spot)
{
    for (const Patch &patch : colourPatches()) {
        if (inside(patch.area, spot.shareX(), spot.point.y)) {
            return {linearFromSrgb(patch.srgb[0]), linearFromSrgb(patch.srgb[1]),
                    linearFromSrgb(patch.srgb[2])};
        }
    }
    for (int step = 0; step < greySteps; ++step) {
        if (inside(greyStep(step), spot.shareX(), spot.point.y)) {
            const double grey = std::ldexp(1.0, -step);
            return {grey, grey, grey};
        }
    }
    return backdrop;
}

Rgb sharpnessCharts(const Spot &spot, Rgb colour)
{
    const Point star = spot.from(starX, bandY);
    const double inStar = coverage(discDistance(star, {0, 0}, spot.chartRadius), spot.pixel);
    colour = blended(colour, blended(black, white, starShare(star, 36, spot.pixel)), inStar);

    const Point square = spot.from(squareX, bandY);
    const double inPaper =
        coverage(boxDistance(square, {0, 0}, {spot.chartRadius, spot.chartRadius}), spot.pixel);
    const double inSquare = coverage(
        boxDistance(square, {0, 0}, {spot.chartRadius * 0.6, spot.chartRadius * 0.6}, squareTilt),
        spot.pixel);
    colour = blended(colour, blended(white, black, inSquare), inPaper);

    const Point wedge = spot.from(wedgeX, bandY);
    const double inWedge =
        coverage(boxDistance(wedge, {0, 0}, {spot.chartRadius, spot.chartRadius}), spot.pixel);
    const double narrowing = (spot.chartRadius - wedge.y) / (2 * spot.chartRadius); // 1 at the top
    const double lines =
        linesShare(wedge.x, 9, spot.chartRadius * (0.25 + 1.5 * narrowing), spot.pixel);
    return blended(colour, blended(white, black, lines), inWedge);
}

Rgb dial(const Spot &spot, Rgb colour, double seconds)
{
    const Point point = spot.from(dialX, bandY);
    colour =
        blended(colour, white, coverage(discDistance(point, {0, 0}, spot.chartRadius), spot.pixel));
    // One turn a second, straight up when the tick sounds.
    const double angle = 2 * std::numbers::pi * (seconds - 0.5);
    const Point middle{0.4 * spot.chartRadius * std::sin(angle),
                       -0.4 * spot.chartRadius * std::cos(angle)};
    const double hand = boxDistance(point, middle, {0.008, 0.42 * spot.chartRadius}, angle);
    colour = blended(colour, black, coverage(hand, spot.pixel));
    const double mark =
        boxDistance(point, {0, -0.91 * spot.chartRadius}, {0.006, 0.06 * spot.chartRadius});
    return blended(colour, {0.7, 0.02, 0.02}, coverage(mark, spot.pixel));
}

Rgb track(const Spot &spot, double seconds)
{
    // There and back at one speed.
    const double phase = std::fmod(seconds / crossingSeconds, 2.0);
    const double way = phase < 1 ? phase : 2 - phase;
    const double first = trackArea.left * spot.aspect + ballRadius;
    const double last = trackArea.right * spot.aspect - ballRadius;
    const double middleY = (trackArea.top + trackArea.bottom) / 2;
    const Point centre{first + (last - first) * way, middleY};
    const double ball = coverage(discDistance(spot.point, centre, ballRadius), spot.pixel);
    const Point shine{centre.x - 0.35 * ballRadius, centre.y - 0.35 * ballRadius};
    const double shiny = coverage(discDistance(spot.point, shine, ballRadius / 5), spot.pixel);
    return blended(blended(trackColour, ballColour, ball), ballHighlight, shiny);
}

Rgb counter(const Spot &spot, int frame)
{
    const double left = counterArea.left * spot.aspect + 0.01;
    const double top = (counterArea.top + counterArea.bottom - digitHeight) / 2;
    Rgb colour = black;
    int rest = frame;
    for (int place = counterDigits - 1; place >= 0; --place, rest /= 10) {
        const Point point{(spot.point.x - left - place * digitPitch) / digitHeight,
                          (spot.point.y - top) / digitHeight};
        const double share = coverage(digitDistance(point, rest % 10) * digitHeight, spot.pixel);
        colour = blended(colour, white, share);
    }
    return colour;
}

} // namespace

const std::array<Patch, 12> &colourPatches()
{
    static const std::array<Patch, 12> patches = [] {
        constexpr std::array<std::array<int, 3>, 12> colours{{{115, 82, 68},
                                                              {194, 150, 130},
                                                              {98, 122, 157},
                                                              {87, 108, 67},
                                                              {175, 54, 60},
                                                              {70, 148, 73},
                                                              {56, 61, 150},
                                                              {231, 199, 31},
                                                              {187, 86, 149},
                                                              {30, 133, 150},
                                                              {243, 243, 243},
                                                              {122, 122, 122}}};
        std::array<Patch, 12> result{};
        for (std::size_t i = 0; i < result.size(); ++i) {
            const double left = patchLeft + patchPitch * static_cast<double>(i);
            result[i] = {shrunk({left, 0.04, left + patchPitch, 0.20}, patchGap), colours[i]};
        }
        return result;
    }();
    return patches;
}

Area greyStep(int step)
{
    const double left = patchLeft + patchPitch * step;
    return {left, 0.24, left + patchPitch, 0.37};
}

// Side by side the charts need a picture about 1.6 times as wide as it is high.
Scene::Scene(int width, int height)
    : m_width(width)
    , m_height(height)
    , m_chartRadius(largestRadius * std::min(1.0, m_width / m_height / 1.6))
{
}

Rgb Scene::colourAt(int x, int y, const Moment &moment) const
{
    const Spot spot{{(x + 0.5) / m_height, (y + 0.5) / m_height},
                    m_width / m_height,
                    1 / m_height,
                    m_chartRadius};
    const double shareX = spot.shareX();
    const double shareY = spot.point.y;
    if (inside(trackArea, shareX, shareY))
        return track(spot, moment.seconds);
    if (inside(counterArea, shareX, shareY))
        return counter(spot, moment.frame);
    if (inside(lampArea, shareX, shareY))
        return moment.lampLit ? white : black;
    if (shareY < 0.39)
        return flatChart(spot);
    return dial(spot, sharpnessCharts(spot, backdrop), moment.seconds);
}

std::vector<Area> Scene::changingAreas() const
{
    const double dialHalf = m_chartRadius * m_height / m_width + 1 / m_width;
    const double half = m_chartRadius + 1 / m_height;
    return {trackArea,
            counterArea,
            lampArea,
            {dialX - dialHalf, bandY - half, dialX + dialHalf, bandY + half}};
}

} // namespace sample
