// SPDX-License-Identifier: MIT
#include "programrun.h"

#include <QFile>
#include <QProcess>

namespace {

constexpr int timeLimit = 60000; // milliseconds

} // namespace

bool ProgramRun::hasLineWith(const QString &text) const
{
    return !lines.filter(text).isEmpty();
}

QString builtProgram(const QString &name)
{
    return qEnvironmentVariable("FILMWRIGHT_BUILD_RESOURCES") + QLatin1Char('/') + name;
}

ProgramRun runBuilt(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(builtProgram(program), arguments);
    ProgramRun run;
    const bool ended = process.waitForFinished(timeLimit);
    auto text = QString::fromUtf8(process.readAll());
    if (text.endsWith(QLatin1Char('\n'))) {
        text.chop(1);
    }
    run.lines = text.split(QLatin1Char('\n'));
    if (ended && process.exitStatus() == QProcess::NormalExit) {
        run.status = process.exitCode();
    }
    return run;
}

QByteArray outputOf(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.start(program, arguments);
    if (!process.waitForFinished(timeLimit) || process.error() == QProcess::FailedToStart) {
        qFatal("%s cannot be run", qPrintable(program));
    }
    return process.readAllStandardOutput();
}

QString testData(const QString &name)
{
    return qEnvironmentVariable("FILMWRIGHT_TEST_DATA") + QLatin1Char('/') + name;
}

QByteArray recordingBytes(const char *name)
{
    QFile file(testData(QStringLiteral("recordings/%1.MLV").arg(QLatin1String(name))));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

qsizetype frameData(const QByteArray &recording, int place)
{
    qsizetype at = -1;
    for (int i = 0; i <= place; ++i) {
        at = recording.indexOf("VIDF", at + 1);
    }
    return at + 32;
}
