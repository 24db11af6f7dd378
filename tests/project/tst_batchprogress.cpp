// SPDX-License-Identifier: MIT
#include "fakeproject.h"
#include "project/batchprogress.h"

#include "support/testprogram.h"

#include <QDir>
#include <QTest>
#include <QTimer>

using namespace filmwright;
using namespace std::chrono_literals;

namespace {

/// A clock that the test moves.
struct Clock
{
    TimeEstimate::TimePoint now;
    BatchProgress::Clock function()
    {
        return [this] { return now; };
    }
};

} // namespace

class TestBatchProgress : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void noProjectIsWaiting();
    void stagesAreCountedInFrames();
    void blendedFramesAreCounted();
    void mergedPairsAreCounted();
    void batchIsKnownWhenAllFramesAre();
};

void TestBatchProgress::noProjectIsWaiting()
{
    BatchProgress progress;
    QCOMPARE(progress.update().stage, WorkStage::Waiting);
    QVERIFY(!progress.update().timeLeft);
}

void TestBatchProgress::stagesAreCountedInFrames()
{
    FakeProject fake(3);
    fake.setExtraction(FakeProject::extraction(2) +
                       QStringLiteral(" >/dev/null; while [ ! -e go ]; do sleep 0.01; done; "
                                      "echo dng > \"${prefix}000002.dng\"; echo Done"));
    fake.setConversion(QStringLiteral(
        "case $dng in *2.dng) while [ ! -e go2 ]; do sleep 0.01; done;; esac; cp \"$frame\" "
        "\"$tiff\""));
    fake.setEncoding(QStringLiteral("echo 'frame=    2 fps=1'; while [ ! -e go3 ]; do sleep 0.01; "
                                    "done; echo movie > \"$movie\""));
    const QString here = QDir::currentPath();
    QVERIFY(QDir::setCurrent(fake.path(QString())));
    BatchProgress progress;
    fake.read();
    progress.setProject(fake.controller.get());
    fake.launch();
    QCOMPARE(progress.update().stage, WorkStage::Extracting);
    QCOMPARE(progress.update().frames, quint64(3));
    QTRY_COMPARE(progress.update().framesDone, quint64(2));
    QVERIFY(QFile(QStringLiteral("go")).open(QIODevice::WriteOnly));
    QTRY_COMPARE(progress.update().stage, WorkStage::Converting);
    QCOMPARE(progress.update().frames, quint64(3));
    QTRY_COMPARE(progress.update().framesDone, quint64(2));
    QVERIFY(QFile(QStringLiteral("go2")).open(QIODevice::WriteOnly));
    QTRY_COMPARE(progress.update().stage, WorkStage::Encoding);
    QTRY_COMPARE(progress.update().framesDone, quint64(2));
    QCOMPARE(progress.update().frames, quint64(3));
    QVERIFY(QFile(QStringLiteral("go3")).open(QIODevice::WriteOnly));
    QTRY_COMPARE(progress.update().stage, WorkStage::Finished);
    progress.setProject(nullptr);
    QCOMPARE(progress.update().stage, WorkStage::Waiting);
    QVERIFY(QDir::setCurrent(here));
}

void TestBatchProgress::blendedFramesAreCounted()
{
    FakeProject fake(3);
    fake.setBlending(QStringLiteral("echo 'ISO : 100/800'; echo \"$1 : blended\"; echo \"$2 : not "
                                    "dual\"; while [ ! -e go ]; do sleep 0.01; done"));
    fake.read();
    fake.controller->setBlendsAlternatingRows(true);
    BatchProgress progress;
    progress.setProject(fake.controller.get());
    fake.launch();
    QTRY_COMPARE(progress.update().stage, WorkStage::Blending);
    QCOMPARE(progress.update().frames, quint64(3));
    QTRY_COMPARE(progress.update().framesDone, quint64(2));
    QVERIFY(QFile(fake.controller->extractionDirectory() + QStringLiteral("go"))
                .open(QIODevice::WriteOnly));
    QTRY_COMPARE(progress.update().stage, WorkStage::Finished);
}

void TestBatchProgress::mergedPairsAreCounted()
{
    FakeProject fake(4);
    fake.setEncoding(QStringLiteral(
        "while [ ! -e \"$movie.go\" ]; do sleep 0.01; done; echo movie > \"$movie\""));
    fake.read();
    fake.controller->setDualISO(true);
    BatchProgress progress;
    progress.setProject(fake.controller.get());
    QStringList seen;
    QTimer watch; // a look between any two events
    connect(&watch, &QTimer::timeout, this, [&] {
        const Progress now = progress.update();
        seen << QStringLiteral("%1 %2/%3")
                    .arg(stageName(now.stage))
                    .arg(now.framesDone)
                    .arg(now.frames);
    });
    watch.start(0ms);
    fake.launch();
    QTRY_COMPARE(progress.update().stage, WorkStage::Encoding);
    QCOMPARE(progress.update().frames, quint64(3));
    QVERIFY(QFile(fake.movie() + QStringLiteral(".go")).open(QIODevice::WriteOnly));
    QTRY_COMPARE(progress.update().stage, WorkStage::Finished);
    QVERIFY2(seen.contains(QStringLiteral("merging 1/3")), qPrintable(seen.join(QLatin1Char(' '))));
    QVERIFY(seen.contains(QStringLiteral("merging 2/3")));
    QVERIFY(seen.lastIndexOf(QStringLiteral("converting 4/4")) <
            seen.indexOf(QStringLiteral("merging 1/3")));
}

void TestBatchProgress::batchIsKnownWhenAllFramesAre()
{
    FakeProject fake(3);
    fake.setConversion(QStringLiteral(
        "while [ ! -e \"${dng%.dng}.go\" ]; do sleep 0.01; done; cp \"$frame\" \"$tiff\""));
    fake.read();
    const RecordingWork same = workOf(*fake.controller);
    QCOMPARE(same.frames, quint64(3));
    Clock clock;
    BatchProgress progress(clock.function());
    progress.setProject(fake.controller.get());
    progress.setUpcoming({same, same});
    fake.launch();
    QTRY_COMPARE(progress.update().stage, WorkStage::Converting);
    QVERIFY(!progress.update().batchTimeLeft);
    clock.now += 5s;
    QVERIFY(QFile(fake.frame(0, QStringLiteral("go"))).open(QIODevice::WriteOnly));
    QTRY_COMPARE(progress.update().framesDone, quint64(1));
    const Progress known = progress.update();
    QVERIFY(known.timeLeft);
    QVERIFY(known.timeLeft->count() >= 10); // two frames of 5 s, and the encoding
    QVERIFY(known.batchTimeLeft);
    QVERIFY(known.batchTimeLeft->count() >= known.timeLeft->count() + 30);

    RecordingWork unknown = same;
    unknown.frames = 0;
    progress.setUpcoming({same, unknown});
    QVERIFY(progress.update().timeLeft);
    QVERIFY(!progress.update().batchTimeLeft);
    progress.setUpcoming({});
    QCOMPARE(progress.update().batchTimeLeft->count(), progress.update().timeLeft->count());
    fake.controller->stop();
    for (int frame : {1, 2})
        QVERIFY(QFile(fake.frame(frame, QStringLiteral("go"))).open(QIODevice::WriteOnly));
}

FILMWRIGHT_TEST(TestBatchProgress, QCoreApplication)
#include "tst_batchprogress.moc"
