// SPDX-License-Identifier: MIT
#include "mlv_sample/faults.h"

#include "mlv_sample/random.h"

#include <algorithm>
#include <cmath>

namespace sample {

namespace {

constexpr float weakestFault = 2000; // above black, of 14 bits
constexpr float strongestFault = 9000;
constexpr float coldShare = 0.1F;

float scaleOf(const Levels &levels)
{
    return std::ldexp(1.0F, levels.bits - 14);
}

std::uint16_t sampleOf(float aboveBlack, const Levels &levels)
{
    const float level = static_cast<float>(levels.black) + aboveBlack + 0.5F;
    return static_cast<std::uint16_t>(std::clamp(level, 0.0F, static_cast<float>(levels.white)));
}

float lightOf(std::uint16_t sample, const Levels &levels)
{
    return static_cast<float>(sample) - static_cast<float>(levels.black);
}

} // namespace

Place cropOf(const Settings &settings, int frame)
{
    if (!settings.pans)
        return settings.crop;
    // In steps that keep the pattern of colours, as cameras round them.
    return {settings.crop.x + frame / 2 % 4 * 8, settings.crop.y + frame % 6 * 2};
}

Faults::Faults(const Settings &settings)
    : m_settings(settings)
{
    scatter(FaultyPixel::Kind::Hot, settings.faults.hotPixels);
    scatter(FaultyPixel::Kind::Cold, settings.faults.coldPixels);
    scatter(FaultyPixel::Kind::Stuck, settings.faults.stuckPixels);
}

void Faults::scatter(FaultyPixel::Kind kind, int count)
{
    Random random(mixed(m_settings.seed) + static_cast<std::uint64_t>(kind));
    const Place corner = cropOf(m_settings, 0);
    const auto below = [&random](int limit) {
        return static_cast<int>(random.next() % static_cast<std::uint64_t>(limit));
    };
    for (int left = count; left > 0;) {
        const Place place{corner.x + below(m_settings.width), corner.y + below(m_settings.height)};
        const float share = static_cast<float>(below(1001)) / 1000;
        const bool isTaken =
            isInLattice(place) || std::ranges::any_of(m_pixels, [&place](const auto &pixel) {
                return std::abs(pixel.place.x - place.x) <= 2 &&
                       std::abs(pixel.place.y - place.y) <= 2;
            });
        if (!isTaken) {
            m_pixels.push_back(
                {place, kind, weakestFault + share * (strongestFault - weakestFault)});
            --left;
        }
    }
}

bool Faults::isInLattice(const Place &place) const
{
    const auto &faults = m_settings.faults;
    if (place.y < faults.firstLatticeLine || place.y > faults.lastLatticeLine)
        return false;
    return std::ranges::any_of(faults.lattices, [&place](const Lattice &lattice) {
        const Place inCell{place.x % lattice.columns, place.y % lattice.lines};
        return std::ranges::find(lattice.cell, inCell) != lattice.cell.end();
    });
}

std::vector<Place> Faults::latticePlaces(int frame) const
{
    std::vector<Place> places;
    const Place crop = cropOf(m_settings, frame);
    for (int y = crop.y; y < crop.y + m_settings.height; ++y) {
        for (int x = crop.x; x < crop.x + m_settings.width; ++x)
            if (isInLattice({x, y}))
                places.push_back({x, y});
    }
    return places;
}

void Faults::apply(std::span<std::uint16_t> samples, const Levels &levels, int frame) const
{
    const Place crop = cropOf(m_settings, frame);
    const auto sampleAt = [&](const Place &place) -> std::uint16_t & {
        return samples[static_cast<std::size_t>(place.y - crop.y) *
                           static_cast<std::size_t>(m_settings.width) +
                       static_cast<std::size_t>(place.x - crop.x)];
    };
    applyColumnGains(samples, levels, crop);
    if (!m_settings.faults.lattices.empty()) {
        for (const Place &place : latticePlaces(frame)) {
            const double response =
                place.y % 2 == 0 ? m_settings.faults.latticeRed : m_settings.faults.latticeBlue;
            auto &sample = sampleAt(place);
            sample = sampleOf(static_cast<float>(response) * lightOf(sample, levels), levels);
        }
    }
    for (const auto &[place, kind, level] : m_pixels) {
        const bool isInside = place.x >= crop.x && place.x < crop.x + m_settings.width &&
                              place.y >= crop.y && place.y < crop.y + m_settings.height;
        if (!isInside)
            continue;
        auto &sample = sampleAt(place);
        const float light = lightOf(sample, levels);
        const float fault = level * scaleOf(levels);
        sample = sampleOf(kind == FaultyPixel::Kind::Hot    ? light + fault
                          : kind == FaultyPixel::Kind::Cold ? light * coldShare
                                                            : fault,
                          levels);
    }
}

void Faults::applyColumnGains(std::span<std::uint16_t> samples, const Levels &levels,
                              const Place &crop) const
{
    const auto &gains = m_settings.faults.columnGains;
    if (gains == SensorFaults().columnGains)
        return;
    const auto width = static_cast<std::size_t>(m_settings.width);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const std::size_t column = (i % width + static_cast<std::size_t>(crop.x)) % gains.size();
        // A full sensor is full in every column.
        if (samples[i] < levels.white) {
            samples[i] =
                sampleOf(static_cast<float>(gains[column]) * lightOf(samples[i], levels), levels);
        }
    }
}

} // namespace sample
