// SPDX-License-Identifier: MIT
#pragma once

#include "project/conversionsettings.h"

#include <QByteArray>

#include <optional>

namespace filmwright {

/// Tells what a movie is made with: the recording and its calibration as they are now, and every
/// choice that changes a sample; a hash.
QByteArray movieOrigin(const QString &recording, const ConversionSettings &settings);

/// Notes that with a movie, in an extended attribute of its file; where the file system has none,
/// nowhere.
void noteOrigin(const QString &movie, const QByteArray &origin);

/// Whether the movie needn't be made again: its writer has come to its end, and it was made with
/// the same. Where that isn't noted, it has at least so many frames; without a number it then
/// counts as another movie.
bool isFinishedMovie(const QString &movie, const QByteArray &origin, std::optional<quint64> frames);

} // namespace filmwright
