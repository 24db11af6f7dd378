// SPDX-License-Identifier: MIT
#pragma once

#include <QStringList>

namespace filmwright {

/// The recordings opened last, newest first, kept in the user defaults. Main thread only.
class RecentDocuments
{
public:
    QStringList paths() const { return m_paths; }

    void restore();
    /// Stores the list: not with each note, since a folder may bring thousands.
    void save() const;

    /// Puts the path on top.
    void noteNewRecentDocument(const QString &path);
    void clear() { m_paths.clear(); }

private:
    QStringList m_paths;
};

} // namespace filmwright
