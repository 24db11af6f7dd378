// SPDX-License-Identifier: MIT
#pragma once

#include "mlv/blocks.h"
#include "raw/samples.h"

#include <cstddef>

namespace mlv {

/// The shape and levels of a recording's frames, checked.
struct FrameFormat
{
    int width;         ///< pixels, at least 1
    int height;        ///< pixels, at least 1
    int bitsPerSample; ///< 10, 12, 14 or 16
    int blackLevel;    ///< 0 <= blackLevel < whiteLevel
    int whiteLevel;    ///< at most maxLevel()

    std::size_t sampleCount() const
    {
        return static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    }
    /// Of one uncompressed frame, bytes.
    std::size_t packedBytes() const { return raw::packedSize(sampleCount(), bitsPerSample); }
    int maxLevel() const { return (1 << bitsPerSample) - 1; }
    bool hasShapeOf(const FrameFormat &other) const
    {
        return width == other.width && height == other.height &&
               bitsPerSample == other.bitsPerSample;
    }
};

/// Throws raw::Error when no frame can have that size or depth. Levels that contradict the depth
/// are moved to the nearest that do not.
FrameFormat frameFormat(const RawInfo &rawInfo);

} // namespace mlv
