// SPDX-License-Identifier: MIT
#pragma once

#include "cli/commandline.h"
#include "cli/progressdisplay.h"
#include "encoding/ffmpegarguments.h"

#include <QString>
#include <QStringList>

namespace filmwright {

/// What a person asked `convert` to do.
struct ConvertOptions
{
    qint32 format = MovieFormatMOV;
    qint32 quality = MovieQualityHigh;
    QString dark; ///< calibration recordings; empty: none
    QString flat;
    QString flatDark;
    bool mergesNeighbours = false;
    bool blendsAlternatingRows = false;
    QString report;        ///< where the report goes; empty: none
    QString temporaryBase; ///< empty: a private directory
    bool keepTemporary = false;
    bool quiet = false;
    ProgressStyle progress = ProgressStyle::ForPeople;
    int jobs = 1; ///< frames converted at once
    QStringList paths;
};

/// Reads the arguments after "convert". When they end the program (help was printed, or a problem
/// told), returns its exit status.
std::optional<ExitStatus> readConvertOptions(const QStringList &arguments, ConvertOptions &options);

} // namespace filmwright
