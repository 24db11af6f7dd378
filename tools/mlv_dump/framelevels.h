// SPDX-License-Identifier: MIT
#pragma once

#include "mlv/frameformat.h"
#include "mlv/recording.h"

#include <string>
#include <vector>

namespace mlvdump {

/// Which black or white level a frame is tagged with.
struct LevelChoice
{
    enum class Kind {
        Auto,     ///< the recorded one, unless the samples show that it can't be true
        Recorded, ///< the recorded one
        Given,    ///< `level`
    };
    Kind kind = Kind::Auto;
    int level = 0;
};

struct FrameLevels
{
    mlv::FrameFormat format;          ///< the recorded one but for its levels
    std::vector<std::string> remarks; ///< what was changed, a sentence each
};

/// The levels that the frames of a recording are calibrated and developed with. Samples are never
/// changed. Decodes frames where a choice asks for it, on several threads. Throws raw::Error.
FrameLevels frameLevels(const mlv::Recording &recording, const mlv::FrameFormat &recorded,
                        const LevelChoice &black, const LevelChoice &white, unsigned threads);

} // namespace mlvdump
