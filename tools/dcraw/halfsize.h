// SPDX-License-Identifier: MIT
#pragma once

#include "dcraw/lightrows.h"
#include "dcraw/rowsource.h"

namespace dcraw {

/// Makes one pixel of each 2 × 2 square of the pattern. Beyond an odd edge there is no light: to
/// the right that comes from samples of 0 behind each row.
class HalfSize : public RowSource
{
public:
    /// Both outlive it.
    HalfSize(const Development &development, const SampleRows &samples);

    void read(int first, Picture &rows) override;

private:
    const Development &m_development;
    LightRows m_light;
    AlignedArray<std::uint16_t> m_nothing; ///< what lies below an odd last row
};

} // namespace dcraw
