// SPDX-License-Identifier: MIT
#include "project/worknote.h"

#include "project/conversionsettings.h"
#include "project/recordingfiles.h"
#include "runner/files.h"
#include "runner/wholefiles.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

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

/// Nothing where nothing is asked for.
QByteArray correctionsNote(const RawCorrections &corrections)
{
    QByteArray note;
    for (const QString &argument : corrections.arguments())
        note += argument.toUtf8() + '\n';
    if (const QString map = corrections.pixelMap(); !map.isEmpty())
        note += recordingIdentity(map);
    return note;
}

} // namespace

QByteArray frameOrigin(const QString &recording, const ConversionSettings &settings)
{
    QByteArray origin = recordingIdentity(recording);
    const CalibrationChoice &calibration = settings.calibration;
    for (const QString &path : {calibration.dark, calibration.flat, calibration.flatDark})
        origin += path.isEmpty() ? QByteArrayLiteral("\n") : recordingIdentity(path);
    origin += settings.blendsAlternatingRows ? "blended\n" : "as recorded\n";
    origin += correctionsNote(settings.corrections);
    if (!settings.frames.isWhole())
        origin += "frames " + settings.frames.text().toUtf8() + '\n';
    if (settings.recipe && !settings.recipe->develop.isEmpty())
        origin += "developed " + settings.recipe->develop.join(QLatin1Char(' ')).toUtf8() + '\n';
    return origin;
}

void claimUnfinishedWork(const QString &recording, const ConversionSettings &settings,
                         const QString &workingFolder)
{
    const QByteArray note = frameOrigin(recording, settings);
    QFile existing(notePath(workingFolder));
    const bool same = existing.open(QIODevice::ReadOnly) && existing.readAll() == note;
    if (same && !(settings.blendsAlternatingRows && mayBeHalfBlended(workingFolder)))
        return;
    removeFolder(workingFolder);
    createPrivateFolder(QFileInfo(existing).path());
    static_cast<void>(writeFile(existing.fileName(), note)); // without it the work begins anew
}

void forgetUnfinishedWork(const QString &workingFolder)
{
    QFile::remove(notePath(workingFolder));
}

} // namespace filmwright
