// SPDX-License-Identifier: MIT
#pragma once

#include "cr2hdr/frame.h"
#include "cr2hdr/noise.h"
#include "cr2hdr/rowpattern.h"

#include <array>
#include <cstddef>
#include <optional>

namespace dualiso {

/// What a high row shows where a low row shows `low`: gain × low + offset.
struct ExposureMatch
{
    float gain = 1;
    float offset = 0;
};

/// Compares high values in even places with the mean of the low ones two rows above and below. Any
/// number of frames can be added.
class ExposureMatching
{
public:
    /// `clippedFrom` is the level from which high values are not to be believed.
    ExposureMatching(float clippedFrom, const Noise &highNoise)
        : m_clippedFrom(clippedFrom)
        , m_highNoise(highNoise)
    {
    }

    void add(const Frame &frame, const RowPattern &pattern);

    /// Nothing if too little of the picture could be compared.
    std::optional<ExposureMatch> match() const;

private:
    // Means of many values with the same brightness around them: so the noise of the low values,
    // which would flatten a straight line through single pairs, averages out. Eight bins a stop.
    struct Bin
    {
        double low = 0;
        double high = 0;
        double count = 0;
    };

    bool areAlike(float one, float other) const;

    float m_clippedFrom;
    Noise m_highNoise;
    std::array<Bin, 128> m_bins{};
};

} // namespace dualiso
