// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace filmwright {

struct ConversionSettings;

/// Makes sure that unfinished work in the temporary directory is made of this recording and
/// calibration, with all their files as they are now, of rows that were blended or not, and of
/// frames developed as the recipe has it, as asked for: a working folder is named after the
/// recording's file name alone, and another recording may have that name. Other work is removed,
/// and so are frames whose blending may have been broken off. Called before a recording is
/// extracted, in a directory that keeps unfinished work.
void claimUnfinishedWork(const QString &recording, const ConversionSettings &settings,
                         const QString &workingFolder);

/// Forgets the note of a recording whose working folder is gone.
void forgetUnfinishedWork(const QString &workingFolder);

} // namespace filmwright
