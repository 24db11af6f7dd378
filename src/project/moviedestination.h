// SPDX-License-Identifier: MIT
#pragma once

#include "project/moviemark.h"

#include <QString>

namespace filmwright {

struct ConversionSettings;
struct MlvMetadata;

/// What becomes of a movie that is there already.
enum class ExistingMovie {
    Replace,
    Skip, ///< one that is whole and made with the same isn't made again
    Keep, ///< the new one gets another name
};

/// Where movies go and what they are called.
struct MovieDestination
{
    QString folder; ///< empty: beside the recording
    /// Of the name without its extension: text, and {name} {date} {time} {camera} {recipe}; empty:
    /// {name}.
    QString pattern;
    ExistingMovie existing = ExistingMovie::Replace;

    /// Whether the movie's path is the same whatever the recording says and what files there are.
    bool isKnownBeforeReading() const;
};

/// What is wrong with a pattern, a sentence; empty when nothing is.
QString patternError(const QString &pattern);

/// The movie's path by format or recipe and destination. Of the metadata's texts what can't stand
/// in a file's name is replaced by "_"; what isn't known is "unknown".
QString moviePathFor(const QString &recording, const ConversionSettings &settings,
                     const MlvMetadata &metadata);

/// That path, or where it is taken the first free one of clip-2.mov, clip-3.mov …; of a folder's,
/// which has no extension, clip-2, clip-3 …
QString freeMoviePath(const QString &moviePath, MovieKind kind = MovieKind::File);

} // namespace filmwright
