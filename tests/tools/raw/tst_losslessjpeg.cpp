// SPDX-License-Identifier: MIT
#include "raw/losslessjpeg.h"

#include "bytesof.h"

#include "mlv_sample/losslessjpeg.h"
#include "raw/error.h"
#include "support/testprogram.h"

#include <QTest>

#include <random>
#include <vector>

using Samples = std::vector<std::uint16_t>;
using Bytes = std::vector<std::byte>;
Q_DECLARE_METATYPE(sample::LosslessShape)

namespace {

// The pieces of a stream of one component, 2 x 1 samples of 14 bits. Its code has "0" for no
// difference, "10" for a difference of one bit, "110" for size 16.
const QByteArray startOfImage = QByteArray::fromHex("ffd8");
const QByteArray tables = QByteArray::fromHex("ffc4001600"
                                              "01010100000000000000000000000000"
                                              "000110");
const QByteArray frameHeader = QByteArray::fromHex("ffc3000b0e00010002010011"
                                                   "00");
const QByteArray scanHeader = QByteArray::fromHex("ffda0008010000010000");
const QByteArray endOfImage = QByteArray::fromHex("ffd9");

QByteArray streamWith(const QByteArray &data)
{
    return startOfImage + tables + frameHeader + scanHeader + data + endOfImage;
}

Samples decodedPair(const QByteArray &stream)
{
    Samples samples(2);
    raw::decodeLosslessJpeg(bytesOf(stream), samples);
    return samples;
}

Samples noisyPicture(int width, int height, int bits, unsigned seed)
{
    std::mt19937 random(seed);
    Samples samples(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    for (auto &sample : samples) {
        // Mostly small steps, now and then the largest there are.
        const auto value = random();
        const auto mask = value % 16 == 0 ? (1U << bits) - 1 : 63U;
        sample = static_cast<std::uint16_t>((value >> 8) & mask);
    }
    return samples;
}

} // namespace

class TestLosslessJpeg : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void smallestStreamByHand();
    void differenceOf32768HasNoBits();
    void tablesMayStandBehindTheFrameHeader();
    void everyShapePredictorAndDepthIsExact_data();
    void everyShapePredictorAndDepthIsExact();
    void sizeEndsWithTheEndMarker();
    void anotherSampleCountIsRefused();
    void everyCutIsRefused();
    void restartIntervalIsRefused();
    void restartIntervalOfZeroIsNone();
    void pointTransformIsRefused();
    void unknownPredictorIsRefused();
    void missingTableIsRefused();
    void overfullTableIsRefused();
    void tableOfImpossibleDifferencesIsRefused();
    void codeThatNoTableHasIsRefused();
    void otherJpegProcessesAreRefused();
    void flippedBitsNeverDoHarm();
};

void TestLosslessJpeg::smallestStreamByHand()
{
    // 0 (no difference from 2^13), 10 1 (one more), then ones.
    QCOMPARE(decodedPair(streamWith(QByteArray::fromHex("5f"))), (Samples{8192, 8193}));
    // 10 0 (one less than 2^13), 0.
    QCOMPARE(decodedPair(streamWith(QByteArray::fromHex("8f"))), (Samples{8191, 8191}));
}

void TestLosslessJpeg::differenceOf32768HasNoBits()
{
    // 110, 0: the sum is taken modulo 2^16.
    QCOMPARE(decodedPair(streamWith(QByteArray::fromHex("cf"))), (Samples{40960, 40960}));
}

void TestLosslessJpeg::tablesMayStandBehindTheFrameHeader()
{
    const auto stream =
        startOfImage + frameHeader + tables + scanHeader + QByteArray::fromHex("5f") + endOfImage;
    QCOMPARE(decodedPair(stream), (Samples{8192, 8193}));
}

void TestLosslessJpeg::everyShapePredictorAndDepthIsExact_data()
{
    QTest::addColumn<sample::LosslessShape>("shape");
    QTest::addColumn<int>("predictor");
    QTest::addColumn<int>("bits");
    const std::pair<const char *, sample::LosslessShape> shapes[] = {
        {"camera", sample::LosslessShape::Camera},
        {"folded", sample::LosslessShape::Folded},
        {"plain", sample::LosslessShape::Plain}};
    for (const auto &[name, shape] : shapes) {
        for (int predictor = 1; predictor <= 7; ++predictor) {
            for (const int bits : {10, 12, 14, 16}) {
                QTest::addRow("%s, predictor %d, %d bits", name, predictor, bits)
                    << shape << predictor << bits;
            }
        }
    }
}

void TestLosslessJpeg::everyShapePredictorAndDepthIsExact()
{
    QFETCH(sample::LosslessShape, shape);
    QFETCH(int, predictor);
    QFETCH(int, bits);
    const int width = 34;
    const int height = 18;
    const auto samples = noisyPicture(width, height, bits, static_cast<unsigned>(predictor));
    const auto stream = sample::encodeLosslessJpeg(samples, width, height, bits, shape, predictor);
    QCOMPARE(raw::losslessJpegShape(stream).precision, bits);
    QCOMPARE(raw::losslessJpegShape(stream).sampleCount(), samples.size());
    Samples decoded(samples.size());
    QCOMPARE(raw::decodeLosslessJpeg(stream, decoded), stream.size());
    QCOMPARE(decoded, samples);
}

