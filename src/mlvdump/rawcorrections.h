// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>

namespace filmwright {

/// What mlv_dump is asked to do to frames beside their calibration, each in the words of its own
/// options; nothing is asked for by default.
struct RawCorrections
{
    QString whiteLevel;  ///< a level or "recorded"; empty: mlv_dump judges
    QString blackLevel;  ///< likewise
    QString matrix;      ///< "recorded"; empty: mlv_dump judges
    QString pixelRepair; ///< "auto" or the absolute path of a map; empty: none
    bool repairsColumns = false;

    /// Only for what is asked for.
    QStringList arguments() const;
    /// The map; empty without one.
    QString pixelMap() const;
};

} // namespace filmwright
