// SPDX-License-Identifier: MIT
#pragma once

#include "project/conversionsettings.h"
#include "project/recordingoutcome.h"

#include <QList>

namespace filmwright {

/// The table at the end of a run: a heading, then a line a recording. The recordings are named from
/// the folder on that they have in common; what a terminal would take for a command is replaced.
QStringList outcomeTable(const QList<RecordingOutcome> &outcomes);

/// The same as JSON: an object with the run's exit status ("status"), what was chosen for it, each
/// only when it was ("recipe", its id, "exposure", EV, "whiteBalance", "lut", a path,
/// "framesAskedFor"), and an array ("recordings") of objects with "recording", "result"
/// ("finished", "skipped", "failed", "interrupted", "not begun"), "movie" (null without one),
/// "frames", "seconds", "reason" and "tool", the one that failed (null without one), "warnings" (an
/// array) and "tools" (an object: for each tool its last lines).
QByteArray outcomeReport(const QList<RecordingOutcome> &outcomes, int status,
                         const ConversionSettings &settings = {});

/// Returns why a file can't be written there, or an empty string. What is there stays as it is.
QString reportFileError(const QString &path);

/// Writes the whole file or leaves what was there. Returns why it couldn't, or an empty string.
[[nodiscard]] QString writeReport(const QString &path, const QByteArray &report);

} // namespace filmwright
