// SPDX-License-Identifier: MIT
#include "mlv_dump/flatfield.h"

#include "mlv_dump/text.h"
#include "raw/error.h"

#include <algorithm>

namespace mlvdump {
namespace {

/// The largest level that fewer than `limit` samples reach or stay below, above black; 0 when there
/// is none. `limit` is at most the number of samples.
std::int64_t levelBelow(const std::vector<std::size_t> &histogram, std::size_t limit,
                        int blackLevel)
{
    std::size_t level = 0;
    for (std::size_t count = histogram[0]; count < limit; count += histogram[level])
        ++level;
    return level == 0 ? 0 : static_cast<std::int64_t>(level) - 1 - blackLevel;
}

std::size_t bayerPosition(int x, int y)
{
    return static_cast<std::size_t>(y % 2 * 2 + x % 2);
}

/// The quotient without its fraction, several times faster than a division of integers and as
/// exact: the dividend has at most 48 bits, so the quotient is rounded by less than 1/32 of the
/// divisor's inverse, which is the least that a fraction is away from a whole number.
std::int64_t cutQuotient(std::int64_t dividend, double divisor)
{
    return static_cast<std::int64_t>(static_cast<double>(dividend) / divisor);
}

constexpr std::size_t firstGreen = 1;
constexpr std::size_t secondGreen = 2;

} // namespace

FlatField::FlatField(std::span<const std::uint16_t> flat, const mlv::FrameFormat &format)
    : m_format(format)
{
    measure(flat);
    const bool dark = m_numerator <= 0 || m_denominator <= 0 ||
                      std::any_of(m_median.begin(), m_median.end(),
                                  [](std::int64_t median) { return median <= 0; });
    if (dark)
        throw raw::Error("has too little light to be a flat field");
    prepareDivisors(flat);
}

void FlatField::measure(std::span<const std::uint16_t> flat)
{
    std::array<std::vector<std::size_t>, 4> histograms;
    std::array<std::size_t, 4> counts{};
    histograms.fill(std::vector<std::size_t>(static_cast<std::size_t>(m_format.maxLevel()) + 1));
    // The centre only: the corners are what is to be corrected.
    for (int y = m_format.height / 4; y < m_format.height * 3 / 4; ++y) {
        for (int x = m_format.width / 4; x < m_format.width * 3 / 4; ++x) {
            const auto position = bayerPosition(x, y);
            const auto index =
                static_cast<std::size_t>(y) * static_cast<std::size_t>(m_format.width) +
                static_cast<std::size_t>(x);
            ++histograms[position][flat[index]];
            ++counts[position];
        }
    }
    std::array<std::int64_t, 4> darkEnd{};
    for (std::size_t position = 0; position < 4; ++position) {
        m_median[position] =
            levelBelow(histograms[position], counts[position] / 2, m_format.blackLevel);
        darkEnd[position] =
            levelBelow(histograms[position], counts[position] / 20, m_format.blackLevel);
    }
    m_numerator = (darkEnd[firstGreen] + darkEnd[secondGreen]) / 2;
    m_denominator = (m_median[firstGreen] + m_median[secondGreen]) / 2;
}

void FlatField::prepareDivisors(std::span<const std::uint16_t> flat)
{
    m_divisors.resize(flat.size());
    const auto width = static_cast<std::size_t>(m_format.width);
    for (std::size_t i = 0; i < flat.size(); ++i) {
        int level = flat[i];
        if (level <= m_format.blackLevel) {
            // A dead sample takes over from its neighbours in the row.
            const std::size_t x = i % width;
            const int left = flat[x == 0 ? i : i - 1];
            const int right = flat[x + 1 == width ? i : i + 1];
            level = std::max(left, right);
        }
        m_divisors[i] = static_cast<std::uint16_t>(std::max(level - m_format.blackLevel, 0));
    }
}

void FlatField::apply(std::span<std::uint16_t> samples) const
{
    const int black = m_format.blackLevel;
    const auto denominator = static_cast<double>(m_denominator);
    const auto width = static_cast<std::size_t>(m_format.width);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        if (m_divisors[i] == 0)
            continue;
        const std::int64_t median = m_median[i / width % 2 * 2 + i % width % 2];
        const std::int64_t product = (samples[i] - black) * median * m_numerator;
        const auto even = cutQuotient(cutQuotient(product, denominator), m_divisors[i]);
        samples[i] = static_cast<std::uint16_t>(
            std::clamp<std::int64_t>(even + black, 0, m_format.maxLevel()));
    }
}

std::string FlatField::description() const
{
    const auto number = [](std::int64_t value) { return static_cast<long long>(value); };
    return format("Flat-field median: [%lld %lld; %lld %lld], adjusted by %lld/%lld",
                  number(m_median[0]), number(m_median[1]), number(m_median[2]),
                  number(m_median[3]), number(m_numerator), number(m_denominator));
}

} // namespace mlvdump
