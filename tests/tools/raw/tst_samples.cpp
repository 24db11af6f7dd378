// SPDX-License-Identifier: MIT
#include "raw/samples.h"

#include "bytesof.h"

#include "support/testprogram.h"

#include <QTest>

#include <random>
#include <vector>

using raw::WordOrder;
using Samples = std::vector<std::uint16_t>;
Q_DECLARE_METATYPE(Samples)

namespace {

QByteArray packed(const Samples &samples, int bits, WordOrder order)
{
    QByteArray bytes(static_cast<qsizetype>(raw::packedSize(samples.size(), bits)), '\xaa');
    raw::packSamples(
        samples, bits, order,
        std::as_writable_bytes(std::span(bytes.data(), static_cast<std::size_t>(bytes.size()))));
    return bytes;
}

Samples unpacked(const QByteArray &bytes, int bits, WordOrder order, std::size_t count)
{
    Samples samples(count);
    raw::unpackSamples(bytesOf(bytes), bits, order, samples);
    return samples;
}

} // namespace

class TestSamples : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void bytesOfARecording_data();
    void bytesOfARecording();
    void bytesOfADngAreTheSameWordsBigEndian_data() { bytesOfARecording_data(); }
    void bytesOfADngAreTheSameWordsBigEndian();
    void everyCountSurvivesARoundTrip_data();
    void everyCountSurvivesARoundTrip();
    void singlePackedSamples_data();
    void singlePackedSamples();
    void unusedBitsOfTheLastWordAreZero();
    void swappingLeavesALastSingleByte();
};

void TestSamples::bytesOfARecording_data()
{
    QTest::addColumn<int>("bits");
    QTest::addColumn<Samples>("samples");
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("10 bits") << 10 << Samples{251, 250, 268, 250, 286, 256, 301, 255}
                             << QByteArray::fromHex("cf3e30a447fa0490ffb4");
    QTest::newRow("12 bits") << 12 << Samples{999, 998, 1062, 998}
                             << QByteArray::fromHex("733e42e6e663");
    QTest::newRow("14 bits") << 14 << Samples{3992, 3991, 4237, 3991, 4483, 3997, 4726, 3996}
                             << QByteArray::fromHex("603e74f94f234697f90c9dd49c8f");
    QTest::newRow("16 bits") << 16 << Samples{0x1234, 0xfedc} << QByteArray::fromHex("3412dcfe");
}

void TestSamples::bytesOfARecording()
{
    QFETCH(int, bits);
    QFETCH(Samples, samples);
    QFETCH(QByteArray, bytes);
    QCOMPARE(packed(samples, bits, WordOrder::LittleEndian).toHex(), bytes.toHex());
    QCOMPARE(unpacked(bytes, bits, WordOrder::LittleEndian, samples.size()), samples);
}

void TestSamples::bytesOfADngAreTheSameWordsBigEndian()
{
    QFETCH(int, bits);
    QFETCH(Samples, samples);
    QFETCH(QByteArray, bytes);
    raw::swapWordBytes(
        std::as_writable_bytes(std::span(bytes.data(), static_cast<std::size_t>(bytes.size()))));
    QCOMPARE(packed(samples, bits, WordOrder::BigEndian).toHex(), bytes.toHex());
    QCOMPARE(unpacked(bytes, bits, WordOrder::BigEndian, samples.size()), samples);
}

void TestSamples::everyCountSurvivesARoundTrip_data()
{
    QTest::addColumn<int>("bits");
    for (const int bits : {10, 12, 14, 16})
        QTest::addRow("%d bits", bits) << bits;
}

void TestSamples::everyCountSurvivesARoundTrip()
{
    QFETCH(int, bits);
    std::mt19937 random(1);
    for (std::size_t count = 0; count < 50; ++count) {
        Samples samples(count);
        for (auto &sample : samples)
            sample = static_cast<std::uint16_t>(random() & ((1U << bits) - 1));
        for (const auto order : {WordOrder::LittleEndian, WordOrder::BigEndian})
            QCOMPARE(unpacked(packed(samples, bits, order), bits, order, count), samples);
    }
}

void TestSamples::singlePackedSamples_data()
{
    everyCountSurvivesARoundTrip_data();
}

void TestSamples::singlePackedSamples()
{
    QFETCH(int, bits);
    const auto most = static_cast<std::uint16_t>((1U << bits) - 1);
    Samples samples{most, 0, 1, 2, most, most, 0, 5, 6, most, 7};
    const auto order = bits == 16 ? WordOrder::LittleEndian : WordOrder::BigEndian;
    QByteArray stream = packed(samples, bits, order);
    raw::PackedSamples single(
        std::as_writable_bytes(std::span(stream.data(), static_cast<std::size_t>(stream.size()))),
        bits);
    for (std::size_t index = 0; index < samples.size(); ++index) {
        QCOMPARE(single[index], samples[index]);
        samples[index] = static_cast<std::uint16_t>(most - samples[index]);
        single.set(index, samples[index]);
        QCOMPARE(stream.toHex(), packed(samples, bits, order).toHex());
    }
}

void TestSamples::unusedBitsOfTheLastWordAreZero()
{
    QCOMPARE(packed({1023}, 10, WordOrder::LittleEndian).toHex(), QByteArray("c0ff"));
    QCOMPARE(packed({1023}, 10, WordOrder::BigEndian).toHex(), QByteArray("ffc0"));
}

void TestSamples::swappingLeavesALastSingleByte()
{
    QByteArray bytes = QByteArray::fromHex("010203");
    raw::swapWordBytes(std::as_writable_bytes(std::span(bytes.data(), 3)));
    QCOMPARE(bytes.toHex(), QByteArray("020103"));
}

FILMWRIGHT_TEST(TestSamples, QCoreApplication)
#include "tst_samples.moc"
