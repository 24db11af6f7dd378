// SPDX-License-Identifier: MIT
#include "mlv_dump/framerepairer.h"

#include "support/testprogram.h"

#include <QTest>

#include <algorithm>
#include <functional>

using namespace mlvdump;

namespace {

constexpr mlv::FrameFormat smallFormat{32, 24, 14, 2048, 15000};

using Samples = std::vector<std::uint16_t>;

Samples drawn(const std::function<int(int x, int y)> &level)
{
    Samples samples;
    for (int y = 0; y < smallFormat.height; ++y)
        for (int x = 0; x < smallFormat.width; ++x)
            samples.push_back(static_cast<std::uint16_t>(level(x, y)));
    return samples;
}

std::uint16_t &at(Samples &samples, int x, int y)
{
    return samples[static_cast<std::size_t>(y * smallFormat.width + x)];
}

Repair repairOf(std::vector<Place> pixels)
{
    std::sort(pixels.begin(), pixels.end());
    Repair repair;
    repair.format = smallFormat;
    repair.pixels = std::move(pixels);
    return repair;
}

/// Colours as a Bayer pattern has them, brighter to the right and downwards.
int slope(int x, int y)
{
    return 3000 + (x % 2) * 900 + (y % 2) * 500 + x * 20 + y * 10;
}

} // namespace

class TestFrameRepairer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void pixelBecomesWhatItsNeighboursSay_data();
    void pixelBecomesWhatItsNeighboursSay();
    void edgeIsFollowed_data();
    void edgeIsFollowed();
    void badNeighboursDontCount();
    void clustersAreFilledFromTheirRims();
    void colourThatIsBadEverywhereStays();
    void everyFramesOwnPlaceHolds();
    void placesOutsideAreSkipped();
    void latticeIsRepairedOnItsLinesAlone();
    void rowsOfAnotherSensitivityAreStrangers();
    void nothingElseIsTouched();
    void packedSamplesAreRepairedAlike();
};

void TestFrameRepairer::pixelBecomesWhatItsNeighboursSay_data()
{
    QTest::addColumn<int>("x");
    QTest::addColumn<int>("y");
    QTest::addColumn<int>("tolerance"); // a neighbour on one side alone isn't the mean
    QTest::newRow("red") << 10 << 8 << 0;
    QTest::newRow("green") << 11 << 8 << 0;
    QTest::newRow("blue") << 11 << 9 << 0;
    QTest::newRow("left side") << 0 << 8 << 0;
    QTest::newRow("right side") << 31 << 8 << 0;
    QTest::newRow("first row") << 10 << 0 << 0;
    QTest::newRow("last row") << 10 << 23 << 0;
    QTest::newRow("corner") << 0 << 0 << 60;
    QTest::newRow("other corner") << 31 << 23 << 60;
}

void TestFrameRepairer::pixelBecomesWhatItsNeighboursSay()
{
    QFETCH(const int, x);
    QFETCH(const int, y);
    QFETCH(const int, tolerance);
    Samples samples = drawn(slope);
    at(samples, x, y) = 15000;
    const Repair repair = repairOf({{y, x}});
    FrameRepairer(repair).apply(samples, {0, 0});
    QVERIFY(std::abs(at(samples, x, y) - slope(x, y)) <= tolerance);
}

void TestFrameRepairer::edgeIsFollowed_data()
{
    QTest::addColumn<bool>("isUpright");
    QTest::newRow("upright") << true;
    QTest::newRow("level") << false;
}

void TestFrameRepairer::edgeIsFollowed()
{
    QFETCH(const bool, isUpright);
    const auto edge = [isUpright](int x, int y) { return (isUpright ? x : y) < 12 ? 3000 : 9000; };
    Samples samples = drawn(edge);
    std::vector<Place> places;
    for (const int at : {10, 11, 12, 13})
        places.push_back(isUpright ? Place{9, at} : Place{at, 9});
    for (const auto &place : places)
        at(samples, place.x, place.y) = 15000;
    const Repair repair = repairOf(places);
    FrameRepairer(repair).apply(samples, {0, 0});
    QCOMPARE(samples, drawn(edge));
}

void TestFrameRepairer::badNeighboursDontCount()
{
    Samples samples = drawn(slope);
    at(samples, 10, 8) = 15000;
    at(samples, 12, 8) = 2048;
    at(samples, 10, 10) = 2048;
    const Repair repair = repairOf({{8, 10}, {8, 12}, {10, 10}});
    FrameRepairer(repair).apply(samples, {0, 0});
    for (const auto &[y, x] : repair.pixels)
        QVERIFY(std::abs(at(samples, x, y) - slope(x, y)) <= 40);
}

