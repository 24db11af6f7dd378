// SPDX-License-Identifier: MIT
#pragma once

#include "mlvdump/frameselection.h"

#include <QString>
#include <QStringList>

namespace filmwright {

// The argument lists of mlv_dump's runs. `directory` always ends with a path separator.

QStringList metaArguments(const QString &mlvPath);

/// Frames from `index` on, or those of a selection, written as `directory` + "tmp%06d.dng". Empty
/// calibration paths are left out; `more` are further options. Throws std::invalid_argument when
/// `mlvPath` is null.
QStringList frameArguments(const QString &mlvPath, qint64 index, const QString &darkPath,
                           const QString &flatPath, const QString &directory,
                           const QStringList &more = {}, const FrameSelection &selection = {});

/// All frames of `recording` averaged into the one-frame recording `output`.
QStringList averageArguments(const QString &recording, const QString &output);

/// The averaged flat less the averaged dark of the flat, both in `directory`.
QStringList flatDarkSubstractionArguments(const QString &directory);

// The averaged calibration recordings, as file names in the extraction directory.
inline constexpr QLatin1String averagedDarkName("dark.mlv");
inline constexpr QLatin1String averagedFlatName("flat.mlv");
inline constexpr QLatin1String averagedFlatDarkName("flat_dark.mlv");
inline constexpr QLatin1String substractedFlatName("flat-flat_dark.mlv");

/// The name of frame file `number`.
QString frameName(quint64 number);

} // namespace filmwright
