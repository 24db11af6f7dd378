// SPDX-License-Identifier: MIT
#pragma once

#include "mlv_dump/framelevels.h"
#include "mlv_dump/repairsurvey.h"
#include "mlv_dump/whitebalance.h"

#include <cstdint>
#include <filesystem>
#include <limits>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace mlvdump {

enum class Mode {
    Help,
    Version,
    Report,  ///< what stands in the recording, no frame data read
    Frames,  ///< one DNG a frame, and the sound as a WAV
    Average, ///< one averaged frame as a recording
    Survey,  ///< what the frames' tags would say otherwise than the recording
    Verify,  ///< whether everything is there, all data read
    Rewrite, ///< all frames, calibrated and uncompressed, as a recording
};

/// Frame numbers, both included.
struct FrameRange
{
    std::uint64_t first = 0;
    std::uint64_t last = std::numeric_limits<std::uint64_t>::max();

    bool contains(std::uint64_t number) const { return number >= first && number <= last; }
};

struct Options
{
    Mode mode = Mode::Report;
    bool verbose = false;
    FrameRange range;
    std::filesystem::path dark;   ///< empty: none
    std::filesystem::path flat;   ///< empty: none
    std::filesystem::path output; ///< a prefix for Frames, else a file
    std::filesystem::path input;
    LevelChoice black;
    LevelChoice white;
    bool keepsRecordedMatrix = false;
    bool cinemaDng = false; ///< of Frames alone: frames and sound make a clip
    BalanceChoice balance;
    double exposure = 0;                 ///< that Frames ask for beside the recorded bias, EV
    bool renumbers = false;              ///< Frames are numbered from 0 wherever `range` begins
    RepairChoice repair;                 ///< of Frames alone: averages are what the sensor measured
    unsigned threads = 0;                ///< 0: as many as the machine has
    std::filesystem::path writtenSurvey; ///< of Frames alone, not empty: no frames but this
    std::filesystem::path surveyedFrames; ///< the prefix of those that cr2hdr surveys; empty: none
    std::filesystem::path knownSurvey;    ///< empty: frames are surveyed first

    /// At least 1.
    unsigned threadCount() const;
    /// The files that are read beside the recording.
    std::vector<std::filesystem::path> references() const;
};

/// The arguments make no sense. Knows whether they ask for a frame run, which ends without the last
/// two lines when it fails.
class UsageError : public std::runtime_error
{
public:
    UsageError(const std::string &text, bool asksForFrames)
        : std::runtime_error(text)
        , m_asksForFrames(asksForFrames)
    {
    }
    bool asksForFrames() const { return m_asksForFrames; }

private:
    bool m_asksForFrames;
};

/// The arguments without the program's name. Throws UsageError.
Options parseOptions(std::span<const std::string_view> arguments);

std::string_view usage();

} // namespace mlvdump
