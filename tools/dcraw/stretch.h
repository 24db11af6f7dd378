// SPDX-License-Identifier: MIT
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace dcraw {

/// Where the lines of a stretched picture lie between those of the picture: line i of the result
/// is (1 − part) × line `index` + part × line `index` + 1.
class Stretch
{
public:
    struct Place
    {
        int index;
        double part;
    };

    /// `count` lines at distances of `step`, at most 1.
    Stretch(int count, double step);

    int count() const { return static_cast<int>(m_places.size()); }
    const Place &operator[](int line) const { return m_places[static_cast<std::size_t>(line)]; }

    static std::uint16_t between(std::uint16_t first, std::uint16_t second, double part)
    {
        return static_cast<std::uint16_t>(std::floor(first * (1 - part) + second * part + 0.5));
    }

private:
    std::vector<Place> m_places;
};

} // namespace dcraw
