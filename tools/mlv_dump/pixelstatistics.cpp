// SPDX-License-Identifier: MIT
#include "mlv_dump/pixelstatistics.h"

#include <algorithm>
#include <array>
#include <cstdlib>

namespace mlvdump {
namespace {

constexpr int rowsOfMutex = 16;

} // namespace

PixelStatistics::PixelStatistics(const Place &corner, int width, int height)
    : m_corner(corner)
    , m_width(width)
    , m_height(height)
    , m_mutexes(static_cast<std::size_t>(height / rowsOfMutex) + 1)
    , m_pixels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height))
    , m_shares(static_cast<std::size_t>(height) * Lattice::columns)
{
}

void PixelStatistics::add(Residuals &residuals, const FrameNoise &noise, int frameHeight,
                          const Place &crop)
{
    for (int y = 0; y < frameHeight; ++y) {
        const auto row = residuals.row(y);
        const Place start{y + crop.y - m_corner.y, crop.x - m_corner.x};
        const std::lock_guard lock(m_mutexes[static_cast<std::size_t>(start.y / rowsOfMutex)]);
        // There the neighbours on one side stand for all.
        const bool isRim = y < residuals.rowStep() || y + residuals.rowStep() >= frameHeight;
        addRow(row, noise, start, isRim);
    }
}

void PixelStatistics::addRow(const Residuals::Row &row, const FrameNoise &noise, const Place &start,
                             bool isRim)
{
    auto *pixel = &m_pixels[static_cast<std::size_t>(start.y) * static_cast<std::size_t>(m_width) +
                            static_cast<std::size_t>(start.x)];
    std::array<Share, Lattice::columns> shares{};
    auto column = static_cast<std::size_t>((start.x + m_corner.x) % Lattice::columns);
    for (std::size_t x = 0; x < row.samples.size(); ++x, ++pixel) {
        const int sample = row.samples[x];
        const int residual = row.residuals[x];
        const auto limits = noise.at(sample - residual);
        const int distance = std::abs(int{row.distances[x]});
        const int excess = row.excesses[x];
        const bool strikes = std::abs(excess) > limits.striking;
        const bool isEven = row.spreads[x] <= limits.even && limits.usual > 0 && !isRim;

        pixel->residuals += static_cast<float>(residual);
        pixel->excesses += static_cast<float>(excess);
        pixel->least = std::min(pixel->least, static_cast<std::uint16_t>(sample));
        pixel->most = std::max(pixel->most, static_cast<std::uint16_t>(sample));
        ++pixel->seen;
        // Nobody sees a pixel that is too dark in the dark, nor one too bright in a clipped area.
        if (noise.isBelowClip(sample - residual) &&
            (strikes || noise.isAbove(sample - residual, 2 * limits.striking))) {
            ++pixel->judged;
            if (strikes)
                ++(excess > 0 ? pixel->high : pixel->low);
        }
        shares[column].counted += isEven ? 1 : 0;
        shares[column].unusual += isEven && distance > limits.usual ? 1 : 0;
        shares[column].clarity += isEven ? limits.clarity : 0;
        column = column + 1 == shares.size() ? 0 : column + 1;
    }
    auto *sums = &m_shares[static_cast<std::size_t>(start.y) * Lattice::columns];
    for (std::size_t i = 0; i < shares.size(); ++i) {
        sums[i].counted += shares[i].counted;
        sums[i].unusual += shares[i].unusual;
        sums[i].clarity += shares[i].clarity;
    }
}

} // namespace mlvdump
