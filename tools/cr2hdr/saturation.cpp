// SPDX-License-Identifier: MIT
#include "cr2hdr/saturation.h"

#include <algorithm>
#include <numeric>

namespace dualiso {
namespace {

constexpr std::size_t levels = 16384;
// More values than hot pixels can make.
constexpr double believableShare = 1.0 / 2000;
// The noise of saturated values, and what is left of their light's.
constexpr float margin = 0.97F;

} // namespace

void SaturationSearch::add(const Frame &frame, const RowPattern &pattern)
{
    m_counts.resize(levels);
    for (int y = 0; y < frame.height; ++y) {
        if (pattern.isHigh(y)) {
            for (const float value : frame.row(y)) {
                const float level = std::clamp(value, 0.0F, static_cast<float>(levels - 1));
                ++m_counts[static_cast<std::size_t>(level)];
            }
        }
    }
}

float SaturationSearch::clippedFrom() const
{
    const auto all = std::accumulate(m_counts.begin(), m_counts.end(), 0.0);
    double above = 0;
    std::size_t level = m_counts.size();
    while (level > 0 && above < all * believableShare)
        above += m_counts[--level];
    return margin * static_cast<float>(level);
}

} // namespace dualiso
