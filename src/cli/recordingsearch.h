// SPDX-License-Identifier: MIT
#pragma once

#include <QList>
#include <QString>
#include <QStringList>

namespace filmwright {

/// Something that may be a recording, or hold some, and can't be reached.
struct Unreachable
{
    QString path; ///< characters that stand for no text are replaced
    QString error;
};

/// The recordings that the paths stand for, in the order given, each once: files as they are,
/// folders searched at any depth in ascending order of the names. A folder is searched once, so a
/// link that leads back ends there. `unreachable` gets the folders that can't be read and the
/// recordings whose names are no UTF-8, which no part of the application can open. The folder
/// `skipped` isn't searched.
QStringList findRecordings(const QStringList &paths, QList<Unreachable> *unreachable = nullptr,
                           const QString &skipped = {});

} // namespace filmwright
