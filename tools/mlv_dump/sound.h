// SPDX-License-Identifier: MIT
#pragma once

#include "mlv/recording.h"
#include "mlv_dump/output.h"
#include "mlv_dump/slate.h"
#include "mlv_dump/sourcefiles.h"

#include <filesystem>
#include <optional>

namespace mlvdump {

/// When the picture that the sound belongs to starts and how long it lasts.
struct PictureTime
{
    std::uint64_t start; ///< microseconds on the recording's clock
    double seconds;
    bool isCut;               ///< the recording goes on behind it
    std::uint64_t firstFrame; ///< its number
    std::uint64_t frames;
};

/// Writes the sound of the recording as a WAV file, if it has any. The sound starts where the
/// picture starts: silence is put in front or sound is left out there. It ends with the recording,
/// or with a picture that is cut. Lost sound blocks leave silence. With a slate the sound is
/// exactly as long as the picture at the slate's rate, and the file says where it belongs, see
/// clipChunks(). Throws RefusedOutput, output::WriteError or raw::ReadError.
void writeSound(const mlv::Recording &recording, const PictureTime &picture,
                const std::optional<Slate> &slate, const SourceFiles &sources,
                const std::filesystem::path &path, Output &output);

} // namespace mlvdump
