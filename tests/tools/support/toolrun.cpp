// SPDX-License-Identifier: MIT
#include "toolrun.h"

#include <QFile>

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
    const Ended ended = runProgram(builtProgram(program), arguments, {}, QProcess::MergedChannels);
    auto text = QString::fromUtf8(ended.output);
    if (text.endsWith(QLatin1Char('\n')))
        text.chop(1);
    return {text.split(QLatin1Char('\n')), ended.status};
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
    for (int i = 0; i <= place; ++i)
        at = recording.indexOf("VIDF", at + 1);
    return at + 32;
}
