// SPDX-License-Identifier: MIT
#include "cli/workspace.h"

#include "mlvdump/mlvdumparguments.h"
#include "runner/files.h"
#include "runner/temporarydirectory.h"

#include <QDir>
#include <QFileInfo>
#include <QUuid>

namespace filmwright {

namespace {

const QString privatePrefix = QStringLiteral("filmwright-cli-");

/// Every run makes its own.
void removeAverages()
{
    for (const QLatin1String average :
         {averagedDarkName, averagedFlatName, averagedFlatDarkName, substractedFlatName})
        QFile::remove(inTemporaryDirectory(average));
}

} // namespace

Workspace::~Workspace()
{
    if (!m_lock.isHeld() || m_keep)
        return;
    if (!m_chosen) {
        removeFolder(m_privateBase);
    } else if (m_prepared) {
        removeAverages();
        QDir().rmdir(temporaryDirectory()); // only when nothing unfinished is in it
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
        return QStringLiteral("the temporary folder %1 can't be created").arg(folder.path());
    removeAbandonedDirectories(folder.path(), privatePrefix);
    m_privateBase =
        folder.filePath(privatePrefix + QUuid::createUuid().toString(QUuid::WithoutBraces));
    QString error = m_lock.take(m_privateBase);
    if (!error.isEmpty())
        return error;
    if (!setBaseTemporaryDirectory(m_privateBase))
        return QStringLiteral("the temporary folder %1 can't be written").arg(folder.path());
    return prepareTemporaryDirectory();
}

QString Workspace::openChosen(const QString &base)
{
    if (!setBaseTemporaryDirectory(QFileInfo(base).absoluteFilePath()))
        return QStringLiteral("the temporary folder %1 can't be written").arg(base);
    QString error = m_lock.take(temporaryDirectory());
    if (error.isEmpty())
        error = prepareTemporaryDirectory();
    m_prepared = error.isEmpty();
    if (m_prepared)
        removeAverages(); // of a run that was killed
    return error;
}

} // namespace filmwright
