// SPDX-License-Identifier: MIT
// Shapes with smooth edges. Lengths are in picture heights; a signed distance is negative inside.
#pragma once

#include "mlv_sample/camera.h"

namespace sample {

struct Point
{
    double x;
    double y;
};

/// The share of a pixel (`pixel` wide) that lies inside an edge `distance` away.
double coverage(double distance, double pixel);

/// `below` with `above` laid over it.
Rgb blended(const Rgb &below, const Rgb &above, double share);

double discDistance(Point point, Point centre, double radius);

/// A rectangle of half sizes `half` around `centre`, turned by `angle` radians.
double boxDistance(Point point, Point centre, Point half, double angle = 0);

/// The share of white in a star of `spokes` white and as many black spokes.
double starShare(Point fromCentre, int spokes, double pixel);

/// The share of white in `lines` vertical white lines, together `width` wide, around x = 0.
double linesShare(double x, int lines, double width, double pixel);

/// The distance to the lit segments of a seven-segment digit, 1 high and 0.5 wide, its upper left
/// corner at (0, 0). `digit` is 0 to 9.
double digitDistance(Point point, int digit);

} // namespace sample
