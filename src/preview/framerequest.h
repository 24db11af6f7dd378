// SPDX-License-Identifier: MIT
#pragma once

#include "project/conversionsettings.h"

#include <QByteArray>
#include <QString>

namespace filmwright {

/// One frame of a recording, and how it is to look.
struct FrameRequest
{
    enum Quality {
        AsInMovie, ///< the pixels of the finished frame
        Quick,     ///< without what has to be measured in the whole recording first
        Small,     ///< quick, half as wide and high
    };

    QString recording;           ///< absolute path
    quint64 frame = 1;           ///< of the whole movie, from 1; gaps that are filled are counted
    ConversionSettings settings; ///< any frame can be asked for, whatever it selects
    Quality quality = AsInMovie;
};

/// Tells a frame's pixels from those of any other request, and of files that have changed since.
QByteArray identityOf(const FrameRequest &request);

/// The same for all frames of a recording that look alike.
QByteArray lookOf(const FrameRequest &request);

/// What mlv_dump is asked for. A request that is quick leaves out what it would have to measure.
RawCorrections correctionsOf(const FrameRequest &request);

/// Whether something has to be measured in the whole recording first.
bool needsMeasuring(const FrameRequest &request);

/// The frames for which it is measured. Rows are blended by what the frames of the movie have in
/// common, other frames as in a movie of all; everything else is the same for any selection.
FrameSelection surveyedFrames(const FrameRequest &request);

/// Tells what is measured for a request from what is measured for others.
QByteArray surveyOf(const FrameRequest &request);

/// dcraw's arguments in front of the usual ones.
QStringList developOf(const FrameRequest &request);

} // namespace filmwright
