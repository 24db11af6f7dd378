// SPDX-License-Identifier: MIT
// Colour constants, multipliers and tone curves: the check values are what the installed dcraw
// computes with.
#include "dcraw/colour.h"
#include "dcraw/multipliers.h"
#include "dcraw/notcovered.h"
#include "dcraw/tone.h"

#include "support/testprogram.h"

#include <QtMath>

#include <QTest>

#include <algorithm>

namespace {

constexpr std::array<std::array<double, 3>, 3> canon{
    {{0.6722, -0.0635, -0.0963}, {-0.4287, 1.2460, 0.2028}, {-0.0908, 0.2162, 0.5668}}};

/// FNV-1a of the entries' bytes, little-endian.
std::uint32_t hashOf(const std::vector<std::uint16_t> &table)
{
    std::uint32_t hash = 2166136261;
    for (const std::uint16_t value : table)
        for (const int shift : {0, 8})
            hash = (hash ^ (value >> shift & 0xff)) * 16777619;
    return hash;
}

dcraw::Negative negative()
{
    dcraw::Negative negative;
    negative.neutral = {0.5, 1, 0.8};
    negative.black = 2048;
    negative.white = 15000;
    return negative;
}

const dcraw::CameraColour daylightOnly{{}, {}, {2, 1, 1.5, 1}};

} // namespace

class TestDcrawConstants : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void matricesOfACamera();
    void sRgbIsTheCamerasOwnMatrix();
    void outputSpacesMultiplyIt();

    void cameraWhiteBalanceComesFirst();
    void givenMultipliersComeNext();
    void missingGreensAreFilledIn();
    void daylightOtherwise_data();
    void daylightOtherwise();
    void clippedHighlightsMakeTheSmallestOne();
    void scaleReachesWhite();
    void extremeWhiteBalances_data();
    void extremeWhiteBalances();

    void stepsOfTheUsualCurve_data();
    void stepsOfTheUsualCurve();
    void sixteenBitCurves_data();
    void sixteenBitCurves();
    void sixteenBitValues();
    void powerOfTheProfile_data();
    void powerOfTheProfile();
};

void TestDcrawConstants::matricesOfACamera()
{
    const auto colour = dcraw::cameraColour(canon);
    constexpr dcraw::Matrix toRgb{{{1.96439946F, -1.11970997F, 0.155310526F},
                                   {-0.241156131F, 1.67372191F, -0.432565778F},
                                   {0.013886869F, -0.549819946F, 1.53593314F}}};
    constexpr dcraw::Matrix toXyz{{{0.764365017F, 0.0394143388F, 0.196220636F},
                                   {0.24630779F, 0.919169188F, -0.165476948F},
                                   {0.0206026807F, -0.316514373F, 1.29591167F}}};
    QVERIFY(colour.cameraToRgb == toRgb);
    QVERIFY(colour.cameraToXyz == toXyz);
    QCOMPARE(colour.daylight[3], colour.daylight[1]);
}

void TestDcrawConstants::sRgbIsTheCamerasOwnMatrix()
{
    const auto colour = dcraw::cameraColour(canon);
    QVERIFY(dcraw::cameraToOutput(colour.cameraToRgb, 1) == colour.cameraToRgb);
}

