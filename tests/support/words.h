// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>

/// The words between the spaces, for lists of arguments.
inline QStringList words(const QString &text)
{
    return text.split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

inline QStringList words(const char *text)
{
    return words(QString::fromUtf8(text));
}
