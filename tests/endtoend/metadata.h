// SPDX-License-Identifier: MIT
#pragma once

#include "support/programrun.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

/// What exiftool reads of a file, without groups; numbers as numbers where the options ask for
/// them.
inline QJsonObject exifOf(const QString &path, const QStringList &options = {})
{
    const QByteArray json =
        outputOf(QStringLiteral("exiftool"), options + QStringList{QStringLiteral("-j"), path});
    return QJsonDocument::fromJson(json).array().first().toObject();
}

/// A value of any kind, as it is printed.
inline QString text(const QJsonObject &object, const char *key)
{
    return object.value(QLatin1String(key)).toVariant().toString();
}
