// SPDX-License-Identifier: MIT
#include "mlv_dump/colour.h"

#include "recordingbuilder.h"
#include "support/testprogram.h"

#include <QTest>

#include <cmath>

using mlv::WhiteBalance;
using mlv::WhiteBalanceMode;
using mlvdump::Neutral;

namespace {

mlvdump::ColourMatrix matrix()
{
    return mlvdump::colourMatrix(RecordingBuilder::rawInfo());
}

Neutral neutralOf(WhiteBalance balance)
{
    return mlvdump::asShotNeutral(&balance, matrix());
}

bool isNear(const Neutral &neutral, double red, double blue)
{
    constexpr double rounding = 0.00015; // of figures with four decimals and of the formula
    return std::abs(neutral[0] - red) < rounding && neutral[1] == 1.0 &&
           std::abs(neutral[2] - blue) < rounding;
}

} // namespace

class TestColour : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void neutralOfATemperature_data();
    void neutralOfATemperature();
    void temperatureOfAMode_data();
    void temperatureOfAMode();
    void customGainsAreTheNeutral();
    void equalCustomGainsAreNeutral();
    void customWithoutGainsIsDaylight();
    void automaticWithoutTemperatureTakesTheGains();
    void automaticWithoutAnythingIsDaylight();
    void withoutABlockIsDaylight();
    void temperatureIsLimited();
    void unusableMatrixIsReplaced_data();
    void unusableMatrixIsReplaced();
    void noNumbersMakeTheNeutralUnusable();
};

void TestColour::neutralOfATemperature_data()
{
    QTest::addColumn<double>("kelvin");
    QTest::addColumn<double>("red");
    QTest::addColumn<double>("blue");
    QTest::newRow("3200 K") << 3200.0 << 0.6869 << 0.4116;
    QTest::newRow("4000 K") << 4000.0 << 0.5808 << 0.5001;
    QTest::newRow("5200 K") << 5200.0 << 0.4944 << 0.6127;
    QTest::newRow("5500 K") << 5500.0 << 0.4801 << 0.6365;
    QTest::newRow("6500 K") << 6500.0 << 0.4442 << 0.7046;
    QTest::newRow("7000 K") << 7000.0 << 0.4310 << 0.7328;
}

void TestColour::neutralOfATemperature()
{
    QFETCH(double, kelvin);
    QFETCH(double, red);
    QFETCH(double, blue);
    QVERIFY(isNear(mlvdump::neutralOfKelvin(kelvin, matrix()), red, blue));
    const WhiteBalance balance{
        WhiteBalanceMode::Kelvin, static_cast<quint32>(kelvin), 1024, 1024, 1024, 0, 0};
    QVERIFY(isNear(neutralOf(balance), red, blue));
}

void TestColour::temperatureOfAMode_data()
{
    QTest::addColumn<quint32>("mode");
    QTest::addColumn<double>("kelvin");
    QTest::newRow("auto") << 0U << 5200.0;
    QTest::newRow("daylight") << 1U << 5500.0;
    QTest::newRow("cloudy") << 2U << 6000.0;
    QTest::newRow("tungsten") << 3U << 3200.0;
    QTest::newRow("fluorescent") << 4U << 4000.0;
    QTest::newRow("flash") << 5U << 5500.0;
    QTest::newRow("unknown") << 7U << 5500.0;
    QTest::newRow("shade") << 8U << 7000.0;
    QTest::newRow("kelvin") << 9U << 5200.0;
}

void TestColour::temperatureOfAMode()
{
    QFETCH(quint32, mode);
    QFETCH(double, kelvin);
    const WhiteBalance balance{WhiteBalanceMode{mode}, 5200, 500, 1024, 700, 0, 0};
    QVERIFY(neutralOf(balance) == mlvdump::neutralOfKelvin(kelvin, matrix()));
}

void TestColour::customGainsAreTheNeutral()
{
    QVERIFY(isNear(neutralOf({WhiteBalanceMode::Custom, 5200, 500, 1024, 700, 0, 0}), 0.48828,
                   0.68359));
}

void TestColour::equalCustomGainsAreNeutral()
{
    QVERIFY(isNear(neutralOf({WhiteBalanceMode::Custom, 5200, 1024, 1024, 1024, 0, 0}), 1, 1));
}

void TestColour::customWithoutGainsIsDaylight()
{
    QVERIFY(isNear(neutralOf({WhiteBalanceMode::Custom, 5200, 0, 0, 0, 0, 0}), 0.4801, 0.6365));
}

void TestColour::automaticWithoutTemperatureTakesTheGains()
{
    QVERIFY(isNear(neutralOf({WhiteBalanceMode::Auto, 0, 500, 1024, 700, 0, 0}), 0.48828, 0.68359));
}

void TestColour::automaticWithoutAnythingIsDaylight()
{
    QVERIFY(isNear(neutralOf({WhiteBalanceMode::Auto, 0, 1024, 1024, 1024, 0, 0}), 0.4801, 0.6365));
    QVERIFY(isNear(neutralOf({WhiteBalanceMode::Auto, 0, 0, 0, 0, 0, 0}), 0.4801, 0.6365));
}

void TestColour::withoutABlockIsDaylight()
{
    QVERIFY(isNear(mlvdump::asShotNeutral(nullptr, matrix()), 0.4801, 0.6365));
}

void TestColour::temperatureIsLimited()
{
    QVERIFY(mlvdump::neutralOfKelvin(1, matrix()) == mlvdump::neutralOfKelvin(2000, matrix()));
    QVERIFY(mlvdump::neutralOfKelvin(1e9, matrix()) == mlvdump::neutralOfKelvin(25000, matrix()));
}

void TestColour::unusableMatrixIsReplaced_data()
{
    QTest::addColumn<int>("numerator");
    QTest::addColumn<int>("denominator");
    QTest::newRow("all zero") << 0 << 0;
    QTest::newRow("zero denominators") << 1 << 0;
    QTest::newRow("no rank") << 1 << 1;
    QTest::newRow("huge") << 2000000000 << 1;
}

void TestColour::unusableMatrixIsReplaced()
{
    QFETCH(int, numerator);
    QFETCH(int, denominator);
    auto info = RecordingBuilder::rawInfo();
    for (std::size_t i = 0; i < info.colourMatrix.size(); i += 2) {
        info.colourMatrix[i] = numerator;
        info.colourMatrix[i + 1] = denominator;
    }
    const auto replaced = mlvdump::colourMatrix(info);
    QCOMPARE(replaced[0], 3.2406);
    QCOMPARE(replaced[8], 1.0570);
}

void TestColour::noNumbersMakeTheNeutralUnusable()
{
    for (const quint32 gain : {0U, 1U, 0x7fffffffU, 0xffffffffU}) {
        for (quint32 mode = 0; mode < 11; ++mode) {
            const auto neutral = neutralOf({WhiteBalanceMode{mode}, gain, gain, 1024, gain, 0, 0});
            for (const double value : neutral)
                QVERIFY(value >= 0.01 && value <= 100);
        }
    }
}

FILMWRIGHT_TEST(TestColour, QCoreApplication)
#include "tst_colour.moc"
