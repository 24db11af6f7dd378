// SPDX-License-Identifier: MIT
// What is wrong with the cameras that mlv_sample can be told to have.
#include "levels.h"
#include "recordedblocks.h"
#include "sampleprogram.h"

#include "mlv_sample/faults.h"
#include "mlv_sample/frames.h"
#include "support/testprogram.h"
#include "support/words.h"

#include <QDir>
#include <QTest>

#include <cmath>

namespace {

sample::Settings perfectWall()
{
    sample::Settings settings;
    settings.width = 160;
    settings.height = 120;
    settings.subject = sample::Subject::Flat;
    settings.perfect = true;
    settings.crop = {72, 28};
    return settings;
}

std::vector<std::uint16_t> frameOf(const sample::Settings &settings, int number = 0)
{
    return sample::FrameMaker(settings).make(number);
}

std::size_t indexOf(const sample::Place &place, const sample::Place &crop)
{
    return static_cast<std::size_t>((place.y - crop.y) * 160 + place.x - crop.x);
}

double lightRatio(std::uint16_t sample, std::uint16_t other)
{
    return static_cast<double>(sample - black) / (other - black);
}

} // namespace

class TestSensorFaults : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void singlePixelsAreOfTheirKind();
    void latticeFollowsTheLight();
    void faultsStandStillInTheReadOut();
    void columnsHaveTheirGains();
    void fullSensorIsFullInEveryColumn();
    void movingScenesMoveAndOthersDont_data();
    void movingScenesMoveAndOthersDont();
    void everyFrameTellsItsPlace();
    void clipLiesBelowTheRecordedWhite();
    void otherCamerasMatrixIsNoted();
    void otherLevelsAreNotedHalfway();
    void partsAreLostOrSpelledOtherwise();

private:
    QTemporaryDir m_folder;
};

void TestSensorFaults::singlePixelsAreOfTheirKind()
{
    auto settings = perfectWall();
    const auto clean = frameOf(settings);
    settings.faults.hotPixels = 20;
    settings.faults.coldPixels = 10;
    settings.faults.stuckPixels = 5;
    const auto faulty = frameOf(settings);
    const sample::Faults faults(settings);
    QCOMPARE(faults.pixels().size(), std::size_t{35});
    std::size_t changed = 0;
    for (std::size_t i = 0; i < clean.size(); ++i)
        changed += clean[i] != faulty[i] ? 1U : 0U;
    QCOMPARE(changed, std::size_t{35});
    for (const auto &[place, kind, level] : faults.pixels()) {
        const auto at = indexOf(place, settings.crop);
        if (kind == sample::FaultyPixel::Kind::Hot)
            QCOMPARE(int{faulty[at]}, std::min(white, static_cast<int>(clean[at] + level + 0.5F)));
        else if (kind == sample::FaultyPixel::Kind::Cold)
            QVERIFY(lightRatio(faulty[at], clean[at]) < 0.11);
        else
            QVERIFY(std::abs(faulty[at] - black - level) <= 1);
    }
}

void TestSensorFaults::latticeFollowsTheLight()
{
    auto settings = perfectWall();
    const auto clean = frameOf(settings);
    settings.faults.lattices = {{8, 10, {{1, 3}, {2, 6}}}};
    settings.faults.latticeRed = 0.8;
    settings.faults.latticeBlue = 1.1;
    settings.faults.lastLatticeLine = 99;
    const auto faulty = frameOf(settings);
    for (int y = 0; y < 120; ++y) {
        for (int x = 0; x < 160; ++x) {
            const auto i = static_cast<std::size_t>(y * 160 + x);
            const bool isBlue = (x + 72) % 8 == 1 && (y + 28) % 10 == 3;
            const bool isRed = (x + 72) % 8 == 2 && (y + 28) % 10 == 6;
            const double response = y + 28 > 99 ? 1 : isBlue ? 1.1 : isRed ? 0.8 : 1;
            QVERIFY(std::abs(lightRatio(faulty[i], clean[i]) - response) < 0.001);
        }
    }
    QCOMPARE(sample::Faults(settings).latticePlaces(0).size(), std::size_t{20 * 14});
}

void TestSensorFaults::faultsStandStillInTheReadOut()
{
    auto settings = perfectWall();
    settings.pans = true;
    const auto clean = frameOf(settings, 3);
    settings.faults.hotPixels = 20;
    const auto faulty = frameOf(settings, 3);
    const auto crop = sample::cropOf(settings, 3);
    QVERIFY(crop != settings.crop);
    int seen = 0;
    const sample::Faults faults(settings);
    for (const auto &pixel : faults.pixels()) {
        const auto &place = pixel.place;
        if (place.x >= crop.x && place.y >= crop.y) {
            QVERIFY(faulty[indexOf(place, crop)] > clean[indexOf(place, crop)]);
            ++seen;
        }
    }
    QVERIFY(seen > 10);
}

