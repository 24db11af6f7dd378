// SPDX-License-Identifier: MIT
#include "cr2hdr/interpolation.h"

#include "cr2hdr/mirrored.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace dualiso {
namespace {

// Columns that an edge goes to the right on its way from a row to the second next; even, so that
// both ends have the colour of the middle.
constexpr std::array<int, 7> shifts{0, -2, 2, -4, 4, -6, 6};
// An edge is followed if a strip of this many columns to each side fits clearly better along it.
constexpr int stripReach = 4;
constexpr float penaltyPerColumn = 0.12F;
// Closer to saturation it is the noise that decides on which side of it a value is.
constexpr float clearlyBelow = 0.85F;
// Of their sum; two values that differ by less say nothing about what is between them.
constexpr float tellingShare = 0.1F;
constexpr float mostDisagreement = 0.5F;

} // namespace

Interpolation::PaddedRow::PaddedRow(int width)
    : m_values(static_cast<std::size_t>(width) + 2 * std::size_t{padding})
{
}

void Interpolation::PaddedRow::take(const Frame &frame, int y)
{
    const auto row = frame.row(y);
    std::copy(row.begin(), row.end(), m_values.begin() + padding);
    for (int x = 1; x <= padding; ++x) {
        const auto width = frame.width;
        const auto left = static_cast<std::size_t>(std::min(mirrored(-x, width), width - 1));
        const auto right = static_cast<std::size_t>(std::max(mirrored(width - 1 + x, width), 0));
        *(m_values.begin() + padding - x) = row[left];
        *(m_values.end() - padding - 1 + x) = row[right];
    }
}

Interpolation::Interpolation(const Frame &frame, const RowPattern &pattern)
    : m_frame(frame)
    , m_pattern(pattern)
    , m_above(frame.width)
    , m_below(frame.width)
    , m_near(frame.width)
    , m_native(frame.width)
    , m_costs(static_cast<std::size_t>(frame.width))
    , m_bestCosts(m_costs.size())
    , m_shifts(m_costs.size())
{
}

void Interpolation::takeRows(int y)
{
    m_native.take(m_frame, y);
    const int height = m_frame.height;
    const auto exists = [height](int row) { return row >= 0 && row < height; };
    // Beyond the upper and lower edge the row on the other side stands for both.
    m_above.take(m_frame, exists(y - 2) ? y - 2 : y + 2);
    m_below.take(m_frame, exists(y + 2) ? y + 2 : y - 2);

    m_nearIsAbove = m_pattern.isHigh(y + 3) != m_pattern.isHigh(y); // row y − 1, modulo 4
    const int toNear = m_nearIsAbove ? -1 : 1;
    m_hasNear = exists(y + toNear) && exists(y - 2) && exists(y + 2);
    if (m_hasNear)
        m_near.take(m_frame, y + toNear);
}

// Adds the sums over a strip of columns to the costs.
template <typename Unlikeness>
void Interpolation::addCosts(const Unlikeness &unlikeness)
{
    float strip = 0;
    for (int x = -stripReach; x < stripReach; ++x)
        strip += unlikeness(x);
    for (int x = 0; x < m_frame.width; ++x) {
        strip += unlikeness(x + stripReach);
        m_costs[static_cast<std::size_t>(x)] += strip;
        strip -= unlikeness(x - stripReach);
    }
}

void Interpolation::chooseShifts(bool fromLow, float clippedFrom)
{
    std::fill(m_bestCosts.begin(), m_bestCosts.end(), std::numeric_limits<float>::max());
    for (const int shift : shifts) {
        std::fill(m_costs.begin(), m_costs.end(), 0.0F);
        addCosts([&](int x) {
            const float above = *m_above.at(x - shift);
            const float below = *m_below.at(x + shift);
            const float middle = *m_native.at(x);
            // No edge goes from dark to dark through a saturated place.
            if (fromLow && middle >= clippedFrom &&
                std::max(above, below) < clearlyBelow * clippedFrom)
                return m_frame.saturation;
            // What both ends have in common may not be in the middle: stripes fit stripes.
            const auto unlikeMiddle = [&](float end) {
                return std::abs(std::min(end, clippedFrom) - std::min(middle, clippedFrom));
            };
            return std::abs(above - below) + unlikeMiddle(above) + unlikeMiddle(below);
        });
        const float handicap = 1 + penaltyPerColumn * static_cast<float>(std::abs(shift));
        for (std::size_t x = 0; x < m_costs.size(); ++x) {
            if (m_costs[x] * handicap < m_bestCosts[x]) {
                m_bestCosts[x] = m_costs[x] * handicap;
                m_shifts[x] = shift;
            }
        }
    }
}

