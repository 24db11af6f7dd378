// SPDX-License-Identifier: MIT
#include "project/moviefacts.h"

#include "runner/fixedtext.h"
#include "runner/readabletext.h"

#include <QDateTime>
#include <QFileInfo>

#include <algorithm>
#include <cmath>

namespace filmwright {

namespace {

/// Whole seconds; 0 while the rate isn't known.
qint64 secondsOf(quint64 frames, float framesPerSecond)
{
    return framesPerSecond > 0 ? static_cast<qint64>(static_cast<double>(frames) /
                                                     static_cast<double>(framesPerSecond))
                               : 0;
}

/// So many frames after the time of day, at which frame 0 of a second is: a second has as many as
/// the next whole rate says.
QString timecode(const QTime &time, quint64 frames, float framesPerSecond)
{
    const auto rate = static_cast<quint64>(
        std::max<qint64>(1, std::llround(static_cast<double>(framesPerSecond))));
    constexpr quint64 secondsOfADay = 86400;
    const auto seconds = static_cast<int>(frames / rate % secondsOfADay);
    return time.addSecs(seconds).toString(QStringLiteral("hh:mm:ss")) +
           QStringLiteral(":%1").arg(frames % rate, 2, 10, QLatin1Char('0'));
}

QString comment(const MlvMetadata &metadata)
{
    QStringList parts{metadata.lens, metadata.focal};
    if (metadata.aperture > 0)
        parts << QStringLiteral("f/%1").arg(fixedText(static_cast<double>(metadata.aperture), 1));
    if (metadata.iso > 0)
        parts << QStringLiteral("ISO %1").arg(metadata.iso);
    parts << exposureTimeText(metadata.shutter);
    parts.removeAll(QString());
    return parts.join(QStringLiteral(", "));
}

} // namespace

MovieFacts factsOf(const QString &recording, const MlvMetadata &metadata, quint64 firstFrame)
{
    MovieFacts facts;
    const QDate date = QDate::fromString(metadata.date, QStringLiteral("dd.MM.yyyy"));
    const QTime time = QTime::fromString(metadata.time.section(QLatin1Char(' '), 0, 0),
                                         QStringLiteral("hh:mm:ss"));
    if (time.isValid())
        facts.timecode = timecode(time, firstFrame - 1, metadata.fps);
    if (date.isValid() && time.isValid()) {
        const QString start =
            date.toString(Qt::ISODate) + QLatin1Char('T') + time.toString(Qt::ISODate);
        facts.creationTime = QDateTime::fromString(start + QLatin1Char('Z'), Qt::ISODate)
                                 .addSecs(secondsOf(firstFrame - 1, metadata.fps))
                                 .toString(Qt::ISODate);
    }
    // A camera's name begins with its maker's.
    facts.make = metadata.camera.section(QLatin1Char(' '), 0, 0);
    facts.model = metadata.camera;
    facts.comment = comment(metadata);
    facts.reel = QFileInfo(recording).completeBaseName();
    return facts;
}

} // namespace filmwright
