// SPDX-License-Identifier: MIT
#pragma once

#include "cr2hdr/frame.h"

#include <array>
#include <cstdint>
#include <string>

namespace dualiso {

/// Which rows have the higher sensitivity: those whose number modulo 4 is marked. In a dual-ISO
/// frame the marked ones are a pair of neighbours, so that each pair has all colours.
struct RowPattern
{
    std::array<bool, 4> high{};

    bool isHigh(int y) const { return high[static_cast<std::size_t>(y & 3)]; }
    /// Four letters from row 0 on, L for low and H for high.
    std::string letters() const;
    bool operator==(const RowPattern &) const = default;
};

enum class Finding {
    Unclear, ///< too dark or too bright to tell
    DualIso,
    NotDualIso,
};

/// Compares rows that are two apart: they see nearly the same, in the same colours, so that their
/// ratio tells whether they were read with one sensitivity. Any number of frames can be added.
class PatternSearch
{
public:
    void add(const Frame &frame);

    Finding finding() const;
    /// Meaningful after a finding of DualIso.
    RowPattern pattern() const;

private:
    // Ratios from 2^-16 to 2^16, in steps of 1/16 EV.
    static constexpr int stepsPerStop = 16;
    static constexpr int largestStops = 16;
    using Histogram = std::array<std::uint32_t, 2 * largestStops * stepsPerStop + 1>;

    double medianStops(std::size_t rowClass) const;
    std::uint64_t pairs(std::size_t rowClass) const;

    /// How much brighter the row two below is, by the row's number modulo 4.
    std::array<Histogram, 4> m_ratios{};
};

} // namespace dualiso
