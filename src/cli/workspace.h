// SPDX-License-Identifier: MIT
#pragma once

#include "runner/directorylock.h"

#include <QString>

namespace filmwright {

/// The temporary directory of one run, from open() to the end of its life.
///
/// Without a base it is private to the run and removed at the end; directories that killed runs
/// left behind are removed when the next run opens its own. With a base chosen by the person, one
/// run at a time works there, and what is unfinished stays. Main thread only.
class Workspace
{
public:
    Workspace() = default;
    ~Workspace();
    Workspace(const Workspace &) = delete;
    Workspace &operator=(const Workspace &) = delete;

    /// Makes the directory the application's temporary directory. Returns what hinders it, or an
    /// empty string. `base` empty: a private directory; `keep`: nothing is removed at the end.
    [[nodiscard]] QString open(const QString &base, bool keep);

    /// Whether unfinished work stays for the next run.
    bool keepsUnfinishedWork() const { return m_chosen || m_keep; }

private:
    [[nodiscard]] QString openPrivate();
    [[nodiscard]] QString openChosen(const QString &base);

    DirectoryLock m_lock;
    QString m_privateBase;
    bool m_chosen = false;
    bool m_prepared = false; ///< the chosen one is ours to write and remove in
    bool m_keep = false;
};

} // namespace filmwright
