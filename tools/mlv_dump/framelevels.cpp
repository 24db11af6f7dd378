// SPDX-License-Identifier: MIT
#include "mlv_dump/framelevels.h"

#include "mlv_dump/levelsurvey.h"

#include <algorithm>
#include <array>

namespace mlvdump {
namespace {

/// What cameras give a sample without light, by their code in the IDNT block; 0 where it isn't
/// known.
int usualBlackLevel(const mlv::Recording &recording, int bitsPerSample)
{
    constexpr int mostCameras = 2048; // of 14 bits
    constexpr int early = 1024;
    constexpr std::array<std::uint32_t, 3> earlyCameras{
        0x80000218, // 5D Mark II
        0x80000252, // 500D
        0x80000261, // 50D
    };
    if (bitsPerSample > 14)
        return 0;
    const auto code = recording.identity() ? recording.identity()->model : 0;
    const bool isEarly = std::ranges::find(earlyCameras, code) != earlyCameras.end();
    return (isEarly ? early : mostCameras) >> (14 - bitsPerSample);
}

} // namespace

FrameLevels frameLevels(const mlv::Recording &recording, const mlv::FrameFormat &recorded,
                        const LevelChoice &black, const LevelChoice &white, unsigned threads)
{
    using Kind = LevelChoice::Kind;
    FrameLevels levels{recorded, {}};
    auto &format = levels.format;
    if (black.kind == Kind::Given)
        format.blackLevel = std::clamp(black.level, 0, format.maxLevel() - 1);
    if (white.kind == Kind::Given)
        format.whiteLevel = white.level;
    const bool judgesBlack = black.kind == Kind::Auto && recorded.blackLevel == 0;
    const auto survey =
        judgesBlack || white.kind == Kind::Auto ? surveyLevels(recording, threads) : std::nullopt;
    if (judgesBlack && survey) {
        const int usual = usualBlackLevel(recording, recorded.bitsPerSample);
        // Samples well below it show that black was subtracted already.
        if (usual > 0 && survey->darkest >= usual - usual / 8) {
            format.blackLevel = usual;
            levels.remarks.push_back("the recorded black level is 0; the samples begin at " +
                                     std::to_string(usual) + ", which is taken for it");
        }
    }
    if (white.kind == Kind::Auto && survey && survey->clip &&
        *survey->clip<recorded.whiteLevel && * survey->clip> format.blackLevel) {
        format.whiteLevel = *survey->clip;
        levels.remarks.push_back("the recorded white level is " +
                                 std::to_string(recorded.whiteLevel) + "; the sensor is full at " +
                                 std::to_string(*survey->clip) + ", which is taken for it");
    }
    format.whiteLevel = std::clamp(format.whiteLevel, format.blackLevel + 1, format.maxLevel());
    return levels;
}

} // namespace mlvdump
