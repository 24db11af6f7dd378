// SPDX-License-Identifier: MIT
#include "project/moviefacts.h"

#include "support/testprogram.h"

#include <QTest>

using namespace filmwright;

class TestMovieFacts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everythingIsKnown();
    void nothingIsKnown();
    void impossibleClock();
    void timecodeOfALaterFrame_data();
    void timecodeOfALaterFrame();
    void longExposure();
};

void TestMovieFacts::everythingIsKnown()
{
    MlvMetadata metadata;
    metadata.date = QStringLiteral("01.05.2026");
    metadata.time = QStringLiteral("14:30:02 (GMT+2)");
    metadata.camera = QStringLiteral("Canon EOS 5D Mark III");
    metadata.lens = QStringLiteral("EF24-105mm f/4L IS USM");
    metadata.focal = QStringLiteral("35 mm");
    metadata.aperture = 4;
    metadata.iso = 800;
    metadata.shutter = 0.02;
    const MovieFacts facts = factsOf(QStringLiteral("/card/M01-1430.a.MLV"), metadata);
    QCOMPARE(facts.timecode, QStringLiteral("14:30:02:00"));
    QCOMPARE(facts.creationTime, QStringLiteral("2026-05-01T14:30:02Z"));
    QCOMPARE(facts.make, QStringLiteral("Canon"));
    QCOMPARE(facts.model, QStringLiteral("Canon EOS 5D Mark III"));
    QCOMPARE(facts.comment,
             QStringLiteral("EF24-105mm f/4L IS USM, 35 mm, f/4.0, ISO 800, 1/50 s"));
    QCOMPARE(facts.reel, QStringLiteral("M01-1430.a"));
}

void TestMovieFacts::nothingIsKnown()
{
    const MovieFacts facts = factsOf(QStringLiteral("clip.MLV"), {});
    QVERIFY(facts.timecode.isEmpty() && facts.creationTime.isEmpty() && facts.make.isEmpty() &&
            facts.model.isEmpty() && facts.comment.isEmpty());
    QCOMPARE(facts.reel, QStringLiteral("clip"));
}

/// A camera without a battery for its clock.
void TestMovieFacts::impossibleClock()
{
    MlvMetadata metadata;
    metadata.date = QStringLiteral("00.01.1900");
    metadata.time = QStringLiteral("00:00:00 (GMT+0)");
    QCOMPARE(factsOf(QStringLiteral("c.MLV"), metadata).timecode, QStringLiteral("00:00:00:00"));
    QCOMPARE(factsOf(QStringLiteral("c.MLV"), metadata).creationTime, QString());
    metadata.time = QStringLiteral("25:61:00 (GMT+0)");
    QCOMPARE(factsOf(QStringLiteral("c.MLV"), metadata).timecode, QString());
}

void TestMovieFacts::timecodeOfALaterFrame_data()
{
    QTest::addColumn<float>("fps");
    QTest::addColumn<quint64>("frame");
    QTest::addColumn<QString>("timecode");
    QTest::addColumn<QString>("created");
    QTest::newRow("first") << 24.0F << quint64(1) << "23:59:58:00"
                           << "2026-05-01T23:59:58Z";
    QTest::newRow("in the second") << 24.0F << quint64(13) << "23:59:58:12"
                                   << "2026-05-01T23:59:58Z";
    QTest::newRow("a second later") << 25.0F << quint64(26) << "23:59:59:00"
                                    << "2026-05-01T23:59:59Z";
    QTest::newRow("counted by 24, lasting a little longer")
        << 23.976F << quint64(25) << "23:59:59:00"
        << "2026-05-01T23:59:59Z";
    QTest::newRow("behind midnight") << 50.0F << quint64(103) << "00:00:00:02"
                                     << "2026-05-02T00:00:00Z";
}

void TestMovieFacts::timecodeOfALaterFrame()
{
    QFETCH(float, fps);
    QFETCH(quint64, frame);
    MlvMetadata metadata;
    metadata.date = QStringLiteral("01.05.2026");
    metadata.time = QStringLiteral("23:59:58 (GMT+0)");
    metadata.fps = fps;
    const MovieFacts facts = factsOf(QStringLiteral("c.MLV"), metadata, frame);
    QTEST(facts.timecode, "timecode");
    QTEST(facts.creationTime, "created");
}

void TestMovieFacts::longExposure()
{
    MlvMetadata metadata;
    metadata.shutter = 2.5;
    QCOMPARE(factsOf(QStringLiteral("c.MLV"), metadata).comment, QStringLiteral("2.5 s"));
}

FILMWRIGHT_TEST(TestMovieFacts, QCoreApplication)
#include "tst_moviefacts.moc"