void TestSensorFaults::columnsHaveTheirGains()
{
    auto settings = perfectWall();
    const auto clean = frameOf(settings);
    settings.faults.columnGains = {1.01, 0.99, 1, 1, 1, 1.02, 1, 0.98};
    const auto striped = frameOf(settings);
    for (std::size_t i = 0; i < clean.size(); ++i) {
        const double gain = settings.faults.columnGains[i % 160 % 8];
        QVERIFY(std::abs(lightRatio(striped[i], clean[i]) - gain) < 0.001);
    }
}

void TestSensorFaults::fullSensorIsFullInEveryColumn()
{
    auto settings = perfectWall();
    settings.clip = 3000;
    settings.faults.columnGains = {0.9, 1.1, 1, 1, 1, 1, 1, 1};
    const auto clipped = frameOf(settings);
    QVERIFY(std::ranges::all_of(clipped, [](int level) { return level == 3000; }));
}

void TestSensorFaults::movingScenesMoveAndOthersDont_data()
{
    QTest::addColumn<int>("subject");
    QTest::addColumn<bool>("moves");
    QTest::newRow("stars") << static_cast<int>(sample::Subject::Stars) << false;
    QTest::newRow("texture") << static_cast<int>(sample::Subject::Texture) << false;
    QTest::newRow("specular points") << static_cast<int>(sample::Subject::Specular) << false;
    QTest::newRow("grain") << static_cast<int>(sample::Subject::Grain) << true;
    QTest::newRow("landscape") << static_cast<int>(sample::Subject::Landscape) << true;
}

void TestSensorFaults::movingScenesMoveAndOthersDont()
{
    QFETCH(const int, subject);
    QFETCH(const bool, moves);
    auto settings = perfectWall();
    settings.subject = static_cast<sample::Subject>(subject);
    const auto first = frameOf(settings, 0);
    QCOMPARE(frameOf(settings, 5) != first, moves);
    const auto [least, most] = std::ranges::minmax(first);
    QVERIFY(most - least > 1000);
}

void TestSensorFaults::everyFrameTellsItsPlace()
{
    const auto file =
        readRecording(writeSample(m_folder, words("--crop 72x28 --pan --no-sound --scene stars")));
    QList<int> places;
    for (const auto &block : file.ofType("VIDF")) {
        const auto frame = block.as<mlv::VideoFrame>();
        QCOMPARE(frame.panX, frame.cropX);
        places << frame.cropX << frame.cropY;
    }
    QCOMPARE(places, (QList<int>{72, 28, 72, 30, 80, 32}));
}

void TestSensorFaults::clipLiesBelowTheRecordedWhite()
{
    const auto file = readRecording(
        writeSample(m_folder, words("--clip 13500 --recorded-white 16200 --bits 12")));
    QCOMPARE(file.ofType("RAWI").at(0).as<mlv::RawInfo>().whiteLevel, 16200);
    auto settings = perfectWall();
    settings.clip = 13500;
    settings.bits = 12;
    settings.iso = 100;
    settings.hdrStops = 4;
    QCOMPARE(std::ranges::max(frameOf(settings, 1)), std::uint16_t{13500 / 4});
}

void TestSensorFaults::otherCamerasMatrixIsNoted()
{
    const auto file = readRecording(writeSample(
        m_folder, words("--model 0x80000270 "
                        "--recorded-matrix 6461,-1164,-857,-3825,11597,2534,-416,1540,6039")));
    QCOMPARE(file.ofType("IDNT").at(0).as<mlv::Identity>().model, 0x80000270U);
    const auto info = file.ofType("RAWI").at(0).as<mlv::RawInfo>();
    QCOMPARE(info.colourMatrix[0], 6461);
    QCOMPARE(info.colourMatrix[1], 10000);
    QCOMPARE(info.colourMatrix[16], 6039);
}

void TestSensorFaults::otherLevelsAreNotedHalfway()
{
    const auto path =
        writeSample(m_folder, words("--frames 8 --no-sound --later-levels 1024/13000"));
    const auto file = readRecording(path);
    const auto infos = file.ofType("RAWI");
    QCOMPARE(infos.size(), 2);
    QCOMPARE(infos.at(1).as<mlv::RawInfo>().blackLevel, 1024);
    const auto told = runProgram(builtProgram(QStringLiteral("mlv_dump")),
                                 {QStringLiteral("-m"), QStringLiteral("-v"), path});
    QVERIFY(told.output.contains(
        "from frame 4 on other levels or colours are recorded; the first ones hold"));
}

void TestSensorFaults::partsAreLostOrSpelledOtherwise()
{
    const auto files = [this] {
        return QDir(m_folder.path()).entryList({QStringLiteral("part*")}, QDir::Files, QDir::Name);
    };
    writeSample(m_folder, words("--split 4 --lose 1 --lower-case"), QStringLiteral("part.MLV"));
    QCOMPARE(files(), (QStringList{QStringLiteral("part.MLV"), QStringLiteral("part.m00"),
                                   QStringLiteral("part.m02")}));
}

FILMWRIGHT_TEST(TestSensorFaults, QCoreApplication)
#include "tst_sensorfaults.moc"
