// SPDX-License-Identifier: MIT
#include "sample.h"

#include "support/programrun.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QProcess>

bool writeSample(const QString &path, const QString &options)
{
    const QStringList arguments = options.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    return QProcess::execute(QStringLiteral(MLV_SAMPLE), arguments + QStringList{path}) == 0;
}

Movie Movie::probe(const QString &path)
{
    const QByteArray json = outputOf(
        QStringLiteral("ffprobe"),
        {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-count_frames"),
         QStringLiteral("-show_streams"), QStringLiteral("-of"), QStringLiteral("json"), path});
    Movie movie;
    const QJsonArray streams =
        QJsonDocument::fromJson(json).object().value(QStringLiteral("streams")).toArray();
    for (const QJsonValue &stream : streams) {
        const QJsonObject object = stream.toObject();
        if (object.value(QStringLiteral("codec_type")) == QStringLiteral("video"))
            movie.video = object;
        else
            movie.sound << object;
    }
    return movie;
}

int Movie::frames() const
{
    return video.value(QStringLiteral("nb_read_frames")).toString().toInt();
}

QList<QByteArray> lumaFrames(const QString &movie)
{
    const QJsonObject video = Movie::probe(movie).video;
    const qsizetype size = qsizetype(video.value(QStringLiteral("width")).toInt()) *
                           video.value(QStringLiteral("height")).toInt();
    const QByteArray all =
        outputOf(QStringLiteral("ffmpeg"),
                 {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-i"), movie,
                  QStringLiteral("-f"), QStringLiteral("rawvideo"), QStringLiteral("-pix_fmt"),
                  QStringLiteral("gray"), QStringLiteral("-")});
    QList<QByteArray> frames;
    for (qsizetype at = 0; size > 0 && at + size <= all.size(); at += size)
        frames << all.mid(at, size);
    return frames;
}

Colour averageColour(const QString &movie, int frame, const QString &crop)
{
    const QString filter =
        QStringLiteral("select=eq(n\\,%1),crop=%2,scale=1:1:flags=area").arg(frame).arg(crop);
    const QByteArray pixel =
        outputOf(QStringLiteral("ffmpeg"),
                 {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-i"), movie,
                  QStringLiteral("-vf"), filter, QStringLiteral("-frames:v"), QStringLiteral("1"),
                  QStringLiteral("-f"), QStringLiteral("rawvideo"), QStringLiteral("-pix_fmt"),
                  QStringLiteral("rgb24"), QStringLiteral("-")});
    if (pixel.size() != 3)
        return {};
    const auto channel = [&pixel](qsizetype index) {
        return static_cast<double>(static_cast<uchar>(pixel.at(index)));
    };
    return {channel(0), channel(1), channel(2)};
}

QString realTool(const QString &name)
{
    return QDir(qEnvironmentVariable("FILMWRIGHT_BUILD_RESOURCES")).filePath(name);
}
