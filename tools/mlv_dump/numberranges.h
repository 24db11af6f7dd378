// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace mlvdump {

/// Frame numbers that a person is told of, as ranges in the order in which they come.
class NumberRanges
{
public:
    /// The numbers from `first` to `last`, both included.
    void add(std::uint64_t first, std::uint64_t last);

    bool isEmpty() const { return m_ranges.empty(); }
    std::uint64_t count() const { return m_count; }
    /// "3, 5-8, 12 and 40 more": never longer than a line can be.
    std::string text() const;

private:
    struct Range
    {
        std::uint64_t first;
        std::uint64_t last;
    };
    std::vector<Range> m_ranges;
    std::uint64_t m_count = 0;
};

} // namespace mlvdump