void TestDcrawConstants::outputSpacesMultiplyIt()
{
    constexpr dcraw::Matrix unit{{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
    const auto adobe = dcraw::cameraToOutput(unit, 2);
    QCOMPARE(adobe[0][1], 0.284856F);
    QCOMPARE(adobe[2][2], 0.958839F);
    QCOMPARE(dcraw::cameraToOutput(unit, 3)[1][0], 0.095413F);
    QCOMPARE(dcraw::cameraToOutput(unit, 4)[2][0], 0.016879F);
    QCOMPARE(dcraw::cameraToOutput(unit, 5)[0][2], 0.180423F);
    QCOMPARE(dcraw::cameraToOutput(unit, 6)[2][1], 0.118150F);
}

void TestDcrawConstants::cameraWhiteBalanceComesFirst()
{
    dcraw::Options options;
    options.highlights = 3;
    options.cameraWhiteBalance = true;
    options.multipliers = {1, 1, 1, 1};
    QVERIFY(dcraw::multipliers(negative(), options, daylightOnly) ==
            (std::array<float, 4>{1, 0.5F, 0.625F, 0.5F}));
}

void TestDcrawConstants::givenMultipliersComeNext()
{
    dcraw::Options options;
    options.highlights = 1;
    options.multipliers = {2, 1, 4, 3};
    QVERIFY(dcraw::multipliers(negative(), options, daylightOnly) ==
            (std::array<float, 4>{0.5F, 0.25F, 1, 0.75F}));
}

void TestDcrawConstants::missingGreensAreFilledIn()
{
    dcraw::Options options;
    options.highlights = 1;
    options.multipliers = {2, 0, 4, 0};
    QVERIFY(dcraw::multipliers(negative(), options, daylightOnly) ==
            (std::array<float, 4>{0.5F, 0.25F, 1, 0.25F}));
}

void TestDcrawConstants::daylightOtherwise_data()
{
    QTest::addColumn<bool>("isGiven");
    QTest::newRow("nothing is given") << false;
    QTest::newRow("a red of 0 gives nothing") << true;
}

void TestDcrawConstants::daylightOtherwise()
{
    QFETCH(bool, isGiven);
    dcraw::Options options;
    options.highlights = 3;
    if (isGiven)
        options.multipliers = {0, 1, 1, 1};
    QVERIFY(dcraw::multipliers(negative(), options, daylightOnly) ==
            (std::array<float, 4>{1, 0.5F, 0.75F, 0.5F}));
}

void TestDcrawConstants::clippedHighlightsMakeTheSmallestOne()
{
    dcraw::Options options;
    options.cameraWhiteBalance = true;
    QVERIFY(dcraw::multipliers(negative(), options, daylightOnly) ==
            (std::array<float, 4>{2, 1, 1.25F, 1}));
}

void TestDcrawConstants::scaleReachesWhite()
{
    const auto scale = dcraw::scaleOf(negative(), {1, 0.5F, 0.25F, 0.5F});
    QCOMPARE(scale[0], static_cast<float>(65535.0 / 12952));
    QCOMPARE(scale[2], static_cast<float>(0.25 * 65535.0 / 12952));
}

void TestDcrawConstants::extremeWhiteBalances_data()
{
    QTest::addColumn<QList<double>>("numbers");
    QTest::newRow("too far apart") << QList<double>{1001, 1, 1, 1};
    QTest::newRow("too small") << QList<double>{0.0000009, 0.0000009, 0.0000009, 0.0000009};
    QTest::newRow("too large") << QList<double>{1000001, 1000001, 1000001, 1000001};
    QTest::newRow("no blue") << QList<double>{1, 1, 0, 1};
}

void TestDcrawConstants::extremeWhiteBalances()
{
    QFETCH(QList<double>, numbers);
    dcraw::Options options;
    std::copy_n(numbers.cbegin(), 4, options.multipliers.emplace().begin());
    QVERIFY_THROWS_EXCEPTION(dcraw::NotCovered,
                             dcraw::multipliers(negative(), options, daylightOnly));
}

void TestDcrawConstants::stepsOfTheUsualCurve_data()
{
    QTest::addColumn<double>("brightness");
    QTest::addColumn<QList<int>>("firsts");
    QTest::newRow("1") << 1.0 << QList<int>{57, 114, 171, 911, 5129, 17021, 40026, 64506, 65020};
    QTest::newRow("4") << 4.0 << QList<int>{15, 29, 43, 228, 1283, 4256, 10007, 16127, 16255};
    QTest::newRow("32") << 32.0 << QList<int>{2, 4, 6, 29, 161, 532, 1251, 2016, 2032};
}

void TestDcrawConstants::stepsOfTheUsualCurve()
{
    QFETCH(double, brightness);
    const auto table = dcraw::toneTable({}, brightness, false);
    QList<int> firsts;
    for (const int value : {1, 2, 3, 16, 64, 128, 200, 254, 255}) {
        firsts << static_cast<int>(std::lower_bound(table.begin(), table.end(), value) -
                                   table.begin());
    }
    QTEST(firsts, "firsts");
    QCOMPARE(table.back(), std::uint16_t{255});
    // Steps and entries are two ways to the same table.
    const auto fine = dcraw::toneTable({}, brightness, true);
    QVERIFY(
        std::equal(table.begin(), table.end(), fine.begin(),
                   [](std::uint16_t coarse, std::uint16_t full) { return coarse == full >> 8; }));
}

void TestDcrawConstants::sixteenBitCurves_data()
{
    QTest::addColumn<double>("exponent");
    QTest::addColumn<double>("slope");
    QTest::addColumn<double>("brightness");
    QTest::addColumn<quint32>("hash");
    QTest::newRow("usual, 1") << 0.45 << 4.5 << 1.0 << quint32{0xb35d89ff};
    QTest::newRow("usual, 4") << 0.45 << 4.5 << 4.0 << quint32{0x41a40c06};
    QTest::newRow("usual, 32") << 0.45 << 4.5 << 32.0 << quint32{0xc8bb8a8f};
    QTest::newRow("linear, 4") << 1.0 << 1.0 << 4.0 << quint32{0xd7943dc5};
    QTest::newRow("2.4 and 12.92, 1") << 1 / 2.4 << 12.92 << 1.0 << quint32{0xfc6c1340};
}

void TestDcrawConstants::sixteenBitCurves()
{
    QFETCH(double, exponent);
    QFETCH(double, slope);
    QFETCH(double, brightness);
    QTEST(quint32{hashOf(dcraw::toneTable({exponent, slope}, brightness, true))}, "hash");
}

void TestDcrawConstants::sixteenBitValues()
{
    const auto table = dcraw::toneTable({}, 4, true);
    QCOMPARE(table[1], std::uint16_t{18});
    QCOMPARE(table[1000], std::uint16_t{13961});
    QCOMPARE(table[10000], std::uint16_t{51183});
    QCOMPARE(table[30000], std::uint16_t{65535});
}

void TestDcrawConstants::powerOfTheProfile_data()
{
    QTest::addColumn<double>("exponent");
    QTest::addColumn<double>("slope");
    QTest::addColumn<int>("power");
    QTest::newRow("usual") << 0.45 << 4.5 << 0x1ef;
    QTest::newRow("linear") << 1.0 << 1.0 << 0x100;
    QTest::newRow("2.4 and 12.92") << 1 / 2.4 << 12.92 << 0x239;
    QTest::newRow("2.2 without a straight part") << 1 / 2.2 << 0.0 << 0x233;
}

void TestDcrawConstants::powerOfTheProfile()
{
    QFETCH(double, exponent);
    QFETCH(double, slope);
    QTEST(qFloor(dcraw::meanPower(dcraw::toneCurve({exponent, slope})) + 0.5), "power");
}

FILMWRIGHT_TEST(TestDcrawConstants, QCoreApplication)
#include "tst_dcraw_constants.moc"
