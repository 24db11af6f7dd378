// SPDX-License-Identifier: MIT
#pragma once

#include "mlv/recording.h"
#include "mlv_dump/output.h"
#include "mlv_dump/sourcefiles.h"

#include <filesystem>

namespace mlvdump {

/// When the picture that the sound belongs to starts and how long it lasts.
struct PictureTime
{
    std::uint64_t start; ///< microseconds on the recording's clock
    double seconds;
    bool isCut; ///< the recording goes on behind it
};

/// Writes the sound of the recording as a WAV file, if it has any. The sound starts where the
/// picture starts: silence is put in front or sound is left out there. It ends with the recording,
/// or with a picture that is cut. Lost sound blocks leave
/// silence. Throws RefusedOutput, output::WriteError or mlv::ReadError.
void writeSound(const mlv::Recording &recording, const PictureTime &picture,
                const SourceFiles &sources, const std::filesystem::path &path, Output &output);

} // namespace mlvdump
