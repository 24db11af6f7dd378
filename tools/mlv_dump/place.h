// SPDX-License-Identifier: MIT
#pragma once

#include <tuple>

namespace mlvdump {

/// A place in the sensor's read-out, counted from its top left corner, dark border included. The
/// frame shows a part of the read-out, whose corner each frame tells by itself; what is wrong with
/// the sensor stands still in the read-out only. Ordered by lines.
struct Place
{
    int y;
    int x;
    bool operator==(const Place &) const = default;
};

inline bool operator<(const Place &one, const Place &other)
{
    return std::tie(one.y, one.x) < std::tie(other.y, other.x);
}

} // namespace mlvdump
