// SPDX-License-Identifier: MIT
#include "mlv_dump/frameplan.h"

namespace mlvdump {

FramePlan planFrames(const mlv::DataIndex &frames, const FrameRange &range)
{
    // A camera that drops more frames than it keeps is of no use; short recordings get some more.
    std::uint64_t mayBeMissing = frames.size() + 1000;
    FramePlan plan;
    std::uint32_t number = 0;
    std::size_t filled = 0;
    std::size_t jumps = 0;
    const auto add = [&](const mlv::DataBlock &block, std::uint64_t behind = 0) {
        const bool selected = range.contains(number);
        if (selected && plan.frames.empty())
            plan.startsBehind = static_cast<std::uint32_t>(behind);
        if (selected)
            plan.frames.push_back({number, &block});
        plan.reachesEnd = selected;
        ++number;
        return selected;
    };
    for (std::size_t i = 0; i < frames.size(); ++i) {
        const std::uint64_t gap = i == 0 ? 0 : frames[i].number - frames[i - 1].number - 1;
        if (gap > mayBeMissing) {
            ++jumps;
        } else {
            mayBeMissing -= gap;
            for (std::uint64_t missing = 1; missing <= gap; ++missing)
                filled += add(frames[i - 1], missing) ? 1U : 0U;
        }
        add(frames[i]);
    }
    if (filled > 0) {
        plan.remarks.push_back(filled == 1
                                   ? "1 dropped frame is filled by the frame before it"
                                   : std::to_string(filled) +
                                         " dropped frames are filled by the frame before them");
    }
    if (jumps > 0) {
        plan.remarks.push_back("the frame numbers jump too far to be true in " +
                               std::to_string(jumps) + " places, which are not filled");
    }
    return plan;
}

} // namespace mlvdump
