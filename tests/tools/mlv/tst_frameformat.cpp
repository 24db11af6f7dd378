// SPDX-License-Identifier: MIT
#include "mlv/frameformat.h"

#include "raw/error.h"
#include "recordingbuilder.h"
#include "support/testprogram.h"

#include <QTest>

class TestFrameFormat : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void sizesFollowFromShapeAndDepth();
    void unknownDepthIsRefused();
    void emptyFrameIsRefused();
    void frameLargerThanAnyBlockIsRefused();
    void levelsThatContradictTheDepthAreMoved_data();
    void levelsThatContradictTheDepthAreMoved();
};

void TestFrameFormat::sizesFollowFromShapeAndDepth()
{
    const auto format = mlv::frameFormat(RecordingBuilder::rawInfo());
    QCOMPARE(format.sampleCount(), std::size_t{768});
    QCOMPARE(format.packedBytes(), std::size_t{1344});
    QCOMPARE(format.maxLevel(), 16383);
    QCOMPARE(format.blackLevel, 2048);
    QCOMPARE(format.whiteLevel, 15000);
}

void TestFrameFormat::unknownDepthIsRefused()
{
    auto info = RecordingBuilder::rawInfo();
    for (const int bits : {-14, 0, 8, 13, 17, 1 << 30}) {
        info.bitsPerSample = bits;
        QVERIFY_THROWS_EXCEPTION(raw::Error, mlv::frameFormat(info));
    }
}

void TestFrameFormat::emptyFrameIsRefused()
{
    auto info = RecordingBuilder::rawInfo();
    info.height = 0;
    QVERIFY_THROWS_EXCEPTION(raw::Error, mlv::frameFormat(info));
}

void TestFrameFormat::frameLargerThanAnyBlockIsRefused()
{
    auto info = RecordingBuilder::rawInfo();
    info.width = 65535;
    info.height = 65535;
    QVERIFY_THROWS_EXCEPTION(raw::Error, mlv::frameFormat(info));
}

void TestFrameFormat::levelsThatContradictTheDepthAreMoved_data()
{
    QTest::addColumn<int>("black");
    QTest::addColumn<int>("white");
    QTest::addColumn<int>("usedBlack");
    QTest::addColumn<int>("usedWhite");
    QTest::newRow("black below zero") << -5 << 15000 << 0 << 15000;
    QTest::newRow("white beyond the depth") << 2048 << 60000 << 2048 << 16383;
    QTest::newRow("white not above black") << 2048 << 2048 << 2048 << 16383;
    QTest::newRow("black beyond the depth") << 99999 << 15000 << 16382 << 16383;
}

void TestFrameFormat::levelsThatContradictTheDepthAreMoved()
{
    QFETCH(int, black);
    QFETCH(int, white);
    auto info = RecordingBuilder::rawInfo();
    info.blackLevel = black;
    info.whiteLevel = white;
    const auto format = mlv::frameFormat(info);
    QTEST(format.blackLevel, "usedBlack");
    QTEST(format.whiteLevel, "usedWhite");
}

FILMWRIGHT_TEST(TestFrameFormat, QCoreApplication)
#include "tst_frameformat.moc"
