// SPDX-License-Identifier: MIT
#include "dualscene.h"

#include "mlv_sample/frames.h"
#include "mlv_sample/sensor.h"

#include <cmath>
#include <complex>

namespace dualscene {

dualiso::Frame frame(const sample::Settings &settings, int number)
{
    sample::FrameMaker maker(settings);
    const auto &samples = maker.make(number);
    const sample::Levels levels = sample::levelsFor(settings.bits);
    dualiso::Frame frame(settings.width, settings.height);
    frame.step = std::ldexp(1.0F, 14 - settings.bits);
    frame.saturation = static_cast<float>(levels.white - levels.black) * frame.step;
    for (std::size_t i = 0; i < samples.size(); ++i)
        frame.values[i] = static_cast<float>(samples[i] - levels.black) * frame.step;
    return frame;
}

sample::Settings dualSettings(int highIso)
{
    sample::Settings settings;
    settings.width = 640;
    settings.height = 400;
    settings.highIso = highIso;
    return settings;
}

dualiso::Frame truth(sample::Settings settings, int number)
{
    settings.highIso = 0;
    settings.bits = 16;
    settings.perfect = true;
    return frame(settings, number);
}

double deviation(const dualiso::Frame &one, const dualiso::Frame &other, const sample::Area &area,
                 std::array<bool, 4> rows)
{
    constexpr int margin = 8;
    double sum = 0;
    double count = 0;
    const int bottom = static_cast<int>(area.bottom * one.height) - margin;
    const auto right = static_cast<std::size_t>(area.right * one.width) - margin;
    for (int y = static_cast<int>(area.top * one.height) + margin; y < bottom; ++y) {
        for (auto x = static_cast<std::size_t>(area.left * one.width) + margin; x < right; ++x) {
            if (rows[static_cast<std::size_t>(y & 3)]) {
                const auto difference = static_cast<double>(one.row(y)[x] - other.row(y)[x]);
                sum += difference * difference;
                count += 1;
            }
        }
    }
    return std::sqrt(sum / count);
}

double patternEnergy(const dualiso::Frame &frame, const dualiso::Frame &truth)
{
    constexpr std::array<std::complex<double>, 4> turns{{{1, 0}, {0, 1}, {-1, 0}, {0, -1}}};
    double energy = 0;
    for (std::size_t x = 0; x < static_cast<std::size_t>(frame.width); ++x) {
        std::complex<double> amplitude;
        for (int y = 0; y < frame.height; ++y) {
            amplitude += turns[static_cast<std::size_t>(y & 3)] *
                         static_cast<double>(frame.row(y)[x] - truth.row(y)[x]);
        }
        energy += std::norm(amplitude);
    }
    return energy;
}

} // namespace dualscene
