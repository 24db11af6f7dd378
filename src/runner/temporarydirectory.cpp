// SPDX-License-Identifier: MIT
#include "runner/temporarydirectory.h"

#include "runner/files.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QStandardPaths>

#include <sys/stat.h>
#include <unistd.h>

namespace filmwright {

namespace {

QString &storedBase()
{
    static QString base;
    return base;
}

bool isOwnAndClosed(const QString &folder)
{
    struct stat status = {};
    return stat(QFile::encodeName(folder).constData(), &status) == 0 && S_ISDIR(status.st_mode) &&
           status.st_uid == geteuid() && (status.st_mode & (S_IRWXG | S_IRWXO)) == 0;
}

void removeLinks(const QString &folder)
{
    QDirIterator entries(folder,
                         QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                         QDirIterator::Subdirectories);
    while (entries.hasNext()) {
        const QString path = entries.next();
        if (entries.fileInfo().isSymLink())
            QFile::remove(path);
    }
}

} // namespace

QString userTemporaryFolder()
{
    QString chosen = qEnvironmentVariable("TMPDIR");
    if (!chosen.isEmpty() && isOwnAndClosed(chosen))
        return chosen;
    return QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation);
}

QString fastTemporaryFolder(qint64 bytes)
{
    const QString inMemory = qEnvironmentVariable("XDG_RUNTIME_DIR");
    const bool suits = !inMemory.isEmpty() && isOwnAndClosed(inMemory) &&
                       freeSpace(inMemory) >= static_cast<double>(bytes);
    return suits ? inMemory : userTemporaryFolder();
}

QString temporaryDirectoryIn(const QString &base)
{
    return base.isEmpty() ? QString() : QDir(base).filePath(QStringLiteral("FilmwrightTmp"));
}

QString temporaryDirectory()
{
    if (!storedBase().isNull())
        return temporaryDirectoryIn(storedBase());
    return QDir(userTemporaryFolder()).filePath(QStringLiteral("Filmwright"));
}

QString inTemporaryDirectory(const QString &name)
{
    return QDir(temporaryDirectory()).filePath(name);
}

QString baseTemporaryDirectory()
{
    return storedBase();
}

bool setBaseTemporaryDirectory(const QString &path)
{
    if (!path.isNull()) {
        createPrivateFolder(path);
        const QFileInfo base(path);
        if (!base.isDir() || !base.isWritable())
            return false;
    }
    storedBase() = path;
    return true;
}

QString prepareTemporaryDirectory()
{
    const QString directory = temporaryDirectory();
    const QByteArray path = QFile::encodeName(directory);
    if (!createPrivateFolder(QFileInfo(directory).absolutePath()))
        return QStringLiteral("the temporary directory %1 can't be created").arg(directory);
    if (mkdir(path.constData(), S_IRWXU) == 0)
        return {};
    struct stat status = {};
    if (lstat(path.constData(), &status) != 0)
        return QStringLiteral("the temporary directory %1 can't be created").arg(directory);
    if (!S_ISDIR(status.st_mode))
        return QStringLiteral("the temporary directory %1 is a link or a file").arg(directory);
    // On disks without owners everything is the administrator's.
    if (status.st_uid != geteuid() && status.st_uid != 0)
        return QStringLiteral("the temporary directory %1 belongs to another user").arg(directory);
    chmod(path.constData(), S_IRWXU);
    removeLinks(directory);
    return {};
}

} // namespace filmwright
