// SPDX-License-Identifier: MIT
#pragma once

#include "cr2hdr/exposure.h"
#include "cr2hdr/frame.h"
#include "cr2hdr/noise.h"
#include "cr2hdr/rowpattern.h"

#include <optional>
#include <span>

namespace dualiso {

/// What all frames of a recording have in common.
struct Model
{
    RowPattern pattern;
    ExposureMatch exposure;
    float clippedFrom = 0; ///< high values as they are in the file
    Noise lowNoise;
    Noise highNoise;

    /// A high value as a low row would show it.
    float matched(float highValue) const { return (highValue - exposure.offset) / exposure.gain; }
    /// The noise of high values after matched().
    Noise matchedHighNoise() const
    {
        const float gain = exposure.gain;
        return {highNoise.readVariance / (gain * gain), highNoise.varianceOfLight / gain};
    }
};

/// The model of dual-ISO frames with this pattern; nothing if their exposures can't be matched.
std::optional<Model> measure(std::span<const Frame> frames, const RowPattern &pattern);

} // namespace dualiso
