// SPDX-License-Identifier: MIT
#include "mlv_dump/flatfield.h"

#include "raw/error.h"
#include "support/testprogram.h"

#include <QTest>

#include <algorithm>
#include <cstdio>
#include <random>

using mlvdump::FlatField;
using Samples = std::vector<std::uint16_t>;

namespace {

constexpr mlv::FrameFormat format{64, 64, 14, 2048, 15000};

/// A flat with some spread: the level and `spread` less in every fourth sample of each position.
Samples flatOf(int level, int spread)
{
    Samples flat(format.sampleCount());
    for (std::size_t i = 0; i < flat.size(); ++i) {
        const bool lower = i / 2 % 4 == 0;
        flat[i] = static_cast<std::uint16_t>(level - (lower ? spread : 0));
    }
    return flat;
}

std::uint16_t corrected(const FlatField &flat, std::uint16_t level, std::size_t at)
{
    Samples samples(format.sampleCount(), level);
    flat.apply(samples);
    return samples[at];
}

} // namespace

class TestFlatField : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void medianIsTheLargestLevelThatLessThanHalfReach();
    void everySampleFollowsTheFormula();
    void everyLevelIsAsExactAsWithIntegers();
    void colourOfAPositionIsKept();
    void resultStaysWithinTheDepth();
    void samplesBelowBlackStayBelowIt();
    void deadSampleTakesItsBrighterNeighbour();
    void deadSampleAmongDeadOnesIsLeftAlone();
    void flatWithoutLightIsRefused_data();
    void flatWithoutLightIsRefused();
};

void TestFlatField::medianIsTheLargestLevelThatLessThanHalfReach()
{
    // A quarter of the samples is at 6000, the others at 7000: the half is passed at 7000 and the
    // twentieth at 6000, each counted up to the level below.
    const FlatField flat(flatOf(7000, 1000), format);
    QCOMPARE(QString::fromStdString(flat.description()),
             QStringLiteral("Flat-field median: [4951 4951; 4951 4951], adjusted by 3951/4951"));
}

void TestFlatField::everySampleFollowsTheFormula()
{
    const FlatField flat(flatOf(7000, 1000), format);
    // (6000 - 2048) * 4951 * 3951 / 4951 / (7000 - 2048) + 2048
    QCOMPARE(corrected(flat, 6000, 2), std::uint16_t{3952 * 3951 / 4952 + 2048});
    QCOMPARE(corrected(flat, 6000, 0), std::uint16_t{3952 * 3951 / 3952 + 2048});
}

void TestFlatField::everyLevelIsAsExactAsWithIntegers()
{
    constexpr mlv::FrameFormat deepest{64, 64, 16, 0, 65535};
    std::mt19937 random(1);
    for (const unsigned brightest : {300U, 5000U, 65535U}) {
        Samples light(deepest.sampleCount());
        for (auto &level : light)
            level = static_cast<std::uint16_t>(brightest - random() % (brightest / 2));
        const FlatField flat(light, deepest);
        long long m[4] = {};
        long long numerator = 0;
        long long denominator = 0;
        QCOMPARE(std::sscanf(flat.description().c_str(),
                             "Flat-field median: [%lld %lld; %lld %lld], adjusted by %lld/%lld",
                             &m[0], &m[1], &m[2], &m[3], &numerator, &denominator),
                 6);
        for (int round = 0; round < 50; ++round) {
            Samples samples(deepest.sampleCount());
            std::generate(samples.begin(), samples.end(),
                          [&] { return static_cast<std::uint16_t>(random()); });
            auto corrected = samples;
            flat.apply(corrected);
            for (std::size_t i = 0; i < samples.size(); ++i) {
                const auto median = m[i / 64 % 2 * 2 + i % 2];
                const auto even = samples[i] * median * numerator / denominator / light[i];
                QCOMPARE(static_cast<long long>(corrected[i]), std::min(even, 65535LL));
            }
        }
    }
}

void TestFlatField::colourOfAPositionIsKept()
{
    auto samples = flatOf(7000, 1000);
    for (std::size_t i = 0; i < samples.size(); ++i)
        if (i / 64 % 2 == 0 && i % 2 == 0)
            samples[i] = static_cast<std::uint16_t>(samples[i] - 2000); // red is darker
    const FlatField flat(samples, format);
    const int red = corrected(flat, 6000, 2);
    const int green = corrected(flat, 6000, 3);
    QVERIFY(std::abs(red - green) <= 1);
}

void TestFlatField::resultStaysWithinTheDepth()
{
    auto samples = flatOf(7000, 1000);
    samples[0] = 2049; // a gain of thousands
    const FlatField flat(samples, format);
    QCOMPARE(corrected(flat, 16383, 0), std::uint16_t{16383});
    QCOMPARE(corrected(flat, 0, 0), std::uint16_t{0});
}

void TestFlatField::samplesBelowBlackStayBelowIt()
{
    const FlatField flat(flatOf(7000, 1000), format);
    // Each division cuts toward zero, below zero too.
    QCOMPARE(corrected(flat, 2000, 2), std::uint16_t{2048 - 48 * 3951 / 4952});
}

void TestFlatField::deadSampleTakesItsBrighterNeighbour()
{
    auto samples = flatOf(7000, 1000);
    samples[37] = 0;
    samples[36] = 6500;
    samples[38] = 6700;
    const FlatField flat(samples, format);
    QCOMPARE(corrected(flat, 6000, 37), std::uint16_t{3952 * 3951 / (6700 - 2048) + 2048});
    samples[64] = 2048; // the first of its row: its left neighbour is itself
    samples[65] = 6600;
    const FlatField atEdge(samples, format);
    QCOMPARE(corrected(atEdge, 6000, 64), std::uint16_t{3952 * 3951 / (6600 - 2048) + 2048});
}

void TestFlatField::deadSampleAmongDeadOnesIsLeftAlone()
{
    auto samples = flatOf(7000, 1000);
    samples[36] = 7;
    samples[37] = 100;
    samples[38] = 50;
    const FlatField flat(samples, format);
    QCOMPARE(corrected(flat, 6000, 37), std::uint16_t{6000});
}

void TestFlatField::flatWithoutLightIsRefused_data()
{
    QTest::addColumn<int>("level");
    QTest::newRow("black") << 2048;
    QTest::newRow("nothing") << 0;
    QTest::newRow("one level above black") << 2049;
}

void TestFlatField::flatWithoutLightIsRefused()
{
    QFETCH(int, level);
    QVERIFY_THROWS_EXCEPTION(raw::Error, FlatField(flatOf(level, 0), format));
}

FILMWRIGHT_TEST(TestFlatField, QCoreApplication)
#include "tst_flatfield.moc"
