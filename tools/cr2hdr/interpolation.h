// SPDX-License-Identifier: MIT
#pragma once

#include "cr2hdr/frame.h"
#include "cr2hdr/rowpattern.h"

#include <array>
#include <optional>
#include <span>
#include <vector>

namespace dualiso {

/// Finds for the rows of one sensitivity what the other would have shown there, along edges where
/// the picture has any. Not for several threads at once: make one for each.
class Interpolation
{
public:
    /// Both outlive the interpolation; the frame's exposures are matched.
    Interpolation(const Frame &frame, const RowPattern &pattern);

    /// Fills `values` with what the other kind of rows would show in row `y`. High values are
    /// saturated from `clippedFrom` on.
    void fillRow(int y, float clippedFrom, std::span<float> values);

private:
    /// A row with mirrored values on both sides, so that shifted columns need no check.
    class PaddedRow
    {
    public:
        explicit PaddedRow(int width);
        void take(const Frame &frame, int y);
        const float *at(int x) const { return m_values.data() + x + padding; }

    private:
        static constexpr int padding = 16;
        std::vector<float> m_values;
    };

    struct NearGreen
    {
        float value;
        float brightest;
        float columnsDiffer; ///< of the two values that it is made of
    };

    void takeRows(int y);
    template <typename Unlikeness>
    void addCosts(const Unlikeness &unlikeness);
    void chooseShifts(bool fromLow, float clippedFrom);
    NearGreen nearGreen(int x, int shift) const;
    float brightestSource(int x, int y, int shift) const;
    std::optional<float> wayToAbove(int x, int shift, float clippedFrom) const;
    float saturatedValueAt(int x, int y, int shift, float clippedFrom) const;
    float valueAt(int x, int y, float above, float below, int shift) const;

    const Frame &m_frame;
    const RowPattern &m_pattern;
    PaddedRow m_above;  ///< two rows up
    PaddedRow m_below;  ///< two rows down
    PaddedRow m_near;   ///< the neighbouring row of the other kind
    PaddedRow m_native; ///< the row itself
    bool m_hasNear = false;
    bool m_nearIsAbove = false;
    std::vector<float> m_costs;     ///< of one shift
    std::vector<float> m_bestCosts; ///< of the shifts so far
    std::vector<int> m_shifts;
};

} // namespace dualiso
