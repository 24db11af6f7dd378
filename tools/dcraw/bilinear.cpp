// SPDX-License-Identifier: MIT
#include "dcraw/bilinear.h"

namespace dcraw {

Bilinear::Bilinear(const Development &development, const SampleRows &samples)
    : m_development(development)
    , m_light(development, samples)
    , m_next(0)
{
}

void Bilinear::read(int first, Picture &rows)
{
    const int end = first + rows.rows();
    if (m_next != first + 1)
        m_next = std::max(first - 1, 0);
    for (int y = first; y < end; ++y) {
        for (; m_next <= std::min(y + 1, m_development.height - 1); ++m_next)
            m_light.make(m_next);
        m_light.interpolate(y, 0, m_development.width, rows, y - first);
    }
}

} // namespace dcraw
