// SPDX-License-Identifier: MIT
#pragma once

#include "project/batchprogress.h"

#include <QString>

namespace filmwright {

// What scripts read on standard error: one JSON object a line. Keys without a known value are left
// out.

/// recording, stage, framesDone, frames, framesPerSecond, secondsLeft, batchSecondsLeft.
QByteArray progressJson(const QString &recording, const QString &stage, const Progress &progress);

/// recording, stage "finished", movie.
QByteArray finishedJson(const QString &recording, const QString &movie);

/// recording, stage "skipped", movie.
QByteArray skippedJson(const QString &recording, const QString &movie);

/// recording, stage "failed", reason.
QByteArray failedJson(const QString &recording, const QString &error);

/// message: whatever else a person would be told.
QByteArray messageJson(const QString &message);

} // namespace filmwright
