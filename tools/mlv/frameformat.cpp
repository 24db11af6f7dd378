// SPDX-License-Identifier: MIT
#include "mlv/frameformat.h"

#include "mlv/chunk.h"
#include "raw/error.h"

#include <algorithm>
#include <string>

namespace mlv {

FrameFormat frameFormat(const RawInfo &rawInfo)
{
    if (!raw::isSupportedDepth(rawInfo.bitsPerSample)) {
        throw raw::Error("has frames of " + std::to_string(rawInfo.bitsPerSample) +
                         " bits, which can't be read");
    }
    FrameFormat format{rawInfo.width, rawInfo.height, rawInfo.bitsPerSample, 0, 0};
    if (format.sampleCount() == 0 || format.packedBytes() > maxBlockSize) {
        throw raw::Error("has frames of an impossible size, " + std::to_string(format.width) + "x" +
                         std::to_string(format.height));
    }
    format.blackLevel = std::clamp(rawInfo.blackLevel, 0, format.maxLevel() - 1);
    const bool plausible = rawInfo.whiteLevel > format.blackLevel;
    format.whiteLevel =
        plausible ? std::min(rawInfo.whiteLevel, format.maxLevel()) : format.maxLevel();
    return format;
}

} // namespace mlv
