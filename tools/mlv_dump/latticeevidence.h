// SPDX-License-Identifier: MIT
#pragma once

#include "mlv_dump/pixelstatistics.h"

#include <vector>

namespace mlvdump {

/// By how many standard deviations the pixels on places of a lattice cell are farther off what
/// their neighbours say than others of the same line and those of the same columns are. The
/// deviation is measured, too: all places of the scene together tell how much it scatters.
class LatticeEvidence
{
public:
    explicit LatticeEvidence(const PixelStatistics &statistics);

    /// Of the place in a cell, on those neighbouring lines where it shows best: a lattice may be
    /// confined to a band of lines.
    double ofPlace(int column, int line) const
    {
        return m_places[static_cast<std::size_t>(line) * Lattice::columns +
                        static_cast<std::size_t>(column)];
    }

    /// Sets the lattice's lines to those on which it shows, together with all about them on which
    /// nothing can be told.
    void confine(Lattice &lattice) const;

private:
    struct Value
    {
        double excess = 0;  ///< share of unusual pixels beyond that of the others
        double count = 0;   ///< pixels; 0: nothing can be told
        double clarity = 0; ///< how well one can see there
    };
    const Value &at(int y, int column) const
    {
        return m_values[static_cast<std::size_t>(y) * Lattice::columns +
                        static_cast<std::size_t>(column)];
    }
    Value ofLine(const Lattice &lattice, int y) const;
    std::vector<double> likelihoods(const Lattice &lattice) const;
    void takeFrom(int y, int column, double usual);
    void levelColumns();
    void levelLines();
    void measureScatter();
    double best(int column, int line) const;

    int m_firstLine; ///< of the read-out
    int m_height;
    double m_scatter = 1; ///< of an excess × √count
    std::vector<Value> m_values;
    std::vector<double> m_places;
};

} // namespace mlvdump
