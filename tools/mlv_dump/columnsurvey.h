// SPDX-License-Identifier: MIT
#pragma once

#include "mlv_dump/columngains.h"

#include <mutex>
#include <optional>
#include <vector>

namespace mlvdump {

/// Measures what every eighth column is brighter than those about it, in frames of a recording. A
/// gain shows where it is bright, so samples near black aren't asked, nor are clipped ones.
class ColumnSurvey
{
public:
    explicit ColumnSurvey(const mlv::FrameFormat &format);

    /// May be called on several threads at once.
    void add(std::span<const std::uint16_t> samples, int cropX, int cropY);

    struct Result
    {
        std::optional<ColumnGains> gains; ///< none: too small to be seen, or not certain
        double scatter = 0;               ///< of the estimate, a standard deviation
    };
    /// When no frame is being added. The estimates of sixteen parts of the frame have to agree:
    /// what the scene repeats isn't everywhere.
    Result result() const;

private:
    static constexpr int sides = 4; ///< parts of the frame across, and down
    struct Estimate
    {
        double gain = 1;
        double scatter = 0;
        bool isKnown = false;
    };

    void addRow(std::span<const std::uint16_t> samples, int y, int cropX, int cropY,
                std::vector<std::uint32_t> &ratios) const;
    std::size_t binOf(int part, int line, int column) const;
    std::optional<double> median(int part, int line, int column) const;
    Estimate estimate(int line, int column) const;

    mlv::FrameFormat m_format;
    int m_least; ///< level that a sample has to have
    int m_most;
    std::mutex m_mutex;
    std::vector<std::uint32_t> m_ratios; ///< histograms; guarded by m_mutex in add()
};

} // namespace mlvdump