// Greens stand at odd columns' distance in the neighbouring row, so what lies on the edge itself is
// either there or the mean of two.
Interpolation::NearGreen Interpolation::nearGreen(int x, int shift) const
{
    const int way = m_nearIsAbove ? -shift / 2 : shift / 2;
    if (way % 2 != 0)
        return {*m_near.at(x + way), *m_near.at(x + way), 0};
    const float left = *m_near.at(x + way - 1);
    const float right = *m_near.at(x + way + 1);
    return {(left + right) / 2, std::max(left, right), std::abs(left - right)};
}

float Interpolation::valueAt(int x, int y, float above, float below, int shift) const
{
    const float mean = (above + below) / 2;
    if (!m_hasNear || !m_frame.isGreen(x, y))
        return mean;
    // The neighbouring row is nearer, but its greens are beside the place: good between rows that
    // differ, bad between columns that do.
    const NearGreen near = nearGreen(x, shift);
    const float between = (2 * near.value + (m_nearIsAbove ? below : above)) / 3;
    const float rows = std::abs(above - below);
    const float weight = (rows + 1) / (rows + near.columnsDiffer + 2);
    return mean + weight * weight * (between - mean);
}

float Interpolation::brightestSource(int x, int y, int shift) const
{
    const float brightest = std::max(*m_above.at(x - shift), *m_below.at(x + shift));
    const bool usesNear = m_hasNear && m_frame.isGreen(x, y);
    return usesNear ? std::max(brightest, nearGreen(x, shift).brightest) : brightest;
}

// How much of the way from `below` to `above` the picture has gone in this row, by the neighbours
// of another colour that the row itself still shows. They must agree, as they do along an edge, and
// rows that are alike have nothing between them.
std::optional<float> Interpolation::wayToAbove(int x, int shift, float clippedFrom) const
{
    std::array<float, 2> ways{};
    for (const int side : {0, 1}) {
        const int neighbour = side == 0 ? x - 1 : x + 1;
        const float native = *m_native.at(neighbour);
        const float above = *m_above.at(neighbour - shift);
        const float below = *m_below.at(neighbour + shift);
        if (native >= clippedFrom || std::abs(above - below) < tellingShare * (above + below))
            return std::nullopt;
        ways[static_cast<std::size_t>(side)] =
            std::clamp((native - below) / (above - below), 0.0F, 1.0F);
    }
    if (std::abs(ways[0] - ways[1]) > mostDisagreement)
        return std::nullopt;
    return (ways[0] + ways[1]) / 2;
}

// What a low row would show where the high row is saturated.
float Interpolation::saturatedValueAt(int x, int y, int shift, float clippedFrom) const
{
    const float above = *m_above.at(x - shift);
    const float below = *m_below.at(x + shift);
    if (const auto way = wayToAbove(x, shift, clippedFrom))
        return std::max(below + *way * (above - below), clippedFrom);
    const float brighter = std::max(above, below);
    if (brighter >= clippedFrom && std::min(above, below) < clearlyBelow * clippedFrom)
        return brighter; // of an edge this is the bright side
    return valueAt(x, y, above, below, shift);
}

void Interpolation::fillRow(int y, float clippedFrom, std::span<float> values)
{
    takeRows(y);
    const bool fromLow = m_pattern.isHigh(y);
    chooseShifts(fromLow, clippedFrom);
    for (int x = 0; x < m_frame.width; ++x) {
        const int shift = m_shifts[static_cast<std::size_t>(x)];
        const float above = *m_above.at(x - shift);
        const float below = *m_below.at(x + shift);
        float &value = values[static_cast<std::size_t>(x)];
        if (fromLow && *m_native.at(x) >= clippedFrom) {
            value = saturatedValueAt(x, y, shift, clippedFrom);
            continue;
        }
        value = valueAt(x, y, above, below, shift);
        if (!fromLow) {
            const float brightest = brightestSource(x, y, shift);
            value = brightest >= clippedFrom ? brightest : value; // saturated as that one
        }
    }
}

} // namespace dualiso
