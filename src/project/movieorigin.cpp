// SPDX-License-Identifier: MIT
#include "project/movieorigin.h"

#include "encoding/finishedmovie.h"
#include "project/framefolder.h"
#include "project/moviemark.h"
#include "project/recordingfiles.h"
#include "project/worknote.h"

#include <QCryptographicHash>
#include <QFile>
#include <QFileInfo>

#include <sys/xattr.h>

namespace filmwright {

namespace {

constexpr char attribute[] = "user.filmwright.origin";

/// Empty where there is none.
QByteArray notedOrigin(const QString &movie)
{
    constexpr qsizetype longest = 128;
    QByteArray noted(longest, '\0');
    const ssize_t size =
        getxattr(QFile::encodeName(movie).constData(), attribute, noted.data(), longest);
    return noted.left(size < 0 ? 0 : size);
}

/// A folder that has lost its last frames, or its sound, is not what it was made as.
QByteArray contentOf(const QString &movie)
{
    return QFileInfo(movie).isDir() ? ' ' + QByteArray::number(filesOfFolder(movie)) : QByteArray();
}

std::optional<quint64> framesOf(const QString &movie)
{
    return QFileInfo(movie).isDir() ? framesOfFolder(movie) : framesOfFinishedMovie(movie);
}

} // namespace

QByteArray movieOrigin(const QString &recording, const ConversionSettings &settings)
{
    QByteArray choices = frameOrigin(recording, settings);
    choices += settings.mergesNeighbours ? "merged\n" : "single\n";
    if (!settings.lut.isEmpty())
        choices += "colours " + recordingIdentity(settings.lut);
    if (settings.recipe) {
        const Recipe &recipe = *settings.recipe;
        const QStringList words =
            recipe.video + QStringList{QString()} + recipe.sound + QStringList{recipe.extension};
        choices += words.join(QChar(0)).toUtf8() + (recipe.fastStart ? "fast\n" : "\n");
    } else {
        choices += QByteArray::number(settings.format) + ' ' + QByteArray::number(settings.quality);
    }
    return QCryptographicHash::hash(choices, QCryptographicHash::Sha256).toHex();
}

void noteOrigin(const QString &movie, const QByteArray &origin)
{
    const QByteArray note = origin + contentOf(movie);
    setxattr(QFile::encodeName(movie).constData(), attribute, note.constData(),
             static_cast<std::size_t>(note.size()), 0);
}

bool isFinishedMovie(const QString &movie, const QByteArray &origin, std::optional<quint64> frames)
{
    if (QFileInfo::exists(MovieMark::pathFor(movie)))
        return false; // another run writes it, or has died over it
    const auto finished = framesOf(movie);
    const QByteArray noted = notedOrigin(movie);
    return finished &&
           (noted.isEmpty() ? frames && *finished >= *frames : noted == origin + contentOf(movie));
}

} // namespace filmwright
