// SPDX-License-Identifier: MIT
#pragma once

#include "mlv/recording.h"
#include "mlv_dump/place.h"

#include <filesystem>
#include <optional>
#include <stdexcept>
#include <vector>

namespace mlvdump {

/// A person's map of pixels can't be used, for whatever recording. The text says why.
class MapError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// The map is of another camera than the recording.
class ForeignMap : public MapError
{
public:
    using MapError::MapError;
};

/// Reads a map as users exchange them (.fpm, .bpm): one place of the read-out a line, x and y with
/// blanks between; what follows on the line, and lines that hold no place, are ignored. A first
/// line "#FPM CODE" names the camera by its code. Answers the places in order, each once, none
/// beyond what any read-out has. Throws MapError.
std::vector<Place> readPixelMap(const std::filesystem::path &path, const mlv::Recording &recording);

/// The map that lies beside a recording: of its own name (.fpm, .bpm), or that of its camera and
/// read-out, "80000326_1808x727.fpm", whose height may differ by two lines between recorders.
std::optional<std::filesystem::path> pixelMapBeside(const std::filesystem::path &recordingPath,
                                                    const mlv::Recording &recording);

} // namespace mlvdump
