// SPDX-License-Identifier: MIT
#include "mlv_sample/frames.h"

#include "mlv_sample/camera.h"
#include "mlv_sample/random.h"
#include "mlv_sample/scenery.h"

#include <algorithm>
#include <cmath>
#include <span>

namespace sample {

namespace {

constexpr int baseIso = 100;
// The chart's white leaves a stop of room to saturation, as a careful exposure does.
constexpr double chartExposure = 0.55;
constexpr double flatExposure = 0.5;
constexpr double lampSeconds = 0.1;

Rgb lit(const Rgb &surface, const Rgb &light)
{
    return {surface[0] * light[0], surface[1] * light[1], surface[2] * light[2]};
}

std::size_t filterAt(int x, int y) // red green / green blue
{
    return (x & 1 ? 1U : 0U) + (y & 1 ? 1U : 0U);
}

} // namespace

int lampFrame(const Settings &settings, int tick)
{
    return static_cast<int>(std::lround((tick + 0.5) * settings.frameRate()));
}

FrameMaker::FrameMaker(const Settings &settings)
    : m_settings(settings)
    , m_scene(settings.width, settings.height)
    , m_sensor(settings.width, settings.height)
    , m_faults(m_settings)
    , m_light(static_cast<std::size_t>(settings.width) * static_cast<std::size_t>(settings.height))
    , m_samples(m_light.size())
{
    draw(0, 0, settings.width, settings.height, Moment{});
}

const std::vector<std::uint16_t> &FrameMaker::make(int number)
{
    if (m_settings.subject == Subject::Chart) {
        for (const Area &area : m_scene.changingAreas()) {
            draw(static_cast<int>(std::floor(area.left * m_settings.width)),
                 static_cast<int>(std::floor(area.top * m_settings.height)),
                 static_cast<int>(std::ceil(area.right * m_settings.width)),
                 static_cast<int>(std::ceil(area.bottom * m_settings.height)), momentOf(number));
        }
    } else if (isMoving(m_settings.subject)) {
        draw(0, 0, m_settings.width, m_settings.height, momentOf(number));
    }

    ReadOut readOut{levelsFor(m_settings.bits)};
    if (m_settings.clip > 0)
        readOut.levels.white = m_settings.clip >> (14 - std::min(14, m_settings.bits));
    readOut.perfect = m_settings.perfect;
    readOut.noise = mixed(mixed(m_settings.seed) + static_cast<std::uint64_t>(number) * 4 +
                          static_cast<std::uint64_t>(m_settings.subject));
    const auto width = static_cast<std::size_t>(m_settings.width);
    for (int y = 0; y < m_settings.height; ++y) {
        readOut.gain = gainOfRow(y, number);
        const std::size_t start = static_cast<std::size_t>(y) * width;
        m_sensor.readRow(y, std::span(m_light).subspan(start, width), readOut,
                         std::span(m_samples).subspan(start, width));
    }
    m_faults.apply(m_samples, readOut.levels, number);
    return m_samples;
}

Moment FrameMaker::momentOf(int number) const
{
    Moment moment{number, number / m_settings.frameRate(), false};
    const int lastTick = static_cast<int>(moment.seconds);
    const int litFrames = std::max(1, static_cast<int>(lampSeconds * m_settings.frameRate()));
    for (int tick = std::max(0, lastTick - 1); tick <= lastTick; ++tick) {
        const int since = number - lampFrame(m_settings, tick);
        moment.lampLit = moment.lampLit || (since >= 0 && since < litFrames);
    }
    return moment;
}

float FrameMaker::lightAt(int x, int y, const Moment &moment) const
{
    static const double whiteGreen = cameraColour({1, 1, 1})[1];
    const std::size_t filter = filterAt(x, y);
    const auto seen = [&](const Rgb &surface) {
        return cameraColour(lit(surface, m_settings.light))[filter] / whiteGreen;
    };
    double light = 0;
    switch (m_settings.subject) {
    case Subject::Chart:
        light = seen(m_scene.colourAt(x, y, moment)) * chartExposure;
        break;
    case Subject::Flat:
        light = seen({1, 1, 1}) * flatExposure;
        break;
    case Subject::Dark:
        break;
    default:
        light = seen(sceneryColour(m_settings.subject, x, y, moment.frame)) * chartExposure;
    }
    // The person who films closes the aperture as far as a higher sensitivity asks for.
    light *= static_cast<double>(baseIso) / m_settings.iso;
    return static_cast<float>(std::max(0.0, light)) * m_sensor.shading(x, y);
}

void FrameMaker::draw(int left, int top, int right, int bottom, const Moment &moment)
{
    for (int y = std::max(0, top); y < std::min(bottom, m_settings.height); ++y) {
        for (int x = std::max(0, left); x < std::min(right, m_settings.width); ++x) {
            m_light[static_cast<std::size_t>(y) * static_cast<std::size_t>(m_settings.width) +
                    static_cast<std::size_t>(x)] = lightAt(x, y, moment);
        }
    }
}

float FrameMaker::gainOfRow(int y, int frame) const
{
    const bool highRow = m_settings.highIso > 0 && ((y - m_settings.dualIsoPhase) & 3) >= 2;
    const int iso = highRow ? m_settings.highIso : m_settings.iso;
    const double stops = frame % 2 == 1 ? m_settings.hdrStops : 0;
    return static_cast<float>(static_cast<double>(iso) / baseIso * std::exp2(stops));
}

} // namespace sample
