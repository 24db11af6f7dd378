// SPDX-License-Identifier: MIT
#include "project/framefolder.h"

#include "conversion/tiffbitmap.h"
#include "runner/files.h"
#include "runner/wholefiles.h"
#include "runner/workingfiles.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QtEndian>

#include <algorithm>
#include <climits>
#include <cstdio>

namespace filmwright {

namespace {

QString nameOf(const QString &movie)
{
    return QFileInfo(movie).fileName();
}

/// The names of a finished folder's files.
QRegularExpression finishedNames(const QString &movie)
{
    return QRegularExpression(QRegularExpression::anchoredPattern(
        QRegularExpression::escape(nameOf(movie)) + QStringLiteral("(_[0-9]{6,}\\.dng|\\.wav)")));
}

/// The names of all that a run may have written before it died: mlv_dump's and cr2hdr's files, also
/// half-written ones, and those that had their names already.
QRegularExpression unfinishedNames(const QString &movie)
{
    return QRegularExpression(QRegularExpression::anchoredPattern(
        QStringLiteral(
            "((%1_|%2)[0-9]{6,}\\.dng(\\.part|\\.[A-Za-z0-9]{6})?|(%1|%2)\\.wav(\\.part)?)")
            .arg(QRegularExpression::escape(nameOf(movie)), extractedStem)));
}

/// mlv_dump tells in the head of each file that it wrote it.
bool isOurs(const QFileInfo &file)
{
    constexpr qint64 head = 8192;
    QFile content(file.filePath());
    return file.isFile() && !file.isSymLink() && content.open(QIODevice::ReadOnly) &&
           content.read(head).contains("Filmwright mlv_dump ");
}

/// Why the movie's place can't be taken; empty when nothing is there, or a folder with nothing but
/// frames and sound of ours.
QString placeError(const QString &movie)
{
    const QFileInfo place(movie);
    if (place.isSymLink() || (place.exists() && !place.isDir()))
        return QStringLiteral("its folder of frames can't be made: something else is at %1")
            .arg(movie);
    const QRegularExpression names = finishedNames(movie);
    const QStringList entries = folderEntries(movie);
    for (const QString &entry : entries) {
        if (!names.match(entry).hasMatch() || !isOurs(QFileInfo(QDir(movie), entry))) {
            return QStringLiteral(
                       "the folder %1 is there and isn't replaced, because \"%2\" in it was not "
                       "written by Filmwright")
                .arg(movie, entry);
        }
    }
    return {};
}

/// The names that are made of the movie's have to fit, too.
QString nameError(const QString &movie)
{
    const QString name = nameOf(movie);
    if (name.isEmpty() || name == QLatin1String(".") || name == QLatin1String(".."))
        return QStringLiteral("its folder of frames would have no name");
    const qsizetype longest =
        QFile::encodeName(name).size() + qsizetype(sizeof "_000000.dng" - 1); // as ".unfinished"
    return longest > NAME_MAX ? QStringLiteral("its name is too long for a folder of frames")
                              : QString();
}

/// Removes the files of these names and the folder when it is empty then.
void removeFiles(const QString &folder, const QRegularExpression &names)
{
    if (QFileInfo(QDir::cleanPath(folder)).isSymLink())
        return;
    const QStringList entries = folderEntries(folder).filter(names);
    for (const QString &entry : entries)
        QFile::remove(QDir(folder).filePath(entry));
    QDir().rmdir(folder);
}

bool rename(const QString &from, const QString &to)
{
    return std::rename(QFile::encodeName(from).constData(), QFile::encodeName(to).constData()) == 0;
}

QString frameName(const QString &movie, qsizetype number)
{
    return QStringLiteral("%1_%2.dng").arg(nameOf(movie)).arg(number, 6, 10, QLatin1Char('0'));
}

/// From mlv_dump's names to the movie's, in which frames are counted from 0 on.
bool nameFiles(const QString &movie)
{
    static const QRegularExpression frame(QStringLiteral("^%1[0-9]{6,}\\.dng$").arg(extractedStem));
    const QDir folder(unfinishedFolder(movie));
    const QStringList entries = folderEntries(folder.path());
    qsizetype number = 0;
    for (const QString &entry : entries.filter(frame))
        if (!rename(folder.filePath(entry), folder.filePath(frameName(movie, number++))))
            return false;
    return !entries.contains(extractedSound) ||
           rename(folder.filePath(extractedSound),
                  folder.filePath(nameOf(movie) + QStringLiteral(".wav")));
}

/// Its head tells how long it is.
bool isWholeSound(const QString &path)
{
    constexpr qint64 before = 8; // what the size of a RIFF file doesn't count
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    const QByteArray head = file.read(before);
    return head.size() == before &&
           qFromLittleEndian<quint32>(head.constData() + 4) + before == file.size();
}

} // namespace

QString unfinishedFolder(const QString &movie)
{
    return movie + QStringLiteral(".unfinished/");
}

QString makeUnfinishedFolder(const QString &movie)
{
    QString error = nameError(movie);
    if (error.isEmpty())
        error = placeError(movie);
    if (!error.isEmpty())
        return error;
    removeUnfinishedFolder(movie);
    const QString folder = QDir::cleanPath(unfinishedFolder(movie));
    if (QDir().mkdir(folder))
        return {};
    return QFileInfo::exists(folder)
               ? QStringLiteral("%1 is there and holds more than the frames of a run that died")
                     .arg(folder)
               : QStringLiteral("its folder of frames can't be made: %1").arg(folder);
}

void removeUnfinishedFolder(const QString &movie)
{
    removeFiles(unfinishedFolder(movie), unfinishedNames(movie));
}

QString finishFrameFolder(const QString &movie)
{
    // Meanwhile somebody may have put something there.
    QString error = placeError(movie);
    if (!error.isEmpty())
        return error;
    const QString folder = unfinishedFolder(movie);
    if (!nameFiles(movie) || !syncDiskOf(folder))
        return QStringLiteral("its frames could not be brought to the disk: %1")
            .arg(qt_error_string());
    removeFiles(movie, finishedNames(movie));
    if (!rename(QDir::cleanPath(folder), movie))
        return QStringLiteral("its folder of frames can't be put to %1: %2")
            .arg(movie, qt_error_string());
    return {};
}

qsizetype filesOfFolder(const QString &movie)
{
    return folderEntries(movie).filter(finishedNames(movie)).size();
}

std::optional<quint64> framesOfFolder(const QString &movie)
{
    const QDir folder(movie);
    const QRegularExpression names = finishedNames(movie);
    const QStringList entries = folderEntries(movie).filter(names);
    QStringList frames;
    for (const QString &entry : entries) {
        const QString path = folder.filePath(entry);
        const bool isSound = entry.endsWith(QLatin1String(".wav"));
        if (isSound ? !isWholeSound(path) : !TiffBitmap::isWhole(path))
            return {};
        if (!isSound)
            frames << entry;
    }
    if (frames.isEmpty() || frames.constLast() != frameName(movie, frames.size() - 1))
        return {};
    return static_cast<quint64>(frames.size());
}

} // namespace filmwright
