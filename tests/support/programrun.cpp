// SPDX-License-Identifier: MIT
#include "support/programrun.h"

Ended runProgram(const QString &program, const QStringList &arguments, const QByteArray &input,
                 QProcess::ProcessChannelMode channels)
{
    constexpr int timeLimit = 120000; // milliseconds
    QProcess process;
    process.setProcessChannelMode(channels);
    process.start(program, arguments);
    process.write(input);
    process.closeWriteChannel();
    const bool ended = process.waitForFinished(timeLimit) &&
                       process.error() != QProcess::FailedToStart &&
                       process.exitStatus() == QProcess::NormalExit;
    return {ended ? process.exitCode() : -1, process.readAllStandardOutput(),
            process.readAllStandardError()};
}

QByteArray outputOf(const QString &program, const QStringList &arguments)
{
    const Ended ended = runProgram(program, arguments);
    if (ended.status < 0)
        qFatal("%s can't be run", qPrintable(program));
    return ended.output;
}
