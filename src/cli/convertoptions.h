// SPDX-License-Identifier: MIT
#pragma once

#include "cli/commandline.h"
#include "cli/progressdisplay.h"
#include "project/conversionsettings.h"

#include <QString>
#include <QStringList>

namespace filmwright {

/// What a person asked `convert` to do.
struct ConvertOptions
{
    ConversionSettings settings;
    QString report;        ///< where the report goes; empty: none
    QString temporaryBase; ///< empty: a private directory
    bool keepTemporary = false;
    bool quiet = false;
    ProgressStyle progress = ProgressStyle::ForPeople;
    QStringList paths;
};

/// Reads the arguments after "convert". When they end the program (help was printed, or an error
/// told), returns its exit status.
std::optional<ExitStatus> readConvertOptions(const QStringList &arguments, ConvertOptions &options);

} // namespace filmwright
