// SPDX-License-Identifier: MIT
// The sensor of an invented camera: levels, noise, hot pixels, and the lens's falling light.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace sample {

/// Black and saturation level of stored samples of `bits` bits.
struct Levels
{
    int bits;
    int black;
    int white;
};

/// 2048 and 15000 at 14 bits, as many cameras have it; the same share of the range at other depths.
/// `bits` is 10, 12, 14 or 16.
Levels levelsFor(int bits);

/// How a row is read out.
struct ReadOut
{
    Levels levels;
    float gain = 1.0F;       ///< amplification over the base sensitivity
    bool perfect = false;    ///< no noise and no dark signal, only the light
    std::uint64_t noise = 0; ///< chooses the noise; give every frame a number of its own
};

/// Turns light into samples. What is fixed in a real camera (hot pixels, column offsets, pixel
/// response, dust, vignetting) depends on the frame size alone, so that every dark and flat of a
/// size calibrates every clip of it.
class Sensor
{
public:
    Sensor(int width, int height);

    /// The share of the light that reaches sample (x, y) through the lens, and counts there.
    float shading(int x, int y) const { return m_shading[index(x, y)]; }

    /// Reads row `y`. `light` holds the row's values after shading; 1 saturates the base
    /// sensitivity. `samples` receives as many from 0 to the white level.
    void readRow(int y, std::span<const float> light, const ReadOut &readOut,
                 std::span<std::uint16_t> samples) const;

private:
    std::size_t index(int x, int y) const
    {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(m_width) +
               static_cast<std::size_t>(x);
    }

    int m_width;
    std::vector<float> m_shading;
    std::vector<float> m_darkSignal;   ///< amplified with the light; 14-bit levels
    std::vector<float> m_columnOffset; ///< added after amplification; 14-bit levels
};

} // namespace sample
