// SPDX-License-Identifier: MIT
#pragma once

#include "dcraw/lightrows.h"
#include "dcraw/rowsource.h"

namespace dcraw {

/// Each missing colour is the mean of the neighbours that have it.
class Bilinear : public RowSource
{
public:
    /// Both outlive it.
    Bilinear(const Development &development, const SampleRows &samples);

    void read(int first, Picture &rows) override;

private:
    const Development &m_development;
    LightRows m_light;
    int m_next; ///< the next row to scale
};

} // namespace dcraw
