// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

/// The whole file; nothing when it can't be read.
QByteArray contentOf(const QString &path);

/// Makes the file, or replaces what is in it; the test fails where that can't be done.
void setContent(const QString &path, const QByteArray &content);
