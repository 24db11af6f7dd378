// SPDX-License-Identifier: MIT
#pragma once

#include "mlv_dump/framenoise.h"
#include "mlv_dump/lattice.h"
#include "mlv_dump/place.h"

#include <cstdint>
#include <mutex>
#include <vector>

namespace mlvdump {

/// What the surveyed frames say of each place of a part of the read-out. add() may be called on
/// several threads at once; everything else only when no frame is being added.
class PixelStatistics
{
public:
    /// Of a place over all frames.
    struct Pixel
    {
        float residuals = 0;         ///< sum over the frames
        float excesses = 0;          ///< sum over the frames
        std::uint16_t least = 65535; ///< sample
        std::uint16_t most = 0;
        std::uint8_t seen = 0;   ///< frames that show the place
        std::uint8_t judged = 0; ///< frames in which a deviation would strike
        std::uint8_t high = 0;   ///< frames in which it strikes as too high
        std::uint8_t low = 0;

        float residual() const { return mean(residuals); }
        float excess() const { return mean(excesses); }

    private:
        float mean(float sum) const { return seen == 0 ? 0 : sum / static_cast<float>(seen); }
    };
    /// Of one line of the read-out, those columns that are the same in all lattice cells. Even
    /// places alone.
    struct Share
    {
        std::uint32_t counted = 0;
        std::uint32_t unusual = 0; ///< farther off than usual
        std::uint32_t clarity = 0; ///< sum of what FrameNoise says
    };

    /// `corner` is the place of the part's upper left corner.
    PixelStatistics(const Place &corner, int width, int height);

    static constexpr std::size_t maxFrames = 255;
    /// The frame lies within the part, its corner at `crop`.
    void add(Residuals &residuals, const FrameNoise &noise, int frameHeight, const Place &crop);

    const Place &corner() const { return m_corner; }
    int width() const { return m_width; }
    int height() const { return m_height; }
    /// (x, y) from the corner on.
    const Pixel &pixel(int x, int y) const
    {
        return m_pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(m_width) +
                        static_cast<std::size_t>(x)];
    }
    /// `y` from the corner on; `column` of a lattice cell.
    const Share &share(int y, int column) const
    {
        return m_shares[static_cast<std::size_t>(y) * Lattice::columns +
                        static_cast<std::size_t>(column)];
    }

private:
    void addRow(const Residuals::Row &row, const FrameNoise &noise, const Place &start, bool isRim);

    Place m_corner;
    int m_width;
    int m_height;
    std::vector<std::mutex> m_mutexes; ///< one for some rows each, guarding what follows
    std::vector<Pixel> m_pixels;
    std::vector<Share> m_shares;
};

} // namespace mlvdump
