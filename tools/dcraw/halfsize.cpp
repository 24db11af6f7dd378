// SPDX-License-Identifier: MIT
#include "dcraw/halfsize.h"

namespace dcraw {

HalfSize::HalfSize(const Development &development, const SampleRows &samples)
    : m_development(development)
    , m_light(development, samples)
    , m_nothing(static_cast<std::size_t>(development.pictureWidth()))
{
}

void HalfSize::read(int first, Picture &rows)
{
    for (int row = 0; row < rows.rows(); ++row) {
        std::array<const std::uint16_t *, 2> greens{};
        for (int line = 0; line < 2; ++line) {
            const int y = 2 * (first + row) + line;
            const bool exists = y < m_development.height;
            if (exists)
                m_light.make(y);
            const int coloured = m_light.colouredHalf(y);
            const auto half = [&](int h) { return exists ? m_light.row(y, h) : m_nothing.get(); };
            greens[static_cast<std::size_t>(line)] = half(1 - coloured);
            std::copy_n(half(coloured), rows.width(), rows.row(m_light.rowColour(y), row));
        }
        std::transform(
            greens[0], greens[0] + rows.width(), greens[1], rows.row(1, row),
            [](int upper, int lower) { return static_cast<std::uint16_t>((upper + lower) >> 1); });
    }
}

} // namespace dcraw
