// SPDX-License-Identifier: MIT
#include "mlv_sample/sound.h"

#include "mlv_sample/frames.h"

#include <cmath>
#include <numbers>

namespace sample {

namespace {

constexpr double humHertz = 220;
constexpr double humLevel = 0.01;
constexpr double tickHertz = 1000;
constexpr double tickLevel = 0.6;
constexpr double tickSeconds = 0.04;

double wave(double hertz, double seconds)
{
    return std::sin(2 * std::numbers::pi * hertz * seconds);
}

double tickAt(const Settings &settings, double seconds)
{
    // The tick that may sound now is one of the two around this second.
    const int near = static_cast<int>(std::floor(seconds));
    for (int tick = near - 1; tick <= near; ++tick) {
        const double since = seconds - lampFrame(settings, tick) / settings.frameRate();
        if (tick >= 0 && since >= 0 && since < tickSeconds)
            return tickLevel * (1 - since / tickSeconds) * wave(tickHertz, since);
    }
    return 0;
}

} // namespace

std::vector<std::int16_t> makeSound(const Settings &settings, std::int64_t first, std::size_t count)
{
    std::vector<std::int16_t> samples;
    samples.reserve(count * soundChannels);
    for (std::size_t i = 0; i < count; ++i) {
        const double seconds =
            static_cast<double>(first + static_cast<std::int64_t>(i)) / soundRate;
        const double level = humLevel * wave(humHertz, seconds) + tickAt(settings, seconds);
        const auto sample = static_cast<std::int16_t>(std::lround(level * 32767));
        samples.insert(samples.end(), soundChannels, sample);
    }
    return samples;
}

} // namespace sample
