// SPDX-License-Identifier: MIT
#pragma once

#include "dcraw/development.h"

#include <cstdint>
#include <vector>

/// The rules of development, computed in the plainest way: whole pictures, one pixel after another.
namespace plain {

/// Samples in memory, row after row.
class Samples : public dcraw::SampleRows
{
public:
    Samples(std::vector<std::uint16_t> values, int width);
    void read(int row, std::span<std::uint16_t> samples) const override;

private:
    std::vector<std::uint16_t> m_values;
    std::size_t m_width;
};

/// What dcraw::develop() has to hand to its sink, all rows.
std::vector<std::byte> develop(const dcraw::Development &development,
                               const dcraw::SampleRows &samples);

} // namespace plain
