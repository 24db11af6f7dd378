// SPDX-License-Identifier: MIT
#include "project/recordingfacts.h"

#include "mlvdump/mlvdumpreport.h"
#include "runner/readabletext.h"

#include <QStringList>

namespace filmwright {

namespace {

QString joined(QStringList parts)
{
    parts.removeAll(QString());
    return parts.join(QStringLiteral(", "));
}

QString lengthOf(const MlvMetadata &metadata)
{
    if (metadata.videoFrames == 0)
        return {};
    QString frames = QStringLiteral("%1 frames").arg(metadata.videoFrames);
    if (!(metadata.fps > 0))
        return frames;
    const std::chrono::duration<double> length(static_cast<double>(metadata.videoFrames) /
                                               static_cast<double>(metadata.fps));
    return joined({timeText(length), frames});
}

/// As many digits as a rate of 32 bits has.
QString rateOf(const MlvMetadata &metadata)
{
    return metadata.fps > 0
               ? QStringLiteral("%1 frames/s").arg(static_cast<double>(metadata.fps), 0, 'g', 5)
               : QString();
}

QString soundOf(const MlvMetadata &metadata)
{
    if (metadata.videoFrames == 0)
        return {};
    return metadata.audioFrames > 0 ? QStringLiteral("yes") : QStringLiteral("none");
}

QString exposureOf(const MlvMetadata &metadata)
{
    return joined({exposureTimeText(metadata.shutter),
                   metadata.iso > 0 ? QStringLiteral("ISO %1").arg(metadata.iso) : QString(),
                   metadata.aperture > 0 ? QStringLiteral("f/%1").arg(
                                               static_cast<double>(metadata.aperture), 0, 'g', 3)
                                         : QString(),
                   metadata.focal});
}

QString samplingOf(const MlvMetadata &metadata)
{
    if (metadata.sampling.isEmpty())
        return {};
    if (metadata.sampling == QSize(1, 1))
        return QStringLiteral("every pixel");
    return QStringLiteral("1 of %1 columns, 1 of %2 lines")
        .arg(metadata.sampling.width())
        .arg(metadata.sampling.height());
}

} // namespace

QList<RecordingFact> recordingFacts(const MlvMetadata &metadata)
{
    const QString bits = metadata.bitsPerSample > 0
                             ? QStringLiteral("%1 bits").arg(metadata.bitsPerSample)
                             : QString();
    QList<RecordingFact> facts{
        {QStringLiteral("Length"), lengthOf(metadata)},
        {QStringLiteral("Rate"), rateOf(metadata)},
        {QStringLiteral("Frame"), joined({metadata.resolution, bits})},
        {QStringLiteral("Sampling"), samplingOf(metadata)},
        {QStringLiteral("Sound"), soundOf(metadata)},
        {QStringLiteral("Recorded"), joined({metadata.date, metadata.time})},
        {QStringLiteral("White balance"), metadata.whiteBalance},
        {QStringLiteral("Exposure"), exposureOf(metadata)},
        {QStringLiteral("Camera"), joined({metadata.camera, metadata.cameraSerial})},
        {QStringLiteral("Lens"), metadata.lens},
    };
    facts.removeIf([](const RecordingFact &fact) { return fact.value.isEmpty(); });
    return facts;
}

} // namespace filmwright
