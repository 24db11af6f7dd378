// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <optional>

namespace filmwright {

/// How many video frames the index of a QuickTime movie or an AVI file lists. Nothing for a file
/// whose writer has not come to its end: the index is written last, and the lengths of the parts
/// are filled in then. Reads a few kilobytes, however long the movie.
///
/// ffmpeg's status doesn't tell: frames that it can't read, and a disk that is full at the very
/// end, leave a movie that is too short and the status 0.
std::optional<quint64> framesOfFinishedMovie(const QString &path);

} // namespace filmwright
