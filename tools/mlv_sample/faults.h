// SPDX-License-Identifier: MIT
// What is wrong with a sensor: pixels that don't measure the scene, columns of other gains.
#pragma once

#include "mlv_sample/sensor.h"
#include "mlv_sample/settings.h"

#include <cstdint>
#include <span>
#include <vector>

namespace sample {

/// A single pixel that doesn't measure the scene.
struct FaultyPixel
{
    enum class Kind {
        Hot,   ///< adds `level`
        Cold,  ///< measures a tenth of the light at most
        Stuck, ///< has `level`, whatever the light
    };
    Place place;
    Kind kind;
    float level; ///< above black, of 14 bits
};

/// The frame's corner in the read-out.
Place cropOf(const Settings &settings, int frame);

/// The faults of a sensor, fixed in the read-out for a seed, wherever the frame lies in it.
class Faults
{
public:
    explicit Faults(const Settings &settings);

    /// In no order, each place once, all within the first frame.
    const std::vector<FaultyPixel> &pixels() const { return m_pixels; }
    /// The places of all lattices within the frame of that number, each once.
    std::vector<Place> latticePlaces(int frame) const;

    /// Changes the samples of a frame as the sensor would have.
    void apply(std::span<std::uint16_t> samples, const Levels &levels, int frame) const;

private:
    bool isInLattice(const Place &place) const;
    void scatter(FaultyPixel::Kind kind, int count);
    void applyColumnGains(std::span<std::uint16_t> samples, const Levels &levels,
                          const Place &crop) const;

    const Settings &m_settings; // outlives this
    std::vector<FaultyPixel> m_pixels;
};

} // namespace sample
