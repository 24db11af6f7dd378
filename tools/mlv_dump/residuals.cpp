// SPDX-License-Identifier: MIT
#include "mlv_dump/residuals.h"

#include <algorithm>

namespace mlvdump {
namespace {

constexpr std::ptrdiff_t margin = 2; // samples to the next one of the same colour

// All in 16 bits, so that the compiler takes as many samples at once as fit into a register.
using Level = std::int16_t;

Level least(Level a, Level b)
{
    return a < b ? a : b;
}

Level most(Level a, Level b)
{
    return a < b ? b : a;
}

Level difference(Level a, Level b)
{
    return static_cast<Level>(most(a, b) - least(a, b));
}

/// Sums of 14-bit levels fit into 16 bits.
Level sum(Level a, Level b)
{
    return static_cast<Level>(a + b);
}

void order(Level &low, Level &high)
{
    const auto a = low;
    const auto b = high;
    low = least(a, b);
    high = most(a, b);
}

/// The mean of the two middle ones. The network of comparisons leaves them at d and e.
Level medianOf(Level a, Level b, Level c, Level d, Level e, Level f, Level g, Level h)
{
    // Batcher's odd-even merge sort of eight.
    order(a, b), order(c, d), order(e, f), order(g, h);
    order(a, c), order(b, d), order(e, g), order(f, h);
    order(b, c), order(f, g);
    order(a, e), order(b, f), order(c, g), order(d, h);
    order(c, e), order(d, f);
    order(b, c), order(d, e), order(f, g);
    return static_cast<Level>(sum(d, e) >> 1);
}

struct Rows
{
    const Level *__restrict here;
    const Level *__restrict up;
    const Level *__restrict below;
};

void measureDistances(const Rows &rows, int width, Level *__restrict distances,
                      Level *__restrict spreads)
{
    const auto *const __restrict here = rows.here;
    const auto *const __restrict up = rows.up;
    const auto *const __restrict below = rows.below;
    for (int x = 0; x < width; ++x) {
        const Level left = here[x - margin];
        const Level right = here[x + margin];
        spreads[x] = difference(most(most(left, right), most(up[x], below[x])),
                                least(least(left, right), least(up[x], below[x])));
        distances[x] = static_cast<Level>(here[x] - medianOf(left, right, up[x], below[x],
                                                             up[x - margin], up[x + margin],
                                                             below[x - margin], below[x + margin]));
    }
}

void measureResiduals(const Rows &rows, int width, Level *__restrict residuals,
                      Level *__restrict excesses)
{
    const auto *const __restrict here = rows.here;
    const auto *const __restrict up = rows.up;
    const auto *const __restrict below = rows.below;
    for (int x = 0; x < width; ++x) {
        const Level across = sum(here[x - margin], here[x + margin]);
        const Level upright = sum(up[x], below[x]);
        const Level falling = sum(up[x - margin], below[x + margin]);
        const Level rising = sum(up[x + margin], below[x - margin]);
        const Level lowest =
            static_cast<Level>(least(least(across, upright), least(falling, rising)) >> 1);
        const Level highest =
            static_cast<Level>(most(most(across, upright), most(falling, rising)) >> 1);
        excesses[x] = static_cast<Level>(here[x] - most(lowest, least(here[x], highest)));

        Level change = difference(here[x - margin], here[x + margin]);
        Level pair = across;
        const auto choose = [&change, &pair](Level other, Level otherPair) {
            pair = other < change ? otherPair : pair;
            change = least(other, change);
        };
        choose(difference(up[x], below[x]), upright);
        choose(difference(up[x - margin], below[x + margin]), falling);
        choose(difference(up[x + margin], below[x - margin]), rising);
        residuals[x] = static_cast<Level>(here[x] - (pair >> 1));
    }
}

} // namespace

Residuals::Residuals(const mlv::FrameFormat &format, int rowStep)
    : m_width(format.width)
    , m_height(format.height)
    , m_rowStep(rowStep)
    , m_shift(std::max(0, format.bitsPerSample - 14))
    , m_samples((static_cast<std::size_t>(format.width) + std::size_t{2 * margin}) *
                static_cast<std::size_t>(format.height))
    , m_residuals(static_cast<std::size_t>(format.width))
    , m_excesses(static_cast<std::size_t>(format.width))
    , m_distances(static_cast<std::size_t>(format.width))
    , m_spreads(static_cast<std::size_t>(format.width))
{
}

std::size_t Residuals::startOf(int y) const
{
    return static_cast<std::size_t>(y) *
               (static_cast<std::size_t>(m_width) + std::size_t{2 * margin}) +
           std::size_t{margin};
}

void Residuals::load(std::span<const std::uint16_t> samples)
{
    const auto width = static_cast<std::size_t>(m_width);
    for (int y = 0; y < m_height; ++y) {
        const auto source = samples.subspan(static_cast<std::size_t>(y) * width, width);
        auto *const row = &m_samples[startOf(y)];
        std::transform(source.begin(), source.end(), row, [shift = m_shift](std::uint16_t sample) {
            return static_cast<std::int16_t>(sample >> shift);
        });
        // At the frame's sides the neighbour that exists stands for both.
        for (int i = 0; i < margin; ++i) {
            row[i - margin] = row[i + margin];
            row[m_width + i] = row[m_width + i - 2 * margin];
        }
    }
}

Residuals::Row Residuals::row(int y)
{
    const int rowAbove = y < m_rowStep ? y + m_rowStep : y - m_rowStep;
    const int rowBelow = y + m_rowStep >= m_height ? y - m_rowStep : y + m_rowStep;
    const Rows rows{&m_samples[startOf(y)], &m_samples[startOf(rowAbove)],
                    &m_samples[startOf(rowBelow)]};
    measureDistances(rows, m_width, m_distances.data(), m_spreads.data());
    measureResiduals(rows, m_width, m_residuals.data(), m_excesses.data());
    return {{rows.here, m_residuals.size()}, m_residuals, m_excesses, m_distances, m_spreads};
}

} // namespace mlvdump
