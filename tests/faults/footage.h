// SPDX-License-Identifier: MIT
#pragma once

#include "endtoend/sample.h"
#include "scenefolders.h"

#include <QTemporaryDir>
#include <QTest>

/// A number from the environment, or the usual one.
inline int setting(const char *variable, int usual)
{
    return qEnvironmentVariableIsSet(variable) ? qEnvironmentVariableIntValue(variable) : usual;
}

/// The bytes of a small sample recording; `options` are mlv_sample's.
inline QByteArray sample(const QString &options)
{
    const QTemporaryDir folder;
    const QString clip = folder.filePath(QStringLiteral("clip.MLV"));
    [&] { QVERIFY(writeSample(clip, QStringLiteral("--size 128x72 ") + options)); }();
    return readFile(clip);
}
