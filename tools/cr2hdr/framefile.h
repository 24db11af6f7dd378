// SPDX-License-Identifier: MIT
#pragma once

#include "cr2hdr/frame.h"
#include "dng/rawfile.h"

#include <cstdint>
#include <filesystem>

namespace dualiso {

/// The samples of the file as a frame. Throws raw::Error.
Frame readFrame(const dng::RawFile &file);

/// Tells recordings apart: the same for all frames of one, by the names of reel and camera.
std::uint64_t originOf(const dng::RawFile &file);

/// Whether the file is one that replaceFrame() wrote.
bool isBlended(const dng::RawFile &file);

/// Replaces the file at `path`, which is `source`, by one with the blended frame: 16 bits a sample,
/// the levels on that scale, this program added to the software tag, all other tags as they are.
/// The new file is on the disk when this returns. Throws std::system_error; the file is then what
/// it was.
void replaceFrame(const std::filesystem::path &path, const dng::RawFile &source,
                  const Frame &frame);

} // namespace dualiso
