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
    ConversionSettings settings; ///< its selection of frames is of no account
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

/// dcraw's arguments in front of the usual ones.
QStringList developOf(const FrameRequest &request);

} // namespace filmwright
