// SPDX-License-Identifier: MIT
#include "mlv/blocks.h"

#include "support/testprogram.h"

#include <QTest>

#include <cstddef>

using namespace mlv;

// Offsets are counted from the first byte of a block, as a description of the container gives them.
#define OFFSET_IN_BLOCK(Layout, field) (sizeof(BlockHeader) + offsetof(Layout, field))

class TestBlocks : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void fieldsStandWhereTheContainerPutsThem_data();
    void fieldsStandWhereTheContainerPutsThem();
    void whatAShortBlockDoesNotReachIsZero();
    void whatALongBlockHasBeyondTheLayoutIsIgnored();
    void encodedLayoutIsReadBack();
};

void TestBlocks::fieldsStandWhereTheContainerPutsThem_data()
{
    QTest::addColumn<std::size_t>("offset");
    QTest::addColumn<std::size_t>("expected");
    const auto row = [](const char *name, std::size_t offset, std::size_t expected) {
        QTest::newRow(name) << offset << expected;
    };
    row("MLVI guid", offsetof(FileHeader, guid), 16);
    row("MLVI chunk", offsetof(FileHeader, chunk), 24);
    row("MLVI video class", offsetof(FileHeader, videoClass), 32);
    row("MLVI video frames", offsetof(FileHeader, videoFrames), 36);
    row("MLVI rate", offsetof(FileHeader, frameRateNumerator), 44);
    row("time stamp", offsetof(BlockHeader, timestamp), 8);
    row("RAWI bits", OFFSET_IN_BLOCK(RawInfo, bitsPerSample), 44);
    row("RAWI black", OFFSET_IN_BLOCK(RawInfo, blackLevel), 48);
    row("RAWI active area", OFFSET_IN_BLOCK(RawInfo, activeTop), 72);
    row("RAWI pattern", OFFSET_IN_BLOCK(RawInfo, cfaPattern), 96);
    row("RAWI matrix", OFFSET_IN_BLOCK(RawInfo, colourMatrix), 104);
    row("RAWI dynamic range", OFFSET_IN_BLOCK(RawInfo, dynamicRange), 176);
    row("RAWC binning", OFFSET_IN_BLOCK(RawCapture, binningX), 24);
    row("RAWC offset", OFFSET_IN_BLOCK(RawCapture, offsetX), 28);
    row("RTCI year", OFFSET_IN_BLOCK(Clock, year), 26);
    row("RTCI zone", OFFSET_IN_BLOCK(Clock, zone), 36);
    row("IDNT serial", OFFSET_IN_BLOCK(Identity, serial), 52);
    row("EXPO shutter", OFFSET_IN_BLOCK(Exposure, shutter), 32);
    row("LENS aperture", OFFSET_IN_BLOCK(Lens, aperture), 20);
    row("LENS name", OFFSET_IN_BLOCK(Lens, name), 32);
    row("WBAL gains", OFFSET_IN_BLOCK(WhiteBalance, gainRed), 24);
    row("STYL name", OFFSET_IN_BLOCK(Style, name), 36);
    row("WAVI bits", OFFSET_IN_BLOCK(WaveInfo, bitsPerSample), 30);
    row("VIDF frame space", OFFSET_IN_BLOCK(VideoFrame, frameSpace), 28);
    row("AUDF frame space", OFFSET_IN_BLOCK(AudioFrame, frameSpace), 20);
}

void TestBlocks::fieldsStandWhereTheContainerPutsThem()
{
    QFETCH(std::size_t, offset);
    QFETCH(std::size_t, expected);
    QCOMPARE(offset, expected);
}

void TestBlocks::whatAShortBlockDoesNotReachIsZero()
{
    const Exposure written{1, 100, 72, 0, 20000};
    const auto read = decodeLayout<Exposure>(encodeLayout(written).first(10));
    QCOMPARE(read.iso, 100U);
    QCOMPARE(read.isoAnalog, 72U);
    QCOMPARE(read.shutter, 0U);
    QCOMPARE(decodeLayout<Exposure>({}).iso, 0U);
}

void TestBlocks::whatALongBlockHasBeyondTheLayoutIsIgnored()
{
    const Identity written{{'C'}, 7, {'1'}};
    QCOMPARE(decodeLayout<Mark>(encodeLayout(written)).button, static_cast<quint32>('C'));
}

void TestBlocks::encodedLayoutIsReadBack()
{
    Lens written{};
    written.aperture = 280;
    written.name = {'5', '0', 'm', 'm'};
    const auto read = decodeLayout<Lens>(encodeLayout(written));
    QCOMPARE(read.aperture, written.aperture);
    QVERIFY(read.name == written.name);
}

FILMWRIGHT_TEST(TestBlocks, QCoreApplication)
#include "tst_blocks.moc"
