// SPDX-License-Identifier: MIT
#pragma once

#include "mlv_dump/pixelstatistics.h"

#include <optional>

namespace mlvdump {

/// The lattice in which pixels deviate, without a table of cameras. Such pixels are red and blue
/// ones alone; so whatever repeats in the green ones is the scene's, or the columns', and a lattice
/// has to stand out against it. Where it is certain it is taken whole, also where it doesn't show
/// at the moment; but not beyond lines on which it would show and doesn't.
std::optional<Lattice> findLattice(const PixelStatistics &statistics);

/// The smallest part of a cell that the lattice repeats.
struct LatticePeriod
{
    int columns;
    int lines;
};
LatticePeriod periodOf(const Lattice &lattice);

} // namespace mlvdump
