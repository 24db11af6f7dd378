// SPDX-License-Identifier: MIT
#pragma once

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QString>

#include <chrono>

// What is where in a scene.
inline const QString clipName = QStringLiteral("footage/clip.MLV");
inline const QString footageName = QStringLiteral("footage");
inline const QString darkFolderName = QStringLiteral("calibration");
inline const QString darkName = QStringLiteral("calibration/dark.MLV");
inline const QString temporaryName = QStringLiteral("temporary");
inline const QString reportName = QStringLiteral("report.json");
inline const QString sanitizerLogName = QStringLiteral("sanitizer");

inline std::chrono::milliseconds elapsed(const QElapsedTimer &timer)
{
    return std::chrono::milliseconds(timer.elapsed());
}

inline QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

inline QStringList entries(const QString &folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System |
                                  QDir::NoDotAndDotDot);
}
