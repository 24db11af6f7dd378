// SPDX-License-Identifier: MIT
#include "runner/directorylock.h"

#include "runner/files.h"

#include <QDir>
#include <QFileInfo>

#include <chrono>

namespace filmwright {

namespace {

const QString lockSuffix = QStringLiteral(".lock");

/// A lock is stale when its process is gone, never because of its age.
constexpr std::chrono::milliseconds anyAge = std::chrono::milliseconds::zero();
constexpr std::chrono::milliseconds atOnce = std::chrono::milliseconds::zero();

} // namespace

QString DirectoryLock::take(const QString &directory)
{
    m_file.reset();
    m_heldElsewhere = false;
    const QString path = directory + lockSuffix;
    createPrivateFolder(QFileInfo(path).absolutePath());
    auto file = std::make_unique<QLockFile>(path);
    file->setStaleLockTime(anyAge);
    if (file->tryLock(atOnce)) {
        m_file = std::move(file);
        return {};
    }
    m_heldElsewhere = file->error() == QLockFile::LockFailedError;
    return m_heldElsewhere ? QStringLiteral("another run of Filmwright works in %1").arg(directory)
                           : QStringLiteral("the lock file %1 can't be written").arg(path);
}

void removeAbandonedDirectories(const QString &folder, const QString &prefix)
{
    const QDir parent(folder);
    const QStringList locks =
        parent.entryList({prefix + QLatin1Char('*') + lockSuffix}, QDir::Files | QDir::Hidden);
    for (const QString &name : locks) {
        const QString directory = parent.filePath(name.chopped(lockSuffix.size()));
        DirectoryLock lock;
        if (lock.take(directory).isEmpty() || !lock.isHeldElsewhere())
            removeFolder(directory);
    }
}

} // namespace filmwright
