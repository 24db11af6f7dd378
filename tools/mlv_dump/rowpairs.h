// SPDX-License-Identifier: MIT
#pragma once

#include "mlv/frameformat.h"

#include <cstdint>
#include <span>

namespace mlvdump {

/// Whether pairs of rows alternate between two sensitivities in the frame: then the next row of the
/// same colours isn't one of the same exposure.
bool rowPairsAlternate(std::span<const std::uint16_t> samples, const mlv::FrameFormat &format);

} // namespace mlvdump
