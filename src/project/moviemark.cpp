// SPDX-License-Identifier: MIT
#include "project/moviemark.h"

#include "encoding/recipe.h"
#include "runner/wholefiles.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace filmwright {

namespace {

/// What a mark says that could not be removed, although its movie is whole.
constexpr char whole[] = "whole";

bool saysWhole(int descriptor)
{
    char content[sizeof whole] = {};
    return pread(descriptor, content, sizeof whole, 0) == sizeof whole &&
           QByteArrayView(content) == whole;
}

/// Without waiting. Returns what hinders it; file systems without locks let everyone in.
QString lock(int descriptor)
{
    struct stat status = {};
    if (fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode))
        return QStringLiteral("something else has the name of the mark of its unfinished movie");
    if (flock(descriptor, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK)
        return QStringLiteral("its movie is being written by another run");
    return {};
}

/// Whether the descriptor is still the file of that name: its last owner may have removed it
/// between our opening and our locking it.
bool isStillAt(int descriptor, const QByteArray &path)
{
    struct stat open = {};
    struct stat there = {};
    return fstat(descriptor, &open) == 0 && lstat(path.constData(), &there) == 0 &&
           open.st_dev == there.st_dev && open.st_ino == there.st_ino;
}

/// Never follows a link that someone planted in the movie's folder, never waits for a pipe.
int openMark(const QByteArray &path, int flags)
{
    return open(path.constData(), O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC | flags,
                S_IRUSR | S_IWUSR | S_IRGRP | S_IROTH);
}

} // namespace

MovieKind movieKindOf(const std::optional<Recipe> &recipe)
{
    return recipe && recipe->keepsRawFrames() ? MovieKind::Folder : MovieKind::File;
}

QString MovieMark::pathFor(const QString &moviePath)
{
    const QFileInfo movie(moviePath);
    QString name = QStringLiteral(".%1.unfinished").arg(movie.fileName());
    if (QFile::encodeName(name).size() > NAME_MAX) {
        const QByteArray hash = QCryptographicHash::hash(QFile::encodeName(movie.fileName()),
                                                         QCryptographicHash::Sha256);
        name = QStringLiteral(".%1.unfinished").arg(QString::fromLatin1(hash.toHex()));
    }
    return movie.dir().filePath(name);
}

QString MovieMark::clear(const QString &moviePath, MovieKind kind)
{
    const QByteArray path = QFile::encodeName(pathFor(moviePath));
    const int descriptor = openMark(path, 0);
    if (descriptor >= 0) {
        QString error = lock(descriptor);
        if (error.isEmpty() && isStillAt(descriptor, path)) {
            if (kind == MovieKind::File && !saysWhole(descriptor))
                QFile::remove(moviePath);
            unlink(path.constData());
        }
        close(descriptor);
        if (!error.isEmpty())
            return error;
    } else if (errno != ENOENT) {
        return QStringLiteral("the mark of its unfinished movie can't be read: %1")
            .arg(qt_error_string());
    }
    if (kind == MovieKind::File && QFileInfo(moviePath).isDir())
        return QStringLiteral("a folder has the name of its movie");
    const QByteArray folder = QFile::encodeName(QFileInfo(moviePath).path());
    if (faccessat(AT_FDCWD, folder.constData(), W_OK | X_OK, AT_EACCESS) != 0)
        return QStringLiteral("the folder of its movie can't be written: %1")
            .arg(qt_error_string());
    return {};
}

MovieMark::MovieMark(const QString &moviePath)
    : m_moviePath(moviePath)
{
}

MovieMark::~MovieMark()
{
    if (m_descriptor >= 0)
        close(m_descriptor);
}

QString MovieMark::set()
{
    const QByteArray path = QFile::encodeName(pathFor(m_moviePath));
    for (;;) {
        m_descriptor = openMark(path, O_CREAT);
        if (m_descriptor < 0)
            return QStringLiteral("its movie can't be written: %1").arg(qt_error_string());
        QString error = lock(m_descriptor);
        if (error.isEmpty() && isStillAt(m_descriptor, path))
            return keep();
        close(m_descriptor);
        m_descriptor = -1;
        if (!error.isEmpty())
            return error;
    }
}

/// Before the movie's first byte, so that a power failure can't leave the one without the other.
QString MovieMark::keep()
{
    if (ftruncate(m_descriptor, 0) == 0 && syncFile(m_descriptor)) {
        syncFolder(QFileInfo(m_moviePath).path());
        return {};
    }
    QString error = QStringLiteral("its movie can't be written: %1").arg(qt_error_string());
    remove();
    return error;
}

void MovieMark::remove()
{
    if (m_descriptor < 0)
        return;
    // In this order: nobody can take the file for a dead run's.
    unlink(QFile::encodeName(pathFor(m_moviePath)).constData());
    close(m_descriptor);
    m_descriptor = -1;
}

QString MovieMark::settle()
{
    if (!syncFile(m_moviePath))
        return QStringLiteral("its movie could not be brought to the disk: %1")
            .arg(qt_error_string());
    syncFolder(QFileInfo(m_moviePath).path());
    // Should the folder have been closed meanwhile, the mark stays and has to say so.
    const QByteArray path = QFile::encodeName(pathFor(m_moviePath));
    if (unlink(path.constData()) != 0 &&
        pwrite(m_descriptor, whole, sizeof whole, 0) != sizeof whole)
        return QStringLiteral("the mark of its movie can't be removed: %1").arg(qt_error_string());
    close(m_descriptor);
    m_descriptor = -1;
    return {};
}

} // namespace filmwright
