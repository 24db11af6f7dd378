// SPDX-License-Identifier: MIT
#pragma once

#include "cr2hdr/frame.h"
#include "cr2hdr/rowpattern.h"

#include <cstdint>
#include <vector>

namespace dualiso {

/// Finds the level from which the rows of the higher sensitivity are not to be believed. With more
/// amplification a sensor may saturate well below the white level that its files declare.
class SaturationSearch
{
public:
    void add(const Frame &frame, const RowPattern &pattern);

    /// Above black. If nothing saturates it lies just below the brightest values, where the low
    /// rows are as good.
    float clippedFrom() const;

private:
    std::vector<std::uint32_t> m_counts; ///< of high rows' values, by level
};

} // namespace dualiso
