// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QList>
#include <QString>
#include <QStringList>

/// Writes a small sample recording; `options` are mlv_sample's.
bool writeSample(const QString &path, const QString &options);

/// What ffprobe says of a movie, its frames counted by decoding them.
struct Movie
{
    QJsonObject video;
    QList<QJsonObject> sound;

    static Movie probe(const QString &path);
    int frames() const;
};

/// The luma of every frame of a movie, row by row, 0 to 255.
QList<QByteArray> lumaFrames(const QString &movie);

/// The average colour of a rectangle of one frame of a movie, 0 to 255 each.
struct Colour
{
    double red = 0;
    double green = 0;
    double blue = 0;
};
Colour averageColour(const QString &movie, int frame, const QString &crop);

/// The real tool, for scripts that stand in front of it.
QString realTool(const QString &name);
