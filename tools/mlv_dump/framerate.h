// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>

namespace mlvdump {

/// Frames a second as a fraction, both parts above 0.
struct FrameRate
{
    std::uint32_t numerator;
    std::uint32_t denominator;

    /// How many samples of so many a second last as long as the frames, to the nearest one.
    std::uint64_t samplesOf(std::uint64_t frames, std::uint32_t sampleRate) const;
    /// How many frames a second of timecode counts: 24 at 24000/1001.
    std::uint32_t framesOfTimecodeSecond() const;
};

/// The rate that is meant: cameras record it to the thousandth. A whole number, or the 1000/1001 of
/// one, when the recorded rate is within 0.005 of it, the nearer of the two; else what was
/// recorded, to the thousandth. Nothing for a rate that no recording has, below 0.005 or above
/// 100,000.
std::optional<FrameRate> exactRate(double framesPerSecond);

} // namespace mlvdump
