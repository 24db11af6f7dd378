// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <limits>

namespace mlvdump {

/// Pixels that stand in a regular lattice in the sensor's read-out: those that cameras measure
/// focus with. All known lattices repeat every 24 columns and 60 lines or after a part of that.
struct Lattice
{
    static constexpr int columns = 24;
    static constexpr int lines = 60;

    /// Of each line of a cell, a bit for each column.
    std::array<std::uint32_t, lines> cell{};
    int firstLine = 0; ///< of the read-out; the lattice is on no line before
    int lastLine = std::numeric_limits<int>::max();

    /// Whether a cell has the place; one of the read-out has it in the cell that it lies in.
    bool cellHas(int column, int line) const
    {
        return ((cell[static_cast<unsigned>(line % lines)] >>
                 static_cast<unsigned>(column % columns)) &
                1U) != 0;
    }
    /// Whether the place of the read-out belongs to the lattice.
    bool has(int column, int line) const
    {
        return line >= firstLine && line <= lastLine && cellHas(column, line);
    }
    /// The places in a cell.
    int size() const
    {
        int count = 0;
        for (const auto line : cell)
            count += std::popcount(line);
        return count;
    }
};

} // namespace mlvdump
