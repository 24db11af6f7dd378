// SPDX-License-Identifier: MIT
// Stops, interrupts and destroys units with running tools at arbitrary moments. Run under the
// thread sanitizer it looks for races, elsewhere for hangs, leftovers and late frames.
#include "conversion/dcrawprocess.h"
#include "conversion/tiffbitmap.h"
#include "frames.h"
#include "sluice/slunitprocessmanager.h"
#include "support/processes.h"
#include "support/testprogram.h"
#include "support/toolfolder.h"

#include <QDir>
#include <QImage>
#include <QTemporaryDir>
#include <QTest>

#include <chrono>
#include <random>
#include <thread>

using namespace filmwright;

namespace {

// Half a frame, a moment, the whole frame: a stop may fall anywhere in between.
const QString slowDcraw = QStringLiteral(
    "for last; do :; done; tiff=\"${last%.*}.tiff\"; echo $$ >> \"$0.pids\"; head -c 20 "
    "\"$0.tiff\" > \"$tiff\"; sleep 0.01; tail -c +21 \"$0.tiff\" >> \"$tiff\"");

std::mt19937 generator(20240611); // fixed, so that a failing order of actions comes again

int random(int bound)
{
    return std::uniform_int_distribution(0, bound - 1)(generator);
}

class Counter : public QObject
{
    Q_OBJECT

public:
    void count(const QImage &) { ++images; }
    int images = 0;
};

} // namespace

class tst_DCRawProcessStress : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void stopAndDestroyAtAnyMoment_data();
    void stopAndDestroyAtAnyMoment();
};

void tst_DCRawProcessStress::stopAndDestroyAtAnyMoment_data()
{
    QTest::addColumn<int>("workers");
    QTest::addColumn<int>("rounds");
    QTest::newRow("one worker") << 1 << 60;
    QTest::newRow("two workers") << 2 << 60;
    QTest::newRow("eight workers") << 8 << 20;
}

void tst_DCRawProcessStress::stopAndDestroyAtAnyMoment()
{
    QFETCH(int, workers);
    QFETCH(int, rounds);
    ToolFolder tools;
    tools.addTool(QStringLiteral("dcraw"), slowDcraw);
    QVERIFY(countingBitmap(8, 8).write(tools.path() + QStringLiteral("/dcraw.tiff")));
    for (int round = 0; round < rounds; ++round) {
        const QTemporaryDir folder;
        Counter counter;
        auto manager = std::make_unique<SLUnitProcessManager>();
        std::vector<std::shared_ptr<DCRawProcess>> units;
        for (int i = 0; i < workers; ++i) {
            units.push_back(std::make_shared<DCRawProcess>());
            SLOutlet *image = units.back()->outputForKey(QStringLiteral("Image"));
            image->setTarget(&counter);
            image->setSelector(&Counter::count);
            manager->addUnitProcess(units.back());
        }
        for (int run = random(3); run >= 0; --run) {
            for (const auto &unit : units) {
                const auto first = QStringLiteral("%1.dng").arg(round * 1000 + run * 100);
                unit->addFilePath(folder.filePath(QString::number(&unit - units.data()) + first));
                unit->addFilePath(folder.filePath(QString::number(&unit - units.data()) +
                                                  QLatin1Char('x') + first));
            }
            manager->execute();
            std::this_thread::sleep_for(std::chrono::microseconds(random(30000)));
            QCoreApplication::processEvents();
            if (run > 0) {
                manager->stop();
                for (const auto &unit : units)
                    unit->interrupt();
            }
        }
        manager.reset();
        const int images = counter.images;
        QCoreApplication::processEvents();
        QCOMPARE(counter.images, images);
        const QStringList frames = QDir(folder.path()).entryList(QDir::Files);
        for (const QString &frame : frames)
            QVERIFY2(TiffBitmap::isWhole(folder.filePath(frame)), qPrintable(frame));
    }
    QFile pids(tools.path() + QStringLiteral("/dcraw.pids"));
    QVERIFY(pids.open(QIODevice::ReadOnly));
    const QList<QByteArray> started = pids.readAll().simplified().split(' ');
    for (const QByteArray &pid : started)
        QVERIFY(!processRuns(pid.toLongLong()));
}

FILMWRIGHT_TEST(tst_DCRawProcessStress, QCoreApplication)
#include "tst_dcrawprocess_stress.moc"
