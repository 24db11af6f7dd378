// SPDX-License-Identifier: MIT
#pragma once

#include "mlv/frameformat.h"
#include "mlv_dump/columngains.h"
#include "mlv_dump/lattice.h"
#include "mlv_dump/place.h"

#include <optional>
#include <vector>

namespace mlvdump {

/// What is repaired in every frame of a recording, the same in all of them, so that nothing
/// flickers.
struct Repair
{
    mlv::FrameFormat format{};
    std::vector<Place> pixels; ///< ordered, each once
    std::optional<Lattice> lattice;
    std::optional<ColumnGains> columns;
    int rowStep = 2; ///< rows to the next one of the same colours and exposure

    bool isEmpty() const { return pixels.empty() && !lattice && !columns; }
};

} // namespace mlvdump