void TestLosslessJpeg::sizeEndsWithTheEndMarker()
{
    const auto stream = streamWith(QByteArray::fromHex("5f"));
    Samples samples(2);
    QCOMPARE(raw::decodeLosslessJpeg(bytesOf(stream + QByteArray(7, 'x')), samples),
             static_cast<std::size_t>(stream.size()));
    // Without an end marker, everything belongs to the stream.
    const auto endless = stream.chopped(2);
    QCOMPARE(raw::decodeLosslessJpeg(bytesOf(endless), samples),
             static_cast<std::size_t>(endless.size()));
}

void TestLosslessJpeg::anotherSampleCountIsRefused()
{
    const auto stream = streamWith(QByteArray::fromHex("5f"));
    for (const std::size_t count : {0U, 1U, 3U, 4U}) {
        Samples samples(count);
        QVERIFY_THROWS_EXCEPTION(raw::Error, raw::decodeLosslessJpeg(bytesOf(stream), samples));
    }
}

void TestLosslessJpeg::everyCutIsRefused()
{
    const auto samples = noisyPicture(16, 8, 14, 9);
    const auto stream =
        sample::encodeLosslessJpeg(samples, 16, 8, 14, sample::LosslessShape::Camera, 1);
    Samples decoded(samples.size());
    // The end marker alone may be missing, and with it the last byte's filling bits.
    for (std::size_t size = 0; size + 3 < stream.size(); ++size) {
        const std::span<const std::byte> cut(stream.data(), size);
        QVERIFY_THROWS_EXCEPTION(raw::Error, raw::decodeLosslessJpeg(cut, decoded));
    }
}

void TestLosslessJpeg::restartIntervalIsRefused()
{
    const auto stream = startOfImage + tables + frameHeader + QByteArray::fromHex("ffdd00040002") +
                        scanHeader + QByteArray::fromHex("5f") + endOfImage;
    QVERIFY_THROWS_EXCEPTION(raw::Error, decodedPair(stream));
}

void TestLosslessJpeg::restartIntervalOfZeroIsNone()
{
    const auto stream = startOfImage + tables + frameHeader + QByteArray::fromHex("ffdd00040000") +
                        scanHeader + QByteArray::fromHex("5f") + endOfImage;
    QCOMPARE(decodedPair(stream), (Samples{8192, 8193}));
}

void TestLosslessJpeg::pointTransformIsRefused()
{
    auto header = scanHeader;
    header[9] = 1;
    QVERIFY_THROWS_EXCEPTION(raw::Error,
                             decodedPair(startOfImage + tables + frameHeader + header + "\x5f"));
}

void TestLosslessJpeg::unknownPredictorIsRefused()
{
    for (const char predictor : {'\0', '\x08'}) {
        auto header = scanHeader;
        header[7] = predictor;
        QVERIFY_THROWS_EXCEPTION(
            raw::Error, decodedPair(startOfImage + tables + frameHeader + header + "\x5f"));
    }
}

void TestLosslessJpeg::missingTableIsRefused()
{
    QVERIFY_THROWS_EXCEPTION(raw::Error,
                             decodedPair(startOfImage + frameHeader + scanHeader + "\x5f"));
}

void TestLosslessJpeg::overfullTableIsRefused()
{
    auto table = tables;
    table[5] = 3; // codes of one bit
    table[6] = table[7] = 0;
    try {
        decodedPair(startOfImage + table + frameHeader + scanHeader + "\x5f");
        QFAIL("the table was taken");
    } catch (const raw::Error &error) {
        QCOMPARE(QByteArray(error.what()), QByteArray("has an impossible Huffman table"));
    }
}

void TestLosslessJpeg::tableOfImpossibleDifferencesIsRefused()
{
    auto table = tables;
    table.back() = 17; // bits
    QVERIFY_THROWS_EXCEPTION(raw::Error,
                             decodedPair(startOfImage + table + frameHeader + scanHeader + "\x5f"));
}

void TestLosslessJpeg::codeThatNoTableHasIsRefused()
{
    QVERIFY_THROWS_EXCEPTION(raw::Error, decodedPair(streamWith(QByteArray::fromHex("ef"))));
}

void TestLosslessJpeg::otherJpegProcessesAreRefused()
{
    auto baseline = frameHeader;
    baseline[1] = '\xc0';
    QVERIFY_THROWS_EXCEPTION(raw::Error,
                             decodedPair(startOfImage + tables + baseline + scanHeader + "\x5f"));
}

void TestLosslessJpeg::flippedBitsNeverDoHarm()
{
    const auto samples = noisyPicture(16, 8, 14, 3);
    const auto whole =
        sample::encodeLosslessJpeg(samples, 16, 8, 14, sample::LosslessShape::Camera, 6);
    int refused = 0;
    for (std::size_t bit = 0; bit < whole.size() * 8; ++bit) {
        auto stream = whole;
        stream[bit / 8] ^= std::byte(1 << bit % 8);
        Samples decoded(samples.size());
        try {
            QVERIFY(raw::decodeLosslessJpeg(stream, decoded) <= stream.size());
        } catch (const raw::Error &) {
            ++refused;
        }
    }
    QVERIFY(refused > 0);
}

FILMWRIGHT_TEST(TestLosslessJpeg, QCoreApplication)
#include "tst_losslessjpeg.moc"
