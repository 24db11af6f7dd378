// SPDX-License-Identifier: MIT
#include "runner/files.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>

#include <filesystem>
#include <limits>

namespace filmwright {

/// Not QDir's list, which takes more than a kilobyte an entry while it is made: a recording has
/// thousands of frames.
QStringList folderEntries(const QString &folder)
{
    QDirIterator entry(folder,
                       QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    QStringList names;
    while (entry.hasNext()) {
        entry.next();
        names.append(entry.fileName());
    }
    names.sort();
    return names;
}

QString pathWithExtension(const QString &path, const QString &extension)
{
    const QString suffix = QFileInfo(path).suffix();
    const qsizetype dotAndSuffix = suffix.isEmpty() ? 0 : suffix.size() + 1;
    return path.chopped(dotAndSuffix) + QLatin1Char('.') + extension;
}

bool createPrivateFolder(const QString &path)
{
    const QFileInfo folder(path);
    if (folder.isDir())
        return true;
    const QString parent = folder.absolutePath();
    if (parent == folder.absoluteFilePath() || !createPrivateFolder(parent))
        return false;
    return QDir().mkdir(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner) ||
           QFileInfo(path).isDir();
}

void removeFolder(const QString &path)
{
    const QString folder = QDir::cleanPath(path); // with a separator at its end, a link is followed
    if (QFileInfo(folder).isSymLink())
        QFile::remove(folder);
    else
        QDir(folder).removeRecursively();
}

/// Not by the table of mounts, which a container or a chroot may not have.
double freeSpace(const QString &folder)
{
    QString existing = folder;
    while (!QFileInfo::exists(existing) && !QDir(existing).isRoot())
        existing = QFileInfo(existing).absolutePath();
    std::error_code error;
    const std::filesystem::space_info space =
        std::filesystem::space(QFile::encodeName(existing).toStdString(), error);
    return error ? std::numeric_limits<double>::infinity() : static_cast<double>(space.available);
}

} // namespace filmwright
