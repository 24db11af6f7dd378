// SPDX-License-Identifier: MIT
#pragma once

#include "encoding/encodercapabilities.h"

#include <QMap>
#include <QString>
#include <QStringList>

namespace filmwright {

/// How movies of one kind are made, in place of a format and a quality: what dcraw is told besides
/// the usual, and what ffmpeg is told of picture and sound.
struct Recipe
{
    QString id;   ///< its file's name without the extension: "prores-hq"
    QString path; ///< of its file
    QString name; ///< for people
    QString description;
    QString extension;      ///< of the movie: mov, mp4 or avi; dng: see keepsRawFrames()
    QString suffix;         ///< between the recording's name and the extension; empty: none
    QStringList develop;    ///< dcraw's arguments in front of the usual ones
    QStringList video;      ///< ffmpeg's arguments of the picture
    QStringList sound;      ///< those of the sound; empty: the movie is silent
    bool fastStart = false; ///< a movie that plays while it is still being loaded

    bool operator==(const Recipe &) const = default;

    /// Whether nothing is developed: the movie is a folder of raw frames and their sound.
    bool keepsRawFrames() const;
    bool developsSixteenBits() const;
    /// Whether a developed frame has half the width and half the height.
    bool developsHalfSize() const;
    /// The encoders' names; that of the sound is empty when the movie is silent.
    QString videoEncoder() const;
    QString soundEncoder() const;
    /// The pixel format that it asks for; empty when it leaves that to the encoder.
    QString pixelFormat() const;
    /// Whether the movie's samples are red, green and blue, which need no matrix.
    bool keepsRgb() const;
};

/// A recipe as its file has it, and why it can't be used: a sentence that begins with file and
/// line. Of a recipe with an error only id and path, and whatever else could be read, are known.
struct RecipeFile
{
    Recipe recipe;
    QString error; ///< empty: none
};

/// Reads a recipe's file, whatever it holds. Needs no ffmpeg. Any thread.
RecipeFile readRecipe(const QString &path);

/// Which of the recipe's encoders ffmpeg lacks, going by the lists that FFmpegTask::readEncoders()
/// answers: a sentence, or an empty string. Raw frames need none.
QString encoderError(const QMap<QString, CapabilityList> &encoders, const Recipe &recipe);

/// Why the recipe's encoder doesn't take its pixel format, going by those that it takes, which
/// aren't known where there are none: a sentence, or an empty string.
QString pixelFormatError(const QStringList &supported, const Recipe &recipe);

/// Beside the recording: clip.MLV gives clip.mov, with the suffix ".draft" clip.draft.mov, and the
/// folder clip where raw frames are kept.
QString moviePathFor(const QString &mlvPath, const Recipe &recipe);

} // namespace filmwright
