// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>

namespace filmwright {

/// Whether the name is a recording's: its extension is "mlv" in any case.
bool isRecordingName(const QString &path);

/// The recordings that the paths stand for, in the order given, each once: files as they are,
/// folders searched at any depth in ascending order of the names. A folder is searched once, so a
/// link that leads back ends there.
QStringList findRecordings(const QStringList &paths);

} // namespace filmwright
