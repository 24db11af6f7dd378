// SPDX-License-Identifier: MIT
#include "sampleprogram.h"

#include <QProcess>
#include <QTest>

Ended runProgram(const QString &program, const QStringList &arguments, const QByteArray &input)
{
    QProcess process;
    process.start(program, arguments);
    process.write(input);
    process.closeWriteChannel();
    if (!process.waitForFinished(120000) || process.exitStatus() != QProcess::NormalExit) {
        return {-1, process.readAllStandardOutput(), process.readAllStandardError()};
    }
    return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
}

QString writeSample(const QTemporaryDir &folder, const QStringList &options, const QString &name)
{
    const QString path = folder.filePath(name);
    QStringList arguments{QStringLiteral("--size"), QStringLiteral("64x48"),
                          QStringLiteral("--frames"), QStringLiteral("3")};
    arguments << options << path;
    const Ended ended = runProgram(builtProgram(QStringLiteral("mlv_sample")), arguments);
    if (ended.status != 0) {
        QTest::qFail(ended.errors.constData(), __FILE__, __LINE__);
    }
    return path;
}
