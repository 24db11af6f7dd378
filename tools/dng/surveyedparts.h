// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

namespace dng {

/// Where the parts of a recording begin of whose first good frames cr2hdr makes its survey: indexes
/// of so many frames, ascending. Enough for changes of light within a recording; all of the
/// surveyed frames are in memory at once.
inline std::vector<std::size_t> surveyedParts(std::size_t frames)
{
    constexpr std::size_t mostParts = 6;
    std::vector<std::size_t> begins(std::min(frames, mostParts));
    for (std::size_t part = 0; part < begins.size(); ++part)
        begins[part] = frames * part / begins.size();
    return begins;
}

} // namespace dng
