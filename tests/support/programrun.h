// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QProcess>
#include <QStringList>

/// The end of a program: its status, and what it printed.
struct Ended
{
    int status = -1; ///< -1: it crashed, did not start or did not end within two minutes
    QByteArray output;
    QByteArray errors; ///< with merged channels in `output`, too
};

/// Runs a program to its end; `input` is all it can read.
Ended runProgram(const QString &program, const QStringList &arguments, const QByteArray &input = {},
                 QProcess::ProcessChannelMode channels = QProcess::SeparateChannels);

/// What a program of the system prints on standard output; fails the test's program when there is
/// none.
QByteArray outputOf(const QString &program, const QStringList &arguments);
