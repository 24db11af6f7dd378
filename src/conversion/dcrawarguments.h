// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>

namespace filmwright {

/// dcraw's arguments for one DNG: highlights rebuilt, best interpolation, the camera's white
/// balance, no automatic brightening, a TIFF beside the input, brightness of 4 times `exposure`.
QStringList dcRawArguments(const QString &dngPath, float exposure);

/// Where dcraw writes the frame: beside the DNG, with the extension "tiff".
QString tiffPathFor(const QString &dngPath);

} // namespace filmwright
