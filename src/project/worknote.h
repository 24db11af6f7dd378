// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

namespace filmwright {

struct ConversionSettings;

/// What frames are made of: the recording and its calibration, with all their files as they are
/// now, whether rows are blended, how samples are corrected, which frames they are, and how they
/// are developed.
QByteArray frameOrigin(const QString &recording, const ConversionSettings &settings);

/// Makes sure that unfinished work in the temporary directory has this origin, see frameOrigin(): a
/// working folder is named after the recording's file name alone, and another recording may have
/// that name. Other work is removed, and so are frames whose blending may have been broken off.
/// Called before a recording is extracted, in a directory that keeps unfinished work.
void claimUnfinishedWork(const QString &recording, const ConversionSettings &settings,
                         const QString &workingFolder);

/// Forgets the note of a recording whose working folder is gone.
void forgetUnfinishedWork(const QString &workingFolder);

} // namespace filmwright
