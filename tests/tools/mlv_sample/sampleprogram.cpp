// SPDX-License-Identifier: MIT
#include "sampleprogram.h"

#include <QTest>

QString writeSample(const QTemporaryDir &folder, const QStringList &options, const QString &name)
{
    const QString path = folder.filePath(name);
    QStringList arguments{QStringLiteral("--size"), QStringLiteral("64x48"),
                          QStringLiteral("--frames"), QStringLiteral("3")};
    arguments << options << path;
    const Ended ended = runProgram(builtProgram(QStringLiteral("mlv_sample")), arguments);
    if (ended.status != 0)
        QTest::qFail(ended.errors.constData(), __FILE__, __LINE__);
    return path;
}
