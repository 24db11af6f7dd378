// SPDX-License-Identifier: MIT
#include "runner/temporarydirectory.h"

#include "runner/files.h"

#include <QDir>
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

} // namespace

QString userTemporaryFolder()
{
    QString chosen = qEnvironmentVariable("TMPDIR");
    if (!chosen.isEmpty() && isOwnAndClosed(chosen))
        return chosen;
    return QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation);
}

QString temporaryDirectory()
{
    if (!storedBase().isNull())
        return QDir(storedBase()).filePath(QStringLiteral("FilmwrightTmp"));
    return QDir(userTemporaryFolder()).filePath(QStringLiteral("Filmwright"));
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

} // namespace filmwright
