// SPDX-License-Identifier: MIT
#pragma once

#include "encoding/ffmpegarguments.h"
#include "encoding/recipe.h"

namespace filmwright {

/// What a movie tells of its recording; what isn't known is empty and left out.
struct MovieFacts
{
    QString timecode;     ///< of the first frame: "14:30:02:00"
    QString creationTime; ///< "2026-05-01T14:30:02Z"
    QString make;
    QString model;
    QString comment; ///< lens, aperture, sensitivity, exposure time
    QString reel;
};

/// A movie by a recipe.
struct RecipeMovie
{
    Recipe recipe;
    MovieFacts facts;
    quint64 frames = 0;
    QString lut; ///< a table of colours that the frames go through, a .cube file; empty: none
};

/// ffmpeg's arguments for a movie by a recipe: the exact rate, the matrix, range and tags of BT.709
/// (an RGB movie has the samples as they are), sound of the picture's length to the sample. A file
/// without a sample rate in its header is taken as it is.
QStringList recipeArguments(const RecipeMovie &movie, const MovieSources &sources,
                            const QString &moviePath);

} // namespace filmwright
