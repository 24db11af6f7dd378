// SPDX-License-Identifier: MIT
#include "mlv_dump/balancesurvey.h"

#include "mlv_dump/parallelframes.h"
#include "mlv_dump/spreadframes.h"
#include "raw/error.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace mlvdump {
namespace {

constexpr std::size_t maxBalanceFrames = 24;

/// Samples; the sensitivities of alternating rows are averaged in it.
constexpr int tileSide = 16;

// Shares of the range from black to full.
constexpr double leastLight = 1.0 / 512; // an error of the black level colours what is darker
constexpr double nearClip = 1.0 / 64;

// Distances of colours, natural logarithms.
constexpr double locusWidth = 0.08; // how far surfaces in daylight or lamplight lie beside it
constexpr double commonWidth = 0.15;
constexpr double leastNearLocus = 0.05; // a share of the light

/// Red and blue against green, natural logarithms.
struct Chroma
{
    double red;
    double blue;
};

double squaredDistance(const Chroma &one, const Chroma &other)
{
    const double red = one.red - other.red;
    const double blue = one.blue - other.blue;
    return red * red + blue * blue;
}

double bell(double squaredDistance, double width)
{
    return std::exp(-squaredDistance / (2 * width * width));
}

/// A square part of a frame, none of whose samples is clipped.
struct Tile
{
    Chroma chroma;
    double weight; ///< its light at first: bright surfaces are often white
};

/// The part whose corner is the first of the samples; none where it tells nothing.
std::optional<Tile> tileAt(const std::uint16_t *samples, const mlv::FrameFormat &format)
{
    std::array<double, 4> sums{};
    int brightest = 0;
    for (int y = 0; y < tileSide; ++y) {
        for (int x = 0; x < tileSide; ++x) {
            const int sample = samples[y * format.width + x];
            brightest = std::max(brightest, sample);
            sums[static_cast<std::size_t>(y % 2 * 2 + x % 2)] += sample;
        }
    }
    constexpr double samplesOfAColour = tileSide * tileSide / 4.0;
    const double range = format.whiteLevel - format.blackLevel;
    const double red = sums[0] / samplesOfAColour - format.blackLevel;
    const double green = (sums[1] + sums[2]) / 2 / samplesOfAColour - format.blackLevel;
    const double blue = sums[3] / samplesOfAColour - format.blackLevel;
    if (brightest > format.whiteLevel - nearClip * range ||
        std::min({red, green, blue}) < leastLight * range)
        return std::nullopt;
    return Tile{{std::log(red / green), std::log(blue / green)}, green / range};
}

std::vector<Tile> tilesOf(std::span<const std::uint16_t> samples, const mlv::FrameFormat &format)
{
    std::vector<Tile> tiles;
    for (int y = 0; y + tileSide <= format.height; y += tileSide) {
        for (int x = 0; x + tileSide <= format.width; x += tileSide) {
            const auto corner =
                static_cast<std::size_t>(y) * static_cast<std::size_t>(format.width) +
                static_cast<std::size_t>(x);
            if (const auto tile = tileAt(&samples[corner], format))
                tiles.push_back(*tile);
        }
    }
    return tiles;
}

/// Those of all frames, in the order of the frames: sums don't depend on which thread was first.
std::vector<Tile> allTiles(const mlv::Recording &recording, const Calibration &calibration,
                           const mlv::FrameFormat &format, unsigned threads)
{
    struct Surveyed
    {
        std::uint32_t number;
        std::vector<Tile> tiles;
    };
    std::mutex mutex;
    std::vector<Surveyed> frames; // guarded by mutex
    forEachFrame(recording, spreadFrames(recording.videoFrames(), maxBalanceFrames), threads,
                 [&](mlv::FrameDecoder &decoder, const mlv::DataBlock &block) {
                     try {
                         const auto samples = decoder.decode(block);
                         calibration.apply(samples);
                         auto tiles = tilesOf(samples, format);
                         const std::lock_guard lock(mutex);
                         frames.push_back({block.number, std::move(tiles)});
                     } catch (const raw::ReadError &) {
                         throw;
                     } catch (const raw::Error &) {
                         return; // the extraction tells of damaged frames
                     }
                 });
    std::ranges::sort(frames, {}, &Surveyed::number);
    std::vector<Tile> all;
    for (const auto &frame : frames)
        all.insert(all.end(), frame.tiles.begin(), frame.tiles.end());
    return all;
}

/// What white is in the light of the sun, of the sky and of lamps.
std::vector<Chroma> locus(const ColourMatrix &matrix)
{
    constexpr int firstMired = 60; // 16667 K
    constexpr int lastMired = 480; // 2083 K
    std::vector<Chroma> colours;
    for (int mired = firstMired; mired <= lastMired; mired += 4) {
        const auto neutral = neutralOfKelvin(1e6 / mired, matrix);
        colours.push_back({std::log(neutral[0]), std::log(neutral[2])});
    }
    return colours;
}

double totalWeight(const std::vector<Tile> &tiles)
{
    double sum = 0;
    for (const auto &tile : tiles)
        sum += tile.weight;
    return sum;
}

std::vector<Tile> nearLocus(std::vector<Tile> tiles, const ColourMatrix &matrix)
{
    const auto colours = locus(matrix);
    for (auto &tile : tiles) {
        double nearest = std::numeric_limits<double>::infinity();
        for (const auto &colour : colours)
            nearest = std::min(nearest, squaredDistance(tile.chroma, colour));
        tile.weight *= bell(nearest, locusWidth);
    }
    return tiles;
}

template <typename Weight>
Chroma mean(const std::vector<Tile> &tiles, Weight weightOf)
{
    Chroma sum{};
    double total = 0;
    for (const auto &tile : tiles) {
        const double weight = weightOf(tile);
        sum.red += weight * tile.chroma.red;
        sum.blue += weight * tile.chroma.blue;
        total += weight;
    }
    return {sum.red / total, sum.blue / total};
}

/// Where colours lie closest, sought from their mean on.
Chroma commonColour(const std::vector<Tile> &tiles)
{
    constexpr int steps = 20;
    Chroma centre = mean(tiles, [](const Tile &tile) { return tile.weight; });
    for (int step = 0; step < steps; ++step) {
        centre = mean(tiles, [&centre](const Tile &tile) {
            return tile.weight * bell(squaredDistance(tile.chroma, centre), commonWidth);
        });
    }
    return centre;
}

} // namespace

std::optional<Neutral> surveyBalance(const mlv::Recording &recording,
                                     const Calibration &calibration, const mlv::FrameFormat &format,
                                     const ColourMatrix &matrix, unsigned threads)
{
    const auto tiles = allTiles(recording, calibration, format, threads);
    const auto likely = nearLocus(tiles, matrix);
    const bool isLikely = totalWeight(likely) >= leastNearLocus * totalWeight(tiles);
    if (tiles.empty())
        return std::nullopt;
    const auto common = commonColour(isLikely ? likely : tiles);
    const Neutral neutral{std::exp(common.red), 1, std::exp(common.blue)};
    return isUsable(neutral) ? std::optional(neutral) : std::nullopt;
}

} // namespace mlvdump
