// SPDX-License-Identifier: MIT
// The filmed scene: a chart by which movement, colour, sharpness, tones and sync can be judged.
#pragma once

#include "mlv_sample/camera.h"

#include <array>
#include <vector>

namespace sample {

/// A part of the picture in shares of its width (x) and height (y).
struct Area
{
    double left;
    double top;
    double right;
    double bottom;
};

/// Where the colour patches are, and their sRGB values.
struct Patch
{
    Area area;
    std::array<int, 3> srgb;
};

/// A row of twelve patches: skin tones, sky, foliage, primaries and their mixtures, white and grey.
const std::array<Patch, 12> &colourPatches();

/// A ramp of greys from left to right, each half as light as the one before; the first is white.
constexpr int greySteps = 12;
Area greyStep(int step);

/// What moves, at one moment.
struct Moment
{
    int frame = 0;        ///< shown by the counter
    double seconds = 0;   ///< since the start of the recording
    bool lampLit = false; ///< the lamp that shines when the sound ticks
};

/// The chart, drawn at any resolution. Colours are linear sRGB; 1 is the chart's white, the ball's
/// highlight is brighter.
class Scene
{
public:
    Scene(int width, int height);

    /// The colour at the pixel (x, y), edges smoothed over about a pixel's width.
    Rgb colourAt(int x, int y, const Moment &moment) const;

    /// Outside of these areas every moment looks the same.
    std::vector<Area> changingAreas() const;

private:
    double m_width;
    double m_height;
    double m_chartRadius;
};

} // namespace sample
