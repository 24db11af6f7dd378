// SPDX-License-Identifier: MIT
#pragma once

#include "mlv/huffmantable.h"
#include "mlv/losslessjpeg.h"

#include <array>
#include <optional>

namespace mlv {

inline constexpr std::size_t maxComponents = 4;

/// Everything that stands before the entropy-coded data.
struct LosslessJpegHeader
{
    LosslessJpegShape shape;
    std::array<std::optional<HuffmanTable>, 4> tables;
    std::array<std::size_t, maxComponents> tableOfComponent; ///< has a value in `tables`
    int predictor;                                           ///< 1 to 7
    std::size_t scanStart; ///< of the entropy-coded data, bytes from the start of the stream
};

/// Throws Error when the stream cannot be decoded.
[[nodiscard]] LosslessJpegHeader readLosslessJpegHeader(std::span<const std::byte> stream);

} // namespace mlv
