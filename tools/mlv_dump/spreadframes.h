// SPDX-License-Identifier: MIT
#pragma once

#include "mlv/recording.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace mlvdump {

/// At most `count` of the frames, evenly spread over all.
inline std::vector<mlv::DataBlock> spreadFrames(const mlv::DataIndex &frames, std::size_t count)
{
    count = std::min(frames.size(), count);
    std::vector<mlv::DataBlock> chosen;
    for (std::size_t i = 0; i < count; ++i)
        chosen.push_back(frames[i * frames.size() / count]);
    return chosen;
}

} // namespace mlvdump
