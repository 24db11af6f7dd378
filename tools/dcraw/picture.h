// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>

namespace dcraw {

constexpr std::size_t roundedUp(std::size_t value, std::size_t multiple)
{
    return (value + multiple - 1) / multiple * multiple;
}

/// Memory that starts where vectors like to start.
template <typename T>
class AlignedArray
{
public:
    /// Zeros.
    explicit AlignedArray(std::size_t count)
        : m_values(static_cast<T *>(::operator new(count * sizeof(T), alignment)))
    {
        std::fill_n(m_values.get(), count, T{});
    }

    T *get() { return m_values.get(); }
    const T *get() const { return m_values.get(); }
    T &operator[](std::size_t i) { return m_values.get()[i]; }
    const T &operator[](std::size_t i) const { return m_values.get()[i]; }

private:
    static constexpr std::align_val_t alignment{64};
    struct Delete
    {
        void operator()(T *values) const { ::operator delete(values, alignment); }
    };

    std::unique_ptr<T, Delete> m_values;
};

/// Rows of pixels with a plane for each colour. What lies beyond a row's last column up to a
/// multiple of 64 belongs to the row and means nothing, so that loops run in whole vectors.
class Picture
{
public:
    Picture(int width, int rows)
        : m_width(width)
        , m_rows(rows)
        , m_stride(roundedUp(static_cast<std::size_t>(width), 64))
        , m_values(3 * m_stride * static_cast<std::size_t>(rows))
    {
    }

    int width() const { return m_width; }
    int rows() const { return m_rows; }
    /// From a row of a colour to the next row of that colour.
    std::size_t stride() const { return 3 * m_stride; }
    std::uint16_t *row(int colour, int y) { return &m_values[offset(colour, y)]; }
    const std::uint16_t *row(int colour, int y) const { return &m_values[offset(colour, y)]; }

private:
    std::size_t offset(int colour, int y) const
    {
        return static_cast<std::size_t>(3 * y + colour) * m_stride;
    }

    int m_width;
    int m_rows;
    std::size_t m_stride;
    AlignedArray<std::uint16_t> m_values;
};

} // namespace dcraw
