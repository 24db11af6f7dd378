// SPDX-License-Identifier: MIT
#include "runner/wholefiles.h"

#include <QFile>
#include <QSaveFile>

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace filmwright {

namespace {

bool syncAt(const QString &path, bool (*sync)(int descriptor))
{
    const int descriptor = open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0)
        return false;
    const bool synced = sync(descriptor);
    const int error = errno;
    close(descriptor);
    errno = error;
    return synced;
}

} // namespace

bool commitFile(QSaveFile &file)
{
    return file.flush() && file.commit();
}

QString writeFile(const QString &path, const QByteArray &content)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return file.errorString();
    errno = 0;
    if (file.write(content) == content.size() && commitFile(file))
        return {};
    // Qt has no words for a write that ends in the middle, as on a disk that is full.
    return errno == 0 ? file.errorString() : qt_error_string(errno);
}

bool syncFile(int descriptor)
{
    return fsync(descriptor) == 0 || errno == EINVAL;
}

bool syncFile(const QString &path)
{
    return syncAt(path, syncFile);
}

bool syncDiskOf(const QString &folder)
{
    return syncAt(folder, [](int descriptor) { return syncfs(descriptor) == 0; });
}

void syncFolder(const QString &folder)
{
    static_cast<void>(syncFile(folder));
}

} // namespace filmwright
