// SPDX-License-Identifier: MIT
#include "mlv_dump/numberranges.h"

namespace mlvdump {

void NumberRanges::add(std::uint64_t first, std::uint64_t last)
{
    m_count += last - first + 1;
    if (!m_ranges.empty() && m_ranges.back().last + 1 == first)
        m_ranges.back().last = last;
    else
        m_ranges.push_back({first, last});
}

std::string NumberRanges::text() const
{
    constexpr std::size_t mostRanges = 100;
    std::string text;
    std::uint64_t told = 0;
    for (const auto &range : m_ranges) {
        if (&range - m_ranges.data() == mostRanges)
            return text + " and " + std::to_string(m_count - told) + " more";
        text += text.empty() ? "" : ", ";
        text += std::to_string(range.first);
        if (range.last > range.first) {
            text += '-';
            text += std::to_string(range.last);
        }
        told += range.last - range.first + 1;
    }
    return text;
}

} // namespace mlvdump
