// SPDX-License-Identifier: MIT
#include "mlv_sample/sensor.h"

#include "mlv_sample/random.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace sample {

namespace {

// Everything below is on the 14-bit scale of the base sensitivity.
constexpr float blackLevel = 2048.0F;
constexpr float whiteLevel = 15000.0F;
constexpr float saturation = whiteLevel - blackLevel;

// A full well of 60000 electrons fills the range at the base sensitivity.
constexpr float electronsPerLevel = 60000.0F / saturation;
// The converter's noise stays what it is; the noise in front of the amplifier grows with the gain.
constexpr float converterNoise = 6.0F;
constexpr float pixelNoise = 0.7F;

constexpr float hotPixelShare = 1.0F / 20000.0F;
constexpr float cornerFallOff = 0.35F;
constexpr float pixelResponseSpread = 0.02F;
constexpr float columnOffsetSpread = 6.0F;
constexpr float dustDepth = 0.12F;

enum SensorPurpose : std::uint64_t { HotPixel = 1, HotLevel, Response, Column };

struct Dust
{
    float x; // shares of width and height
    float y;
    float radius; // share of the height
};
constexpr std::array<Dust, 3> dustSpots{
    {{0.30F, 0.86F, 0.020F}, {0.71F, 0.36F, 0.015F}, {0.93F, 0.60F, 0.025F}}};

float throughLens(float x, float y, float width, float height)
{
    const float dx = x - width / 2;
    const float dy = y - height / 2;
    const float radiusSquared = (dx * dx + dy * dy) * 4 / (width * width + height * height);
    float share = 1.0F - cornerFallOff * radiusSquared;
    for (const Dust &dust : dustSpots) {
        const float distance =
            std::hypot(x - dust.x * width, y - dust.y * height) / (dust.radius * height);
        share *= 1.0F - dustDepth * std::clamp(2.0F - 2.0F * distance, 0.0F, 1.0F);
    }
    return share;
}

} // namespace

Levels levelsFor(int bits)
{
    const float scale = std::ldexp(1.0F, bits - 14);
    return {bits, static_cast<int>(std::lround(blackLevel * scale)),
            static_cast<int>(std::lround(whiteLevel * scale))};
}

Sensor::Sensor(int width, int height)
    : m_width(width)
    , m_shading(index(0, height))
    , m_darkSignal(index(0, height))
    , m_columnOffset(static_cast<std::size_t>(width))
{
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const float response = 1.0F + pixelResponseSpread * (scattered(x, y, Response) - 0.5F);
            m_shading[index(x, y)] =
                response * throughLens(static_cast<float>(x), static_cast<float>(y),
                                       static_cast<float>(width), static_cast<float>(height));
            if (scattered(x, y, HotPixel) < hotPixelShare)
                m_darkSignal[index(x, y)] = 200.0F + 4000.0F * scattered(x, y, HotLevel);
        }
    }
    for (int x = 0; x < width; ++x) {
        m_columnOffset[static_cast<std::size_t>(x)] =
            columnOffsetSpread * (scattered(x, 0, Column) - 0.5F);
    }
}

void Sensor::readRow(int y, std::span<const float> light, const ReadOut &readOut,
                     std::span<std::uint16_t> samples) const
{
    const float scale = std::ldexp(1.0F, readOut.levels.bits - 14);
    const auto toSample = [&](float level) {
        const float stored = std::clamp((level + blackLevel) * scale + 0.5F, 0.0F,
                                        static_cast<float>(readOut.levels.white));
        return static_cast<std::uint16_t>(stored);
    };
    const float gain = readOut.gain;
    const std::size_t width = samples.size();
    if (readOut.perfect) {
        for (std::size_t x = 0; x < width; ++x)
            samples[x] = toSample(light[x] * saturation * gain);
        return;
    }

    const float readVariance =
        converterNoise * converterNoise + pixelNoise * pixelNoise * gain * gain;
    const float shotVariance = gain * gain / electronsPerLevel;
    const float *dark = &m_darkSignal[index(0, y)];
    Random random(mixed(readOut.noise) + static_cast<std::uint64_t>(y));
    for (std::size_t x = 0; x < width; ++x) {
        const float signal = light[x] * saturation + dark[x];
        const float deviation = std::sqrt(readVariance + shotVariance * signal);
        samples[x] = toSample(signal * gain + m_columnOffset[x] + deviation * random.normal());
    }
}

} // namespace sample
