// SPDX-License-Identifier: MIT
#include "cr2hdr/model.h"

#include "cr2hdr/saturation.h"

namespace dualiso {
namespace {

// Less is no second exposure worth merging; it would be noise or an uneven sensor.
constexpr float leastGain = 1.2F;

} // namespace

std::optional<Model> measure(std::span<const Frame> frames, const RowPattern &pattern)
{
    SaturationSearch saturation;
    NoiseMeasurement lowRows;
    NoiseMeasurement highRows;
    for (const Frame &frame : frames) {
        saturation.add(frame, pattern);
        lowRows.add(frame, pattern, false);
        highRows.add(frame, pattern, true);
    }
    const float step = frames.front().step;
    const Noise highNoise = highRows.noise(step);
    ExposureMatching matching(saturation.clippedFrom(), highNoise);
    for (const Frame &frame : frames)
        matching.add(frame, pattern);
    const auto match = matching.match();
    if (!match || match->gain < leastGain)
        return std::nullopt;
    return Model{pattern, *match, saturation.clippedFrom(), lowRows.noise(step), highNoise};
}

} // namespace dualiso
