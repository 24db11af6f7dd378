// SPDX-License-Identifier: MIT
#include "cli/progressjson.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>

namespace filmwright {

namespace {

QByteArray line(const QJsonObject &object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n';
}

qint64 whole(TimeEstimate::Seconds time)
{
    return std::llround(time.count());
}

} // namespace

QByteArray progressJson(const QString &recording, const QString &stage, const Progress &progress)
{
    QJsonObject object{{QStringLiteral("recording"), recording}, {QStringLiteral("stage"), stage}};
    if (progress.frames > 0) {
        object[QStringLiteral("framesDone")] = static_cast<qint64>(progress.framesDone);
        object[QStringLiteral("frames")] = static_cast<qint64>(progress.frames);
    }
    if (progress.framesPerSecond > 0) {
        object[QStringLiteral("framesPerSecond")] =
            std::round(progress.framesPerSecond * 100) / 100;
    }
    if (progress.timeLeft)
        object[QStringLiteral("secondsLeft")] = whole(*progress.timeLeft);
    if (progress.batchTimeLeft)
        object[QStringLiteral("batchSecondsLeft")] = whole(*progress.batchTimeLeft);
    return line(object);
}

QByteArray finishedJson(const QString &recording, const QString &movie)
{
    return line({{QStringLiteral("recording"), recording},
                 {QStringLiteral("stage"), QStringLiteral("finished")},
                 {QStringLiteral("movie"), movie}});
}

QByteArray skippedJson(const QString &recording, const QString &movie)
{
    return line({{QStringLiteral("recording"), recording},
                 {QStringLiteral("stage"), QStringLiteral("skipped")},
                 {QStringLiteral("movie"), movie}});
}

QByteArray failedJson(const QString &recording, const QString &error)
{
    return line({{QStringLiteral("recording"), recording},
                 {QStringLiteral("stage"), QStringLiteral("failed")},
                 {QStringLiteral("reason"), error}});
}

QByteArray messageJson(const QString &message)
{
    return line({{QStringLiteral("message"), message}});
}

} // namespace filmwright
