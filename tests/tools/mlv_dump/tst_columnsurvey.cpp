// SPDX-License-Identifier: MIT
#include "filmedfaults.h"

#include "mlv_dump/columnsurvey.h"
#include "support/testprogram.h"

#include <QTest>

#include <cmath>
#include <numeric>

using mlvdump::ColumnGains;
using sample::Subject;

namespace {

using Gains = std::array<double, 8>;

constexpr Gains tenths{1.003, 0.997, 1.0, 1.002, 0.999, 1.004, 0.998, 1.001};
const mlvdump::RepairChoice columnsAlone{.columns = true};

} // namespace

class TestColumnSurvey : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void gainsAreMeasured_data();
    void gainsAreMeasured();
    void columnsOfOneGainStayAsTheyAre_data();
    void columnsOfOneGainStayAsTheyAre();
    void redWithGainsOfItsOwnIsEvenedOutByThese();
    void samplesNearBlackAndClippedOnesStay();
};

void TestColumnSurvey::gainsAreMeasured_data()
{
    QTest::addColumn<sample::Settings>("settings");
    const auto row = [](const char *name, sample::Settings settings, const Gains &gains) {
        settings.faults.columnGains = gains;
        QTest::newRow(name) << settings;
    };
    const auto landscape = film(Subject::Landscape);
    row("some tenths of a per cent", landscape, tenths);
    row("strong ones", landscape, {1.02, 0.98, 1.01, 0.99, 1.0, 1.015, 0.985, 1.0});
    row("one column alone", landscape, {1, 1, 1, 1.006, 1, 1, 1, 1});
    row("before a wall", film(Subject::Flat), tenths);
    auto compressed = landscape;
    compressed.bits = 12;
    row("12 bits", compressed, tenths);
    auto panned = landscape;
    panned.pans = true;
    row("panned", panned, tenths);
}

void TestColumnSurvey::gainsAreMeasured()
{
    QFETCH(const sample::Settings, settings);
    const auto search = foundRepair(settings, columnsAlone);
    QVERIFY(search.repair.columns);
    const auto &planted = settings.faults.columnGains;
    const double mean = std::accumulate(planted.begin(), planted.end(), 0.0) / 8;
    for (std::size_t column = 0; column < planted.size(); ++column) {
        for (const auto &line : search.repair.columns->gains) {
            const double off = line[column] - planted[column] / mean;
            QVERIFY2(std::abs(off) < 0.0015, qPrintable(QString::number(off)));
        }
    }
}

void TestColumnSurvey::columnsOfOneGainStayAsTheyAre_data()
{
    QTest::addColumn<sample::Settings>("settings");
    const Subject subjects[] = {Subject::Landscape, Subject::Flat,  Subject::Chart,
                                Subject::Texture,   Subject::Grain, Subject::Stars,
                                Subject::Specular,  Subject::Dark};
    for (const auto subject : subjects)
        QTest::addRow("subject %d", static_cast<int>(subject)) << film(subject);
    auto slight = film(Subject::Landscape);
    slight.faults.columnGains = {1.001, 0.9995, 1, 1, 1, 0.9995, 1, 1};
    QTest::newRow("gains that nobody sees") << slight;
}

void TestColumnSurvey::columnsOfOneGainStayAsTheyAre()
{
    QFETCH(const sample::Settings, settings);
    const auto search = foundRepair(settings, columnsAlone);
    QVERIFY(search.repair.isEmpty());
    QCOMPARE(search.remarks, std::vector<std::string>{"Repaired columns: none"});
}

/// As cameras have that read each colour by amplifiers of its own.
void TestColumnSurvey::redWithGainsOfItsOwnIsEvenedOutByThese()
{
    constexpr mlv::FrameFormat format{400, 300, 14, 2048, 15000};
    std::vector<std::uint16_t> samples(format.sampleCount());
    const auto gainOf = [](int x, int y) { return y % 2 == 0 && x % 8 == 2 ? 1.02 : 1.0; };
    for (int y = 0; y < format.height; ++y) {
        for (int x = 0; x < format.width; ++x) {
            samples[static_cast<std::size_t>(y * format.width + x)] = static_cast<std::uint16_t>(
                2048 + (x % 2 == y % 2 ? 4000 : 6000) * gainOf(x, y) + (x * 7 + y * 3) % 5);
        }
    }
    mlvdump::ColumnSurvey survey(format);
    for (int frame = 0; frame < 8; ++frame)
        survey.add(samples, 0, 0);
    const auto result = survey.result();
    QVERIFY(result.gains);
    // Even columns of red are compared among each other.
    const auto &red = result.gains->gains[0];
    QVERIFY(std::abs(red[2] / red[0] - 1.02) < 0.001);
    const auto &green = result.gains->gains[1];
    QVERIFY(std::abs(green[2] / green[0] - 1) < 0.001);
}

void TestColumnSurvey::samplesNearBlackAndClippedOnesStay()
{
    constexpr mlv::FrameFormat format{8, 1, 14, 2048, 15000};
    ColumnGains gains{};
    gains.gains[0].fill(0.98);
    gains.gains[1].fill(1);
    std::vector<std::uint16_t> samples{2048, 2048 + 63, 2048 + 64, 7048, 14900, 15000, 15010, 1900};
    const std::vector<std::uint16_t> even{2048, 2048 + 63, 2113, 7150, 15000, 15000, 15010, 1900};
    gains.evenOut(samples, format, 0, 0);
    QCOMPARE(samples, even);
    // The lines of the read-out count, not those of the frame.
    gains.evenOut(samples, format, 0, 1);
    QCOMPARE(samples, even);
}

FILMWRIGHT_TEST(TestColumnSurvey, QCoreApplication)
#include "tst_columnsurvey.moc"
