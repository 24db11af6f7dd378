// SPDX-License-Identifier: MIT
#pragma once

#include "dcraw/picture.h"

namespace dcraw {

/// The newest `depth` rows of a plane that is made and used up row by row. A row can be read and
/// written from 64 bytes before its first column to 32 columns beyond the last.
template <typename T, int depth>
class RowRing
{
    static_assert((depth & (depth - 1)) == 0);

public:
    explicit RowRing(int columns)
        : m_stride(lead + roundedUp(static_cast<std::size_t>(columns), 32))
        , m_values(depth * m_stride + lead)
    {
    }

    T *operator[](int y) { return &m_values[lead + (static_cast<unsigned>(y) % depth) * m_stride]; }
    const T *operator[](int y) const
    {
        return &m_values[lead + (static_cast<unsigned>(y) % depth) * m_stride];
    }

private:
    static constexpr std::size_t lead = std::max<std::size_t>(64 / sizeof(T), 32);

    std::size_t m_stride;
    AlignedArray<T> m_values;
};

/// Rows divided into their even (0) and their odd columns (1): in a Bayer pattern each half has one
/// colour. Where a column of half h has index i, its neighbours in the other half have the indices
/// i + h - 1 (left) and i + h (right).
template <typename T, int depth>
class SplitRowRing
{
public:
    explicit SplitRowRing(int columns)
        : m_halves{Half((columns + 1) / 2), Half((columns + 1) / 2)}
    {
    }

    T *row(int y, int half) { return m_halves[half][y]; }
    const T *row(int y, int half) const { return m_halves[half][y]; }

private:
    using Half = RowRing<T, depth>;

    Half m_halves[2];
};

} // namespace dcraw
