// SPDX-License-Identifier: MIT
#pragma once

#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

namespace filmwright {

/// One pixel format ("NAME", "NB_COMPONENTS", "BITS_PER_PIXEL") or encoder ("NAME", "TITLE").
using CapabilityRecord = QMap<QString, QString>;
using CapabilityList = QList<CapabilityRecord>;

// What ffmpeg prints of its pixel formats and encoders, line by line, as records in its order.
// Lines that can't be read are noted in the system log and left out.

/// "BITS_PER_PIXEL" holds the number of components too.
CapabilityList pixFmtsIn(const QStringList &lines);
CapabilityList videoEncodersIn(const QStringList &lines);
CapabilityList audioEncodersIn(const QStringList &lines);

/// What "ffmpeg -h encoder=NAME" tells of the pixel formats that an encoder takes; nothing where it
/// doesn't tell.
QStringList supportedPixFmtsIn(const QStringList &lines);

/// Runs of blanks become one; white space at both ends goes.
QString removeExcessWhitespace(const QString &text);

} // namespace filmwright
