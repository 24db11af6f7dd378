// SPDX-License-Identifier: MIT
#include "mlvdump/mlvdumpreport.h"
#include "project/recordingfacts.h"

#include "support/testprogram.h"

#include <QTest>

using namespace filmwright;

class TestRecordingFacts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everythingIsTold();
    void whatIsNotToldIsLeftOut();
    void recordingWithoutSoundSaysSo();
    void skippedPixelsAreTold();

private:
    static QStringList shown(const MlvMetadata &metadata)
    {
        QStringList lines;
        for (const RecordingFact &fact : recordingFacts(metadata))
            lines << fact.name + QStringLiteral(": ") + fact.value;
        return lines;
    }
};

void TestRecordingFacts::everythingIsTold()
{
    MlvMetadata metadata;
    metadata.fps = 23.976F;
    metadata.videoFrames = 288;
    metadata.audioFrames = 12;
    metadata.resolution = QStringLiteral("1920x1080");
    metadata.bitsPerSample = 14;
    metadata.sampling = QSize(1, 1);
    metadata.date = QStringLiteral("21.03.2026");
    metadata.time = QStringLiteral("14:30:00 (GMT+0)");
    metadata.whiteBalance = QStringLiteral("5200 K");
    metadata.shutter = 0.02;
    metadata.iso = 400;
    metadata.aperture = 2.8F;
    metadata.focal = QStringLiteral("35 mm");
    metadata.camera = QStringLiteral("Maker Model X");
    metadata.cameraSerial = QStringLiteral("F1A3");
    metadata.lens = QStringLiteral("Prime 35mm");
    QCOMPARE(
        shown(metadata),
        QStringList(
            {QStringLiteral("Length: 0:12, 288 frames"), QStringLiteral("Rate: 23.976 frames/s"),
             QStringLiteral("Frame: 1920x1080, 14 bits"), QStringLiteral("Sampling: every pixel"),
             QStringLiteral("Sound: yes"), QStringLiteral("Recorded: 21.03.2026, 14:30:00 (GMT+0)"),
             QStringLiteral("White balance: 5200 K"),
             QStringLiteral("Exposure: 1/50 s, ISO 400, f/2.8, 35 mm"),
             QStringLiteral("Camera: Maker Model X, F1A3"), QStringLiteral("Lens: Prime 35mm")}));
}

void TestRecordingFacts::whatIsNotToldIsLeftOut()
{
    QCOMPARE(shown({}), QStringList());
}

void TestRecordingFacts::recordingWithoutSoundSaysSo()
{
    MlvMetadata metadata;
    metadata.videoFrames = 3;
    QCOMPARE(shown(metadata),
             QStringList({QStringLiteral("Length: 3 frames"), QStringLiteral("Sound: none")}));
}

void TestRecordingFacts::skippedPixelsAreTold()
{
    MlvMetadata metadata;
    metadata.sampling = QSize(3, 5);
    QCOMPARE(shown(metadata),
             QStringList{QStringLiteral("Sampling: 1 of 3 columns, 1 of 5 lines")});
}

FILMWRIGHT_TEST(TestRecordingFacts, QCoreApplication)
#include "tst_recordingfacts.moc"
