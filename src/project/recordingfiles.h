// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QStringList>

namespace filmwright {

/// Whether the name is a recording's: its extension is "mlv" in any case.
bool isRecordingName(const QString &path);

/// The recording's file and those that it goes on in, clip.M00 to clip.M99, in any case.
QStringList recordingFiles(const QString &path);

/// Tells a recording from another one of its name, and from itself before it was changed: size,
/// time and place of each of its files.
QByteArray recordingIdentity(const QString &path);

} // namespace filmwright
