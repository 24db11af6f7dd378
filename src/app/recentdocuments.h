// SPDX-License-Identifier: MIT
#pragma once

#include <QStringList>

namespace filmwright {

// The recordings opened last, newest first, kept in the user defaults. Main thread only.

QStringList recentDocuments();
/// Puts the path on top of the list.
void noteNewRecentDocument(const QString &path);
void clearRecentDocuments();

} // namespace filmwright
