// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>

namespace filmwright {

/// Makes sure that unfinished work in the temporary directory belongs to this recording as it is
/// now, extracted with these calibration recordings as they are now: a working folder is named
/// after the recording's file name alone, and another recording may have that name. Other work is
/// removed. Called before a recording is extracted, in a directory that keeps unfinished work.
void claimUnfinishedWork(const QString &recording, const QStringList &calibration,
                         const QString &workingFolder);

/// Forgets the note of a recording whose working folder is gone.
void forgetUnfinishedWork(const QString &workingFolder);

} // namespace filmwright
