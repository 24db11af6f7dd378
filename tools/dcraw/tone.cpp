// SPDX-License-Identifier: MIT
#include "dcraw/tone.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace dcraw {
namespace {

constexpr std::size_t tableSize = 65536;

/// Where the straight line and the power meet, in stored values, by halving.
double meetingPoint(const Gamma &gamma)
{
    constexpr int halvings = 48;
    const auto [exponent, slope] = gamma;
    double low = slope >= 1 ? 0 : 1;
    double high = 1 - low;
    double middle = 0;
    for (int i = 0; i < halvings; ++i) {
        middle = (low + high) / 2;
        const double bend = (std::pow(middle / slope, -exponent) - 1) / exponent - 1 / middle;
        (bend > -1 ? high : low) = middle;
    }
    return middle;
}

/// The table for one curve and brightness, entry by entry.
class Table
{
public:
    Table(const ToneCurve &curve, double brightness)
        : m_curve(curve)
        , m_white(static_cast<int>(65536.0F / static_cast<float>(brightness)))
    {
    }

    /// The first value that is stored as white or lies beyond.
    std::size_t white() const { return std::min(static_cast<std::size_t>(m_white), tableSize); }

    std::uint16_t at(std::size_t value) const
    {
        const double light = static_cast<double>(value) / m_white;
        return light < 1 ? static_cast<std::uint16_t>(static_cast<int>(65536 * m_curve(light)))
                         : std::uint16_t{65535};
    }

private:
    ToneCurve m_curve;
    int m_white;
};

/// 8 bits need the curve only where its value changes: it never falls.
std::vector<std::uint16_t> tableOfSteps(const Table &table)
{
    std::vector<std::uint16_t> values(tableSize);
    std::vector<std::size_t> all(tableSize);
    std::iota(all.begin(), all.end(), std::size_t{0});
    auto first = all.cbegin();
    for (int value = 0; first != all.cend(); ++value) {
        const auto end = std::partition_point(
            first, all.cend(), [&](std::size_t light) { return table.at(light) >> 8 <= value; });
        std::fill(values.begin() + (first - all.cbegin()), values.begin() + (end - all.cbegin()),
                  static_cast<std::uint16_t>(value));
        first = end;
    }
    return values;
}

} // namespace

double ToneCurve::operator()(double light) const
{
    return light < end ? light * slope : std::pow(light, exponent) * (1 + offset) - offset;
}

ToneCurve toneCurve(const Gamma &gamma)
{
    const auto [exponent, slope] = gamma;
    if (slope == 0 || (slope - 1) * (exponent - 1) > 0)
        return {exponent, slope, 0, 0};
    const double meeting = meetingPoint(gamma);
    return {exponent, slope, meeting / slope, meeting * (1 / exponent - 1)};
}

std::vector<std::uint16_t> toneTable(const Gamma &gamma, double brightness, bool sixteenBits)
{
    const Table table(toneCurve(gamma), brightness);
    if (!sixteenBits && gamma == Gamma{})
        return tableOfSteps(table);
    std::vector<std::uint16_t> values(tableSize, sixteenBits ? 65535 : 255);
    for (std::size_t light = 0; light < table.white(); ++light) {
        const std::uint16_t value = table.at(light);
        values[light] = sixteenBits ? value : value >> 8;
    }
    return values;
}

double meanPower(const ToneCurve &curve)
{
    const auto [exponent, slope, end, offset] = curve;
    const double area = slope * (end * end) / 2 - offset * (1 - end) +
                        (1 - std::pow(end, 1 + exponent)) * (1 + offset) / (1 + exponent);
    return 256 / (1 / area - 1);
}

} // namespace dcraw
