// SPDX-License-Identifier: MIT
#pragma once

#include <QRect>
#include <QSize>
#include <QString>
#include <QStringList>

#include <algorithm>

namespace filmwright {

/// What the report of a recording says about it. Texts are as printed; a value whose block is
/// missing stays 0 or "".
struct MlvMetadata
{
    float fps = 0;      ///< frames a second
    float aperture = 0; ///< f-number
    quint64 videoFrames = 0;
    quint64 audioFrames = 0;
    quint64 iso = 0;
    double shutter = 0;    ///< exposure time in seconds
    int bitsPerSample = 0; ///< of the raw frames
    QString camera = QLatin1String("");
    QString cameraSerial = QLatin1String("");
    QString lens = QLatin1String("");
    QString focal = QLatin1String("");
    QString date = QLatin1String("");
    QString time = QLatin1String("");
    QString resolution = QLatin1String("");
    QString whiteBalance; ///< as the camera was set: "daylight", "5200 K"; empty: not told
    QRect activeArea;     ///< pixels; of the sensor's read-out, which may be larger than the frame
    QSize sampling; ///< columns and lines of the sensor that a sample stands for; empty: unknown
    quint64 filledFrames = 0; ///< with those that fill gaps; 0: there are no gaps

    /// Frames of a movie of the whole recording.
    quint64 movieFrames() const { return std::max(videoFrames, filledFrames); }
};

/// Reads mlv_dump's report, given as the lines it printed. The reading is positional: a block is
/// found by a line that equals its header exactly, a value stands on a fixed line after it, behind
/// that line's first colon. Missing blocks are noted in the system log.
///
/// Throws std::out_of_range when a block is cut short or a line lacks its separator; what was read
/// before that is kept in `metadata`.
void readReport(const QStringList &lines, MlvMetadata &metadata);

/// The integer at the start of the text: leading white space is skipped, the longest number is
/// taken, without one the result is 0.
qint64 leadingInteger(const QString &text);

/// The entry of a list; throws std::out_of_range where the list has none.
const QString &entryAt(const QStringList &list, qsizetype index);

} // namespace filmwright
