// SPDX-License-Identifier: MIT
#pragma once

#include "mlv/frameformat.h"

#include <array>
#include <cstdint>
#include <span>

namespace mlvdump {

/// The gains of the amplifiers that read every eighth column of the sensor, red, green and blue
/// samples apart. Their mean is 1.
struct ColumnGains
{
    static constexpr std::size_t period = 8;
    /// By line and column of the read-out; where they aren't known, 1.
    std::array<std::array<double, period>, 2> gains;

    double least() const;
    double most() const;

    /// Evens a frame out in place. Its corner lies at column `cropX` and line `cropY` of the
    /// read-out. Samples near black, which the gain doesn't move, and clipped ones stay; none
    /// becomes brighter than the level at which the sensor is full, format.whiteLevel.
    void evenOut(std::span<std::uint16_t> samples, const mlv::FrameFormat &format, int cropX,
                 int cropY) const;
};

} // namespace mlvdump
