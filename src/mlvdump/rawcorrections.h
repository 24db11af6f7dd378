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
    QString whiteBalance{}; ///< see isWhiteBalance(); empty: the camera's
    double exposure = 0;    ///< EV; frames are developed so much brighter

    /// Only for what is asked for.
    QStringList arguments() const;
    /// The map; empty without one.
    QString pixelMap() const;
};

/// Whether mlv_dump takes the text for a white balance beside the camera's: "auto", a colour
/// temperature from 2000 to 25000, or the multipliers of red, green and blue between commas.
bool isWhiteBalance(const QString &text);

/// The exposures that a person may choose, EV: that much less or more.
inline constexpr double mostExposure = 3;

/// "-0.5", "1", "0.333"; as it is shown and handed on.
QString exposureValueText(double exposure);

} // namespace filmwright
