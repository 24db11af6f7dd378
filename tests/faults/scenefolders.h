// SPDX-License-Identifier: MIT
#pragma once

#include <QDir>
#include <QDirIterator>
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

inline qint64 shareOf(qint64 bytes, double share)
{
    return static_cast<qint64>(share * static_cast<double>(bytes));
}

/// Of all files in it.
inline qint64 sizeOf(const QString &folder)
{
    qint64 bytes = 0;
    QDirIterator files(folder, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        files.next();
        bytes += files.fileInfo().size();
    }
    return bytes;
}
