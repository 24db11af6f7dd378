// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>

namespace filmwright {

/// What the frames in a working folder are made of.
struct WorkOrigin
{
    QString recording;
    QStringList calibration; ///< recordings; empty paths stand for those not given
    bool blended = false;    ///< alternating rows
};

/// Makes sure that unfinished work in the temporary directory has this origin, with the files as
/// they are now: a working folder is named after the recording's file name alone, and another
/// recording may have that name. Other work is removed, and so are frames whose blending may have
/// been broken off. Called before a recording is extracted, in
/// a directory that keeps unfinished work.
void claimUnfinishedWork(const WorkOrigin &origin, const QString &workingFolder);

/// Forgets the note of a recording whose working folder is gone.
void forgetUnfinishedWork(const QString &workingFolder);

} // namespace filmwright
