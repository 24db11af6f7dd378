// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>

namespace filmwright {

/// dcraw's arguments for one DNG: highlights rebuilt, best interpolation, the camera's white
/// balance, no automatic brightening, a TIFF beside the input, brightness of 4 times `exposure`.
/// Those of `develop` stand in front of them: of two that exclude each other the later one counts.
QStringList dcRawArguments(const QString &dngPath, float exposure, const QStringList &develop = {});

/// Where dcraw writes the frame: beside the DNG, with the extension "tiff".
QString tiffPathFor(const QString &dngPath);

} // namespace filmwright
