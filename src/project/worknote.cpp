// SPDX-License-Identifier: MIT
#include "project/worknote.h"

#include "runner/files.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

namespace filmwright {

namespace {

/// Beside the working folder, not in it: every file in that folder is taken for a part of the work.
QString notePath(const QString &workingFolder)
{
    return QDir::cleanPath(workingFolder) + QStringLiteral(".origin");
}

/// Frames are blended in place, with what all of them have in common, so that blending can't go on
/// where it stopped. None is converted before all are blended.
bool mayBeHalfBlended(const QString &workingFolder)
{
    return folderEntries(workingFolder).filter(QStringLiteral(".tiff")).isEmpty();
}

QByteArray identity(const QString &path)
{
    const QFileInfo file(path);
    return QStringLiteral("%1 %2 %3\n")
        .arg(file.size())
        .arg(file.lastModified().toMSecsSinceEpoch())
        .arg(file.canonicalFilePath())
        .toUtf8();
}

} // namespace

void claimUnfinishedWork(const WorkOrigin &origin, const QString &workingFolder)
{
    QByteArray note = identity(origin.recording);
    for (const QString &path : origin.calibration)
        note += path.isEmpty() ? QByteArrayLiteral("\n") : identity(path);
    note += origin.blended ? "blended\n" : "as recorded\n";
    QFile existing(notePath(workingFolder));
    const bool same = existing.open(QIODevice::ReadOnly) && existing.readAll() == note;
    if (same && !(origin.blended && mayBeHalfBlended(workingFolder)))
        return;
    removeFolder(workingFolder);
    createPrivateFolder(QFileInfo(existing).path());
    QSaveFile fresh(existing.fileName());
    if (fresh.open(QIODevice::WriteOnly)) {
        fresh.write(note);
        if (fresh.flush()) // commit() overlooks a failing flush of its own
            fresh.commit();
    }
}

void forgetUnfinishedWork(const QString &workingFolder)
{
    QFile::remove(notePath(workingFolder));
}

} // namespace filmwright
