// SPDX-License-Identifier: MIT
#pragma once

#include "mlv_dump/pixelstatistics.h"

#include <optional>
#include <vector>

namespace mlvdump {

/// Pixels that don't measure the scene, each by itself. Ordered.
struct SinglePixels
{
    std::vector<Place> hot;   ///< too high in every frame
    std::vector<Place> cold;  ///< too low
    std::vector<Place> stuck; ///< of one level, whatever their neighbours measure
};

/// A pixel is found where it strikes in nearly all frames while the eight pixels about it, of the
/// other colours, don't: a lens spreads a point of the scene over several. Where many would be
/// found, the scene makes them and none is. Those of the lattice are left out. `clipLevel` is the
/// one of Residuals at which the sensor is full.
SinglePixels findSinglePixels(const PixelStatistics &statistics,
                              const std::optional<Lattice> &lattice, int clipLevel);

} // namespace mlvdump
