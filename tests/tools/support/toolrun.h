// SPDX-License-Identifier: MIT
#pragma once

#include "support/programrun.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

/// The end of a tool: what it printed on both channels, in order, and its status.
struct ProgramRun
{
    QStringList lines;
    int status = -1; ///< -1: it crashed, did not start or did not end in time

    bool hasLineWith(const QString &text) const;
    /// The lines from the one before the last on.
    QStringList lastTwoLines() const { return lines.mid(lines.size() - 2); }
};

/// The path of a program of the build's resources folder, "mlv_dump" for example.
QString builtProgram(const QString &name);

/// Runs a program of the build's resources folder.
ProgramRun runBuilt(const QString &program, const QStringList &arguments);

/// The path of a file of the tests' data.
QString testData(const QString &name);
/// What a recording of the tests' data holds, by its name without the extension.
QByteArray recordingBytes(const char *name);

/// Where in a recording the data of its frame with that place in the file start.
qsizetype frameData(const QByteArray &recording, int place);
