// SPDX-License-Identifier: MIT
#pragma once

#include "cr2hdr/frame.h"
#include "cr2hdr/rowpattern.h"

#include <array>
#include <vector>

namespace dualiso {

/// The variance of a value: a constant from reading the sensor, and the light's own, which grows
/// with it.
struct Noise
{
    float readVariance = 36;
    float varianceOfLight = 0; ///< per level of light

    float variance(float light) const
    {
        return readVariance + varianceOfLight * (light > 0 ? light : 0);
    }
};

/// Measures the noise of one kind of rows by how much a value differs from the mean of its two
/// neighbours of the same colour in the row. Any number of frames can be added.
class NoiseMeasurement
{
public:
    void add(const Frame &frame, const RowPattern &pattern, bool highRows);

    /// `step` is that of the frames.
    Noise noise(float step) const;

private:
    struct Point
    {
        double light;
        double variance;
    };

    std::vector<Point> points() const;

    // Two bins a stop, by the neighbours' mean; the first takes everything up to 16.
    static constexpr std::size_t binCount = 22;
    static std::size_t binOf(float light);

    std::array<std::vector<float>, binCount> m_differences; ///< variance 1.5 times a value's
    std::array<double, binCount> m_light{};                 ///< sums
};

} // namespace dualiso
