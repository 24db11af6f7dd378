// SPDX-License-Identifier: MIT
#pragma once

namespace dualiso {

/// The position that stands in for `at` beyond an edge: mirrored at the first or last position, so
/// that it has the same filter colour. `at` is less than `count` positions outside.
constexpr int mirrored(int at, int count)
{
    if (at < 0)
        return -at;
    return at < count ? at : 2 * (count - 1) - at;
}

} // namespace dualiso
