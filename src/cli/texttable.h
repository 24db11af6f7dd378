// SPDX-License-Identifier: MIT
#pragma once

#include <QList>
#include <QStringList>

namespace filmwright {

/// The rows with their columns below each other, two blanks apart. All rows have the same number of
/// cells; the columns `numbers` end below each other.
QStringList textTable(const QList<QStringList> &rows, const QList<int> &numbers);

/// The deepest folder that all paths are in, ending with a separator; empty without paths.
QString commonFolder(const QStringList &paths);

} // namespace filmwright
