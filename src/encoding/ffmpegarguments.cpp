// SPDX-License-Identifier: MIT
#include "encoding/ffmpegarguments.h"

#include "runner/files.h"

namespace filmwright {

namespace {

QStringList videoCodec(qint32 format, qint32 quality)
{
    const bool maximum = quality == MovieQualityMaximum;
    if (format == MovieFormatAVI) {
        return maximum ? QStringList{QStringLiteral("rawvideo")}
                       : QStringList{QStringLiteral("mpeg4"), QStringLiteral("-qscale:v"),
                                     QStringLiteral("1")};
    }
    // Quantiser 1, not 0: with 0, H.264 turns lossless and few players show it.
    return {QStringLiteral("h264"), QStringLiteral("-qp"),
            maximum ? QStringLiteral("1") : QStringLiteral("17")};
}

/// The frames' names as ffmpeg's sequence pattern. A "%" in the folder's name, which is that of the
/// recording, is no part of the pattern.
QString framePattern(QString directory)
{
    return directory.replace(QLatin1String("%"), QLatin1String("%%")) +
           QStringLiteral("tmp%06d.tiff");
}

} // namespace

QString moviePathFor(const QString &mlvPath, qint32 format)
{
    return pathWithExtension(mlvPath,
                             movieExtensions.value(format, movieExtensions.at(MovieFormatMOV)));
}

QStringList movieArguments(const MovieSources &sources, qint32 format, qint32 quality,
                           const QString &moviePath)
{
    QStringList arguments{QStringLiteral("-r"),
                          QString::number(static_cast<double>(sources.fps), 'f', 2),
                          QStringLiteral("-i"), framePattern(sources.tiffsDirectory)};
    if (!sources.soundPath.isEmpty()) {
        arguments << QStringLiteral("-i") << sources.soundPath;
        if (format == MovieFormatAVI)
            arguments << QStringLiteral("-c:a") << QStringLiteral("pcm_s16le");
    }
    arguments << QStringLiteral("-pix_fmt") << QStringLiteral("yuv420p")
              << QStringLiteral("-vcodec") << videoCodec(format, quality) << moviePath;
    return arguments;
}

} // namespace filmwright
