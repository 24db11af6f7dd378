// SPDX-License-Identifier: MIT
#include "dcraw/stretch.h"

namespace dcraw {

Stretch::Stretch(int count, double step)
{
    m_places.reserve(static_cast<std::size_t>(count));
    double position = 0; // added up, with the roundings on the way
    for (int line = 0; line < count; ++line, position += step) {
        const int index = static_cast<int>(position);
        m_places.push_back({index, position - index});
    }
}

} // namespace dcraw
