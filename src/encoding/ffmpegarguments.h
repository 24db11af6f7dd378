// SPDX-License-Identifier: MIT
#pragma once

#include <QSize>
#include <QString>
#include <QStringList>

#include <optional>

namespace filmwright {

/// Container and codec family; any value but 0 acts as MovieFormatMOV.
enum MovieFormat : qint32 {
    MovieFormatAVI = 0,
    MovieFormatMOV = 1,
};

/// The extensions of the formats' movies, in the order of MovieFormat.
QStringList movieExtensions();

/// Quality within the format; any value but 0 acts as MovieQualityHigh.
enum MovieQuality : qint32 {
    MovieQualityMaximum = 0,
    MovieQualityHigh = 1,
};

/// What a movie of format and quality is, for a person, and what it takes where that is known.
QString movieDescription(qint32 format, qint32 quality);

/// The bytes that each pixel of a raw movie takes; 0 for one that is compressed.
double rawBytesOfPixel(qint32 format, qint32 quality);

/// What encoding a megapixel takes of one core, for estimates.
double encodingSecondsOfMegapixel(qint32 format, qint32 quality);

/// Whether its frames may be of an odd width or height.
bool holdsOddSides(qint32 format);

/// Red, green and blue samples in the machine's byte order, frame by frame, without anything
/// between them.
struct RawVideo
{
    QSize size;
    int bitsPerSample = 8;          ///< or 16
    bool tellsSquarePixels = false; ///< as a TIFF with equal resolutions does

    bool operator==(const RawVideo &) const = default;
};

/// What a movie is made of.
struct MovieSources
{
    QString tiffsDirectory; ///< ends with a path separator; holds tmp%06d.tiff from 0 on
    QString soundPath;      ///< empty: a movie without sound
    float fps = 0;          ///< frames a second
    std::optional<RawVideo> video = {}; ///< on the standard input, in place of the TIFFs
};

/// The recording's path with the extension of the format.
QString moviePathFor(const QString &mlvPath, qint32 format);

/// The frames of a directory, which ends with a path separator, as ffmpeg's sequence pattern.
QString framePattern(QString directory);

/// ffmpeg's arguments for building the movie. A directory without its trailing separator is glued
/// to the frame pattern.
QStringList movieArguments(const MovieSources &sources, qint32 format, qint32 quality,
                           const QString &moviePath);

} // namespace filmwright
