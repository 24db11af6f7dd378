// SPDX-License-Identifier: MIT
#pragma once

#include "raw/huffmantable.h"
#include "raw/losslessjpeg.h"

#include <array>
#include <optional>

namespace raw {

inline constexpr std::size_t maxComponents = 4;

/// Everything that stands before the entropy-coded data.
struct LosslessJpegHeader
{
    LosslessJpegShape shape;
    std::array<std::optional<HuffmanTable>, 4> tables;
    std::array<std::size_t, maxComponents> tableOfComponent; ///< has a value in `tables`
    int predictor;                                           ///< 1 to 7
    // What means nothing in a picture that can be read, but not every reader passes over.
    bool hasRestartInterval; ///< one of 0
    bool hasSamplingFactors; ///< of the only component
    std::size_t scanStart;   ///< of the entropy-coded data, bytes from the start of the stream
};

/// Throws Error when the stream can't be decoded.
LosslessJpegHeader readLosslessJpegHeader(std::span<const std::byte> stream);

/// Decodes the first lines of the stream that has the header: `samples` holds whole lines, all
/// components, at most as many as the picture has. Answers how much of the stream it has read; the
/// marker behind the data isn't before that. Throws Error when the data is damaged or cut off.
std::size_t decodeLosslessLines(const LosslessJpegHeader &header, std::span<const std::byte> stream,
                                std::span<std::uint16_t> samples);

} // namespace raw
