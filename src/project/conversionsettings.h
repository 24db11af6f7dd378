// SPDX-License-Identifier: MIT
#pragma once

#include "encoding/ffmpegarguments.h"
#include "encoding/recipe.h"
#include "mlvdump/frameselection.h"
#include "mlvdump/rawcorrections.h"
#include "project/moviedestination.h"

#include <QString>
#include <QStringList>

#include <optional>

namespace filmwright {

class MLVProjectController;

/// What a recording is calibrated with.
struct CalibrationChoice
{
    // The recordings that a person chose; empty: none. A dark of the flat without a flat is not
    // used.
    QString dark;
    QString flat;
    QString flatDark;

    bool isEmpty() const { return dark.isEmpty() && flat.isEmpty(); }
    /// The averages of those recordings in the temporary directory; "" without one.
    QString darkAverage() const;
    QString flatAverage() const;
    /// Whether those averages are there.
    bool isReady() const;
};

/// Some hundred frames, and little enough for any disk.
inline constexpr qint64 usualFrameBuffer = qint64(2) << 30;

/// What the conversion of a recording is asked for.
struct ConversionSettings
{
    qint32 format = MovieFormatMOV;
    qint32 quality = MovieQualityHigh;
    std::optional<Recipe> recipe; ///< in place of format and quality
    MovieDestination destination;
    CalibrationChoice calibration;
    RawCorrections corrections;
    FrameSelection frames;
    QString lut; ///< a table of colours, a .cube file, that a recipe's frames go through; or empty
    bool mergesNeighbours = false;
    bool blendsAlternatingRows = false;
    /// Bytes of the frames between reader and encoder where they flow; 0: stage by stage.
    qint64 frameBuffer = usualFrameBuffer;
    int workers = 1;                  ///< frames converted at once
    bool keepsFinishedWork = false;   ///< the working folder of a movie that is written
    bool keepsUnfinishedWork = false; ///< that of a recording without its movie, for the next run

    /// Whether frames go through all stages at the same time, as those of a recipe's movie do. Such
    /// work can't be taken up again, and leaves no frames behind.
    bool flows() const;
    /// Whether nothing of the frames and their look is chosen beside the movie's kind.
    bool isUsualDevelopment() const;
};

/// Which two choices don't go together, a sentence; empty when all do.
QString settingsError(const ConversionSettings &settings);

/// Hands a project all of the settings that are its own.
void configure(MLVProjectController &project, const ConversionSettings &settings);

} // namespace filmwright