void TestFrameRepairer::clustersAreFilledFromTheirRims()
{
    const auto even = [](int x, int y) { return 3000 + x % 2 * 900 + y % 2 * 500; };
    Samples samples = drawn(even);
    std::vector<Place> places;
    for (int y = 4; y < 18; ++y) {
        for (int x = 5; x < 25; ++x) {
            places.push_back({y, x});
            at(samples, x, y) = 12345;
        }
    }
    const Repair repair = repairOf(places);
    FrameRepairer(repair).apply(samples, {0, 0});
    QCOMPARE(samples, drawn(even));
}

void TestFrameRepairer::colourThatIsBadEverywhereStays()
{
    std::vector<Place> places;
    for (int y = 0; y < smallFormat.height; y += 2)
        for (int x = 0; x < smallFormat.width; x += 2)
            places.push_back({y, x});
    Samples samples = drawn(slope);
    const Repair repair = repairOf(places);
    FrameRepairer(repair).apply(samples, {0, 0});
    QCOMPARE(samples, drawn(slope));
}

void TestFrameRepairer::everyFramesOwnPlaceHolds()
{
    const Repair repair = repairOf({{.y = 100, .x = 200}});
    FrameRepairer repairer(repair);
    for (const Place crop :
         {Place{.y = 90, .x = 192}, Place{.y = 96, .x = 184}, Place{.y = 90, .x = 192}}) {
        Samples samples = drawn(slope);
        at(samples, 200 - crop.x, 100 - crop.y) = 15000;
        repairer.apply(samples, crop);
        QCOMPARE(samples, drawn(slope));
    }
}

void TestFrameRepairer::placesOutsideAreSkipped()
{
    const Repair repair = repairOf({{0, 0}, {9, 40}, {24, 10}, {65535, 65535}, {10, 32}});
    Samples samples = drawn([](int x, int y) { return 3000 + x * 31 + y * 17; });
    const Samples before = samples;
    FrameRepairer repairer(repair);
    repairer.apply(samples, {.y = 2, .x = 40});
    // Only (40, 9) lies within.
    samples[7 * 32] = before[7 * 32];
    QCOMPARE(samples, before);
}

void TestFrameRepairer::latticeIsRepairedOnItsLinesAlone()
{
    Repair repair = repairOf({});
    Lattice lattice;
    for (unsigned line = 0; line < Lattice::lines; line += 10)
        lattice.cell[line] = 0b1000'0000'1000'0000'1000'0000;
    lattice.firstLine = 5;
    lattice.lastLine = 15;
    repair.lattice = lattice;
    Samples samples = drawn([](int x, int y) { return x % 8 == 7 && y % 10 == 0 ? 3300 : 3000; });
    FrameRepairer(repair).apply(samples, {0, 0});
    QCOMPARE(samples,
             drawn([](int x, int y) { return x % 8 == 7 && (y == 0 || y == 20) ? 3300 : 3000; }));
}

/// Pairs of rows alternate between two sensitivities.
void TestFrameRepairer::rowsOfAnotherSensitivityAreStrangers()
{
    const auto pairs = [](int, int y) { return y / 2 % 2 == 0 ? 3000 : 9000; };
    Samples samples = drawn(pairs);
    Repair repair = repairOf({{8, 10}, {9, 10}, {10, 11}, {23, 31}, {0, 0}});
    repair.rowStep = 4;
    for (const auto &[y, x] : repair.pixels)
        at(samples, x, y) = 15000;
    FrameRepairer(repair).apply(samples, {0, 0});
    QCOMPARE(samples, drawn(pairs));
}

void TestFrameRepairer::nothingElseIsTouched()
{
    Samples samples = drawn([](int x, int y) { return 2048 + (x * 7919 + y * 104729) % 12000; });
    const Samples before = samples;
    const Repair repair = repairOf({{8, 10}});
    FrameRepairer(repair).apply(samples, {0, 0});
    samples[8 * 32 + 10] = before[8 * 32 + 10];
    QCOMPARE(samples, before);
}

void TestFrameRepairer::packedSamplesAreRepairedAlike()
{
    Repair repair = repairOf({{8, 10}, {8, 12}, {9, 12}, {0, 0}, {23, 31}});
    Samples samples =
        drawn([](int x, int y) { return slope(x, y) + (x * 7919 + y * 104729) % 900; });
    std::vector<std::byte> stream(raw::packedSize(samples.size(), smallFormat.bitsPerSample));
    const auto pack = [&] {
        raw::packSamples(samples, smallFormat.bitsPerSample, raw::WordOrder::BigEndian, stream);
    };
    pack();
    auto repaired = stream;
    FrameRepairer(repair).apply(raw::PackedSamples(repaired, smallFormat.bitsPerSample), {0, 0});
    FrameRepairer(repair).apply(samples, {0, 0});
    QVERIFY(repaired != stream);
    pack();
    QVERIFY(repaired == stream);
}

FILMWRIGHT_TEST(TestFrameRepairer, QCoreApplication)
#include "tst_framerepairer.moc"
