// SPDX-License-Identifier: MIT
#include "filmedfaults.h"

#include "support/testprogram.h"

#include <QTest>

#include <algorithm>

using mlvdump::Place;
using mlvdump::RepairChoice;
using sample::Subject;

namespace {

std::vector<sample::Place> cell(std::initializer_list<sample::Place> places)
{
    return places;
}

const sample::Lattice lattice1080{8, 10, cell({{1, 3}, {5, 1}, {2, 6}, {6, 8}})};
const sample::Lattice lattice720{8, 12, cell({{6, 2}, {5, 3}, {2, 8}, {1, 9}})};
const sample::Lattice latticeCrop{24, 60,
                                  cell({{0, 4},
                                        {12, 16},
                                        {18, 18},
                                        {11, 19},
                                        {17, 23},
                                        {23, 31},
                                        {0, 34},
                                        {12, 46},
                                        {6, 48},
                                        {11, 49},
                                        {5, 53},
                                        {23, 1}})};
const sample::Lattice latticeWide{12, 6, cell({{6, 0}, {11, 1}, {0, 4}, {5, 5}})};

std::size_t common(const std::vector<Place> &one, const std::vector<Place> &other)
{
    std::vector<Place> both;
    std::set_intersection(one.begin(), one.end(), other.begin(), other.end(),
                          std::back_inserter(both));
    return both.size();
}

} // namespace

class TestRepairSurvey : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void plantedPixelsAreFound_data();
    void plantedPixelsAreFound();
    void sceneIsLeftAlone_data();
    void sceneIsLeftAlone();
};

void TestRepairSurvey::plantedPixelsAreFound_data()
{
    QTest::addColumn<sample::Settings>("settings");
    const auto row = [](const char *name, sample::Settings settings, sample::SensorFaults faults) {
        settings.faults = std::move(faults);
        QTest::newRow(name) << settings;
    };
    const auto landscape = film(Subject::Landscape);
    row("60 hot and cold ones", landscape, {.hotPixels = 40, .coldPixels = 20});
    row("stuck ones", landscape, {.stuckPixels = 20});
    row("60 before a wall", film(Subject::Flat), {.hotPixels = 40, .coldPixels = 20});
    const int middle = 28 + landscape.height / 2;
    const int eighth = landscape.height / 8;
    row("1080p, in a band", landscape,
        {.lattices = {lattice1080},
         .firstLatticeLine = middle - eighth,
         .lastLatticeLine = middle + eighth});
    row("1080p, everywhere", landscape, {.lattices = {lattice1080}});
    row("720p", landscape, {.lattices = {lattice720}});
    row("1080p and 720p over each other", landscape, {.lattices = {lattice1080, lattice720}});
    row("crop", landscape, {.lattices = {latticeCrop}});
    row("wide net", landscape, {.lattices = {latticeWide}});
    row("faint", landscape, {.lattices = {lattice720}, .latticeRed = 0.97, .latticeBlue = 1.03});
    row("before the chart", film(Subject::Chart), {.lattices = {lattice1080}});
    row("before a wall, with pixels", film(Subject::Flat),
        {.hotPixels = 40, .coldPixels = 20, .lattices = {latticeCrop}});
    auto panned = landscape;
    panned.pans = true;
    row("panned", panned, {.hotPixels = 40, .lattices = {lattice1080}});
    auto compressed = landscape;
    compressed.bits = 10;
    row("10 bits", compressed, {.hotPixels = 40, .lattices = {lattice1080}});
    auto sensitive = landscape;
    sensitive.iso = 3200;
    row("high sensitivity", sensitive,
        {.hotPixels = 40, .lattices = {lattice1080}, .latticeRed = 0.8, .latticeBlue = 1.2});
    row("columns of other gains too", landscape,
        {.hotPixels = 40,
         .lattices = {lattice1080},
         .columnGains = {1, 1.01, 0.99, 1, 1.005, 0.995, 1, 1}});
    auto perfect = landscape;
    perfect.perfect = true;
    row("without noise", perfect, {.hotPixels = 40, .lattices = {lattice1080}});
}

void TestRepairSurvey::plantedPixelsAreFound()
{
    QFETCH(const sample::Settings, settings);
    const auto wanted = faultyPlaces(settings);
    const auto search = foundRepair(settings, {.pixels = RepairChoice::Pixels::Auto});
    const auto places = repairedPlaces(search.repair, settings);
    const auto hits = common(wanted, places);
    const auto samples =
        static_cast<std::size_t>(settings.width) * static_cast<std::size_t>(settings.height);
    // The sensor's own hot pixels are among the others.
    const auto others = places.size() - hits;
    qInfo("%zu of %zu, others %zu (%.4f %%)", hits, wanted.size(), others,
          100.0 * static_cast<double>(others) / static_cast<double>(samples));
    // Nobody sees a stuck pixel whose level the scene always has about it.
    const std::size_t least = settings.faults.stuckPixels > 0 ? 90 : 99; // per cent
    QVERIFY(100 * hits >= least * wanted.size());
    QVERIFY(10000 * others <= samples);
}

void TestRepairSurvey::sceneIsLeftAlone_data()
{
    QTest::addColumn<sample::Settings>("settings");
    QTest::newRow("stars") << film(Subject::Stars);
    QTest::newRow("fine textures") << film(Subject::Texture);
    QTest::newRow("specular points") << film(Subject::Specular);
    QTest::newRow("moving grain") << film(Subject::Grain);
    QTest::newRow("moving landscape") << film(Subject::Landscape);
    QTest::newRow("chart") << film(Subject::Chart);
    QTest::newRow("wall") << film(Subject::Flat);
    QTest::newRow("darkness") << film(Subject::Dark);
}

void TestRepairSurvey::sceneIsLeftAlone()
{
    QFETCH(sample::Settings, settings);
    const auto samples =
        static_cast<std::size_t>(settings.width) * static_cast<std::size_t>(settings.height);
    for (const bool perfect : {false, true}) {
        settings.perfect = perfect;
        const auto search =
            foundRepair(settings, {.pixels = RepairChoice::Pixels::Auto, .columns = true});
        const auto places = repairedPlaces(search.repair, settings);
        qInfo("touched %zu of %zu (%.4f %%)", places.size(), samples,
              100.0 * static_cast<double>(places.size()) / static_cast<double>(samples));
        QVERIFY(10000 * places.size() < samples);
        QVERIFY(!search.repair.lattice);
        QVERIFY(!search.repair.columns);
    }
}

FILMWRIGHT_TEST(TestRepairSurvey, QCoreApplication)
#include "tst_repairsurvey.moc"
