// SPDX-License-Identifier: MIT
#include "cli/workspace.h"

#include "mlvdump/mlvdumparguments.h"
#include "runner/files.h"
#include "runner/temporarydirectory.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QUuid>

#include <chrono>

namespace filmwright {

namespace {

const QString privatePrefix = QStringLiteral("filmwright-cli-");
const QString lockSuffix = QStringLiteral(".lock");

QString text(const char *source)
{
    return QCoreApplication::translate("Workspace", source);
}

/// A lock is stale when its process is gone, never because of its age.
constexpr std::chrono::milliseconds anyAge = std::chrono::milliseconds::zero();
constexpr std::chrono::milliseconds atOnce = std::chrono::milliseconds::zero();

/// A lock that nobody holds belongs to a run that was killed.
void removeLeftovers(const QDir &folder)
{
    const QStringList locks = folder.entryList({privatePrefix + QLatin1Char('*') + lockSuffix},
                                               QDir::Files | QDir::Hidden);
    for (const QString &name : locks) {
        const QString path = folder.filePath(name);
        QLockFile lock(path);
        lock.setStaleLockTime(anyAge);
        if (lock.tryLock(atOnce))
            QDir(path.chopped(lockSuffix.size())).removeRecursively();
    }
}

} // namespace

Workspace::~Workspace()
{
    if (!m_lock || m_keep)
        return;
    if (m_chosen) {
        const QDir work(temporaryDirectory());
        for (const QLatin1String average :
             {averagedDarkName, averagedFlatName, averagedFlatDarkName, substractedFlatName})
            QFile::remove(work.filePath(average));
        QDir().rmdir(work.path()); // only when nothing unfinished is in it
    } else {
        QDir(m_privateBase).removeRecursively();
    }
    setBaseTemporaryDirectory(QString());
}

QString Workspace::open(const QString &base, bool keep)
{
    m_keep = keep;
    m_chosen = !base.isEmpty();
    return m_chosen ? openChosen(base) : openPrivate();
}

QString Workspace::openPrivate()
{
    const QDir folder(userTemporaryFolder());
    if (!createPrivateFolder(folder.path()))
        return text("the temporary folder %1 can't be created").arg(folder.path());
    removeLeftovers(folder);
    m_privateBase =
        folder.filePath(privatePrefix + QUuid::createUuid().toString(QUuid::WithoutBraces));
    QString problem = lock(m_privateBase + lockSuffix);
    if (!problem.isEmpty())
        return problem;
    if (!setBaseTemporaryDirectory(m_privateBase))
        return text("the temporary folder %1 can't be written").arg(folder.path());
    return {};
}

QString Workspace::openChosen(const QString &base)
{
    if (!setBaseTemporaryDirectory(QFileInfo(base).absoluteFilePath()))
        return text("the temporary folder %1 can't be written").arg(base);
    return lock(temporaryDirectory() + lockSuffix);
}

QString Workspace::lock(const QString &path)
{
    m_lock = std::make_unique<QLockFile>(path);
    m_lock->setStaleLockTime(anyAge);
    if (m_lock->tryLock(atOnce))
        return {};
    const bool taken = m_lock->error() == QLockFile::LockFailedError;
    m_lock.reset();
    return taken ? text("another run works in %1").arg(QFileInfo(path).path())
                 : text("the lock file %1 can't be written").arg(path);
}

} // namespace filmwright
