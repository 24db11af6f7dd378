// SPDX-License-Identifier: MIT
#include "project/moviefacts.h"

#include "runner/fixedtext.h"
#include "runner/readabletext.h"

#include <QDateTime>
#include <QFileInfo>

namespace filmwright {

namespace {

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

MovieFacts factsOf(const QString &recording, const MlvMetadata &metadata)
{
    MovieFacts facts;
    const QDate date = QDate::fromString(metadata.date, QStringLiteral("dd.MM.yyyy"));
    const QTime time = QTime::fromString(metadata.time.section(QLatin1Char(' '), 0, 0),
                                         QStringLiteral("hh:mm:ss"));
    if (time.isValid())
        facts.timecode = time.toString(QStringLiteral("hh:mm:ss")) + QStringLiteral(":00");
    if (date.isValid() && time.isValid())
        facts.creationTime = QDateTime(date, time, Qt::UTC).toString(Qt::ISODate);
    // A camera's name begins with its maker's.
    facts.make = metadata.camera.section(QLatin1Char(' '), 0, 0);
    facts.model = metadata.camera;
    facts.comment = comment(metadata);
    facts.reel = QFileInfo(recording).completeBaseName();
    return facts;
}

} // namespace filmwright
