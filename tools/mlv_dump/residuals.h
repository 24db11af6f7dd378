// SPDX-License-Identifier: MIT
#pragma once

#include "mlv/frameformat.h"

#include <cstdint>
#include <span>
#include <vector>

namespace mlvdump {

/// How far the samples of a frame lie off what their neighbours of the same colour say. Levels are
/// those of the frame, of 16 bits a quarter of them.
class Residuals
{
public:
    /// A frame narrower or lower than this has too few neighbours.
    static constexpr int leastSide = 16;

    /// `rowStep` is how many rows away the next row of the same colours and exposure is: 2, or 4
    /// where pairs of rows alternate between two sensitivities.
    Residuals(const mlv::FrameFormat &format, int rowStep);

    void load(std::span<const std::uint16_t> samples);

    struct Row
    {
        std::span<const std::int16_t> samples;
        /// Sample less the mean of the two opposite neighbours that differ least.
        std::span<const std::int16_t> residuals;
        /// How far the sample lies beyond the means of any two opposite neighbours; 0 between them.
        std::span<const std::int16_t> excesses;
        /// Sample less the median of all eight neighbours: some of them may deviate themselves.
        std::span<const std::int16_t> distances;
        /// The largest difference of the neighbours left, right, above and below.
        std::span<const std::int16_t> spreads;
    };
    /// Of the loaded frame. It stays until the next call.
    Row row(int y);

    int rowStep() const { return m_rowStep; }
    int shift() const { return m_shift; } ///< from the frame's levels, to the right

private:
    std::size_t startOf(int y) const;

    int m_width;
    int m_height;
    int m_rowStep;
    int m_shift;
    std::vector<std::int16_t> m_samples; ///< rows with two more samples on both sides
    std::vector<std::int16_t> m_residuals;
    std::vector<std::int16_t> m_excesses;
    std::vector<std::int16_t> m_distances;
    std::vector<std::int16_t> m_spreads;
};

} // namespace mlvdump
