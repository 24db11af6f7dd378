// SPDX-License-Identifier: MIT
#include "preview/histogram.h"

#include "conversion/tiffbitmap.h"
#include "support/testprogram.h"

#include <QTest>

#include <algorithm>

using namespace filmwright;

class TestHistogram : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void eightBits();
    void sixteenBitsAreClippedAtTheirHighestValue();
    void paddingIsNotCounted();
    void greyHasNone();
};

void TestHistogram::eightBits()
{
    const QByteArray pixels("\x00\x10\xff\x00\x20\xff\x01\x20\xfe\x02\x20\xff", 12);
    const Histogram histogram = histogramOf(TiffBitmap({2, 2, 3, 8, 6}, pixels));
    const auto &[red, green, blue] = histogram.channels;
    QCOMPARE(red.counts[0], 2U);
    QCOMPARE(red.counts[1], 1U);
    QCOMPARE(red.counts[2], 1U);
    QCOMPARE(red.clipped, 0.0);
    QCOMPARE(green.counts[0x10], 1U);
    QCOMPARE(green.counts[0x20], 3U);
    QCOMPARE(blue.counts[0xfe], 1U);
    QCOMPARE(blue.counts[0xff], 3U);
    QCOMPARE(blue.clipped, 0.75);
    QCOMPARE(histogram.highestCount(), 3U);
}

void TestHistogram::sixteenBitsAreClippedAtTheirHighestValue()
{
    const std::array<quint16, 6> pixels{0xffff, 0xfffe, 0x1234, 0xff00, 0xffff, 0x12ff};
    const QByteArray bytes(reinterpret_cast<const char *>(pixels.data()), sizeof pixels);
    const Histogram histogram = histogramOf(TiffBitmap({2, 1, 3, 16, 12}, bytes));
    const auto &[red, green, blue] = histogram.channels;
    QCOMPARE(red.counts[0xff], 2U);
    QCOMPARE(red.clipped, 0.5);
    QCOMPARE(green.clipped, 0.5);
    QCOMPARE(blue.counts[0x12], 2U);
    QCOMPARE(blue.clipped, 0.0);
}

void TestHistogram::paddingIsNotCounted()
{
    const QByteArray pixels("\x01\x02\x03\xff\x01\x02\x03\xff", 8);
    const Histogram histogram = histogramOf(TiffBitmap({1, 2, 3, 8, 4}, pixels));
    QCOMPARE(histogram.channels[0].counts[1], 2U);
    QCOMPARE(histogram.channels[0].counts[0xff], 0U);
    QCOMPARE(histogram.highestCount(), 2U);
}

void TestHistogram::greyHasNone()
{
    QCOMPARE(histogramOf(TiffBitmap({1, 1, 1, 8, 1}, QByteArray(1, '\x7f'))).highestCount(), 0U);
    QCOMPARE(histogramOf({}).highestCount(), 0U);
}

FILMWRIGHT_TEST(TestHistogram, QCoreApplication)
#include "tst_histogram.moc"
