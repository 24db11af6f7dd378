// SPDX-License-Identifier: MIT
#include "faketools.h"

#include "project/recordingrun.h"
#include "runner/temporarydirectory.h"
#include "support/events.h"
#include "support/testprogram.h"

#include <QFileInfo>
#include <QSemaphore>
#include <QTest>
#include <QThreadPool>

using namespace filmwright;

namespace {

/// A recording on its way, tools that behave, and a log of what the shell is told.
class FakeRun : public FakeTools, public MLVProjectControllerProtocol
{
public:
    explicit FakeRun(int frames = 2)
        : FakeTools(frames)
        , run(project, recording(), this)
    {
        QVERIFY2(setBaseTemporaryDirectory(path(QString())), "no temporary directory");
        QVERIFY2(QFile(recording()).open(QIODevice::WriteOnly), "no recording");
        QObject::connect(&run, &RecordingRun::ended, &run, [this] { ++ends; });
    }

    QString recording() const { return path(QStringLiteral("clip.MLV")); }

    void start()
    {
        movies = {};
        run.start(settings, movies);
    }
    bool waitForEnds(int wanted)
    {
        return QTest::qWaitFor([this, wanted] { return ends == wanted; }, 60000);
    }
    /// The first arguments of mlv_dump's runs so far.
    QString mlvDumpRuns() const
    {
        QStringList runs;
        for (const QStringList &call : tools.calls(QStringLiteral("mlv_dump")))
            runs << call.constFirst();
        return runs.join(QLatin1Char(' '));
    }

    void controllerUpdated(MLVProjectController &) override { ++told; }
    void imageRGBReceived(const QImage &, MLVProjectController &) override { ++told; }
    void controllerWorkFinished(MLVProjectController &) override { ++told; }
    void controllerWorkError(const QString &error) override { errors << error; }

    ConversionSettings settings;
    BatchMovies movies;
    MLVProjectController project;
    RecordingRun run;
    int ends = 0;
    int told = 0;
    QStringList errors;
};

} // namespace

class TestRecordingRun : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void recordingThatWasNeverReadIsReadFirst()
    {
        FakeRun fake;
        fake.start();
        QVERIFY(fake.waitForEnds(1));
        QCOMPARE(fake.mlvDumpRuns(), QStringLiteral("-m --dng"));
        const RecordingOutcome &outcome = fake.run.outcome();
        QCOMPARE(outcome.result, RecordingOutcome::Finished);
        QCOMPARE(outcome.movie, fake.path(QStringLiteral("clip.mov")));
        QCOMPARE(outcome.frames, 2);
        QCOMPARE(outcome.errors(), QStringList());
    }

    void recordingThatWasReadIsNotReadAgain()
    {
        FakeRun fake;
        fake.run.read();
        QVERIFY(fake.waitForEnds(1));
        QCOMPARE(fake.run.outcome().result, RecordingOutcome::NotBegun);
        fake.start();
        QVERIFY(fake.waitForEnds(2));
        QCOMPARE(fake.mlvDumpRuns(), QStringLiteral("-m --dng"));
    }

    void changedRecordingIsReadAgain()
    {
        FakeRun fake;
        fake.run.read();
        QVERIFY(fake.waitForEnds(1));
        QVERIFY(QFile(fake.path(QStringLiteral("clip.M00"))).open(QIODevice::WriteOnly));
        fake.start();
        QVERIFY(fake.waitForEnds(2));
        QCOMPARE(fake.mlvDumpRuns(), QStringLiteral("-m -m --dng"));
    }

    void startDuringTheReadingWaitsForItsEnd()
    {
        FakeRun fake;
        fake.setBeforeReport(
            QStringLiteral("while [ ! -e \"$recording.go\" ]; do sleep 0.05; done"));
        fake.run.read();
        fake.start();
        fake.project.readyToGo();
        deliverEvents();
        QVERIFY(fake.run.isPending());
        QVERIFY(QFile(fake.recording() + QStringLiteral(".go")).open(QIODevice::WriteOnly));
        QVERIFY(fake.waitForEnds(1));
        QCOMPARE(fake.run.outcome().result, RecordingOutcome::Finished);
        QCOMPARE(fake.mlvDumpRuns(), QStringLiteral("-m --dng"));
    }

    void oddFramesAreRefusedBeforeAnyIsMade()
    {
        FakeRun fake;
        fake.setRawInformation(QStringLiteral("321x240"), 14);
        fake.start();
        QVERIFY(fake.waitForEnds(1));
        QCOMPARE(fake.run.outcome().result, RecordingOutcome::Failed);
        QCOMPARE(fake.run.outcome().failure.error,
                 QStringLiteral("MOV holds no frames of 321x240 pixels: both have to be even; "
                                "choose AVI"));
        QCOMPARE(fake.mlvDumpRuns(), QStringLiteral("-m"));
        fake.settings.format = MovieFormatAVI;
        fake.start();
        QVERIFY(fake.waitForEnds(2));
        QCOMPARE(fake.run.outcome().result, RecordingOutcome::Finished);
    }

    void framesThatItDoesntHaveAreRefusedBeforeAnyIsMade()
    {
        FakeRun fake;
        fake.settings.frames = {2, 3};
        fake.start();
        QVERIFY(fake.waitForEnds(1));
        QCOMPARE(fake.run.outcome().result, RecordingOutcome::Failed);
        QCOMPARE(fake.run.outcome().failure.error,
                 QStringLiteral("the frames 2-3 are asked for, but it has only 2"));
        QCOMPARE(fake.mlvDumpRuns(), QStringLiteral("-m"));
    }

    void movieOfSomeFramesIsWhole()
    {
        FakeRun fake(5);
        fake.settings.frames = {2, 3};
        fake.setExtraction(FakeRun::extraction(2));
        FakeRun::writeMovie(fake.path(QStringLiteral("whole.mov")), 2);
        fake.start();
        QVERIFY(fake.waitForEnds(1));
        QCOMPARE(fake.run.outcome().errors(), QStringList());
        QCOMPARE(fake.run.outcome().frames, 2);
    }

    void filledGapsCountAsFrames()
    {
        FakeRun fake;
        fake.setBlock(QStringLiteral("LENS\nFrames with filled gaps: 4"), {});
        fake.settings.frames = {4, 4};
        fake.start();
        QVERIFY(fake.waitForEnds(1));
        QCOMPARE(fake.mlvDumpRuns(), QStringLiteral("-m --dng"));
    }

    void exposureIsDcrawsBrightness_data()
    {
        QTest::addColumn<double>("exposure");
        QTest::addColumn<QString>("brightness");
        QTest::newRow("none") << 0.0 << "4.000000";
        QTest::newRow("twice") << 1.0 << "8.000000";
        QTest::newRow("an eighth") << -3.0 << "0.500000";
        QTest::newRow("a third of a stop") << 0.333 << "5.038520";
    }

    void exposureIsDcrawsBrightness()
    {
        QFETCH(double, exposure);
        FakeRun fake;
        fake.settings.corrections.exposure = exposure;
        fake.start();
        QVERIFY(fake.waitForEnds(1));
        const QList<QStringList> calls = fake.tools.calls(QStringLiteral("dcraw"));
        QCOMPARE(calls.size(), 2);
        QCOMPARE(calls.constFirst().size(), 10);
        QTEST(calls.constFirst().at(8), "brightness");
        // The next movie is as bright as ever.
        fake.settings.corrections.exposure = 0;
        fake.start();
        QVERIFY(fake.waitForEnds(2));
        QCOMPARE(fake.tools.calls(QStringLiteral("dcraw")).constLast().at(8),
                 QStringLiteral("4.000000"));
    }

    void tableOfColoursThatIsGoneFailsTheRecording()
    {
        FakeRun fake;
        fake.settings.recipe.emplace().extension = QStringLiteral("mov");
        fake.settings.lut = fake.path(QStringLiteral("none.cube"));
        fake.start();
        QVERIFY(fake.waitForEnds(1));
        QCOMPARE(fake.run.outcome().failure.error,
                 fake.settings.lut + QStringLiteral(": No such file or directory"));
        QVERIFY(fake.tools.calls(QStringLiteral("ffmpeg")).isEmpty());
    }

    void refusedRecordingEndsAfterTheCallWithoutATool()
    {
        FakeRun fake;
        QCOMPARE(fake.movies.claim(fake.recording(), fake.settings), QString());
        fake.run.start(fake.settings, fake.movies);
        QCOMPARE(fake.ends, 0);
        QVERIFY(fake.waitForEnds(1));
        QCOMPARE(fake.run.outcome().result, RecordingOutcome::Failed);
        QVERIFY(fake.run.outcome().failure.error.startsWith(
            QLatin1String("its movie would replace that of another recording, ")));
        QCOMPARE(fake.mlvDumpRuns(), QString());
    }

    void missingAverageIsRefused()
    {
        FakeRun fake;
        fake.settings.calibration.dark = fake.recording();
        fake.start();
        QVERIFY(fake.waitForEnds(1));
        QCOMPARE(fake.run.outcome().failure.error,
                 QStringLiteral("the average of its calibration recordings isn't there"));
        QCOMPARE(fake.mlvDumpRuns(), QString());
    }

    void rawFramesAreNotMerged()
    {
        FakeRun fake;
        fake.settings.mergesNeighbours = true;
        fake.settings.recipe.emplace().extension = QStringLiteral("dng");
        fake.settings.recipe->id = QStringLiteral("raw");
        fake.start();
        QVERIFY(fake.waitForEnds(1));
        QCOMPARE(fake.run.outcome().failure.error,
                 QStringLiteral("the recipe raw keeps the frames raw, and only developed "
                                "neighbours can be merged"));
        QCOMPARE(fake.mlvDumpRuns(), QString());
    }

    void failureSaysWhichToolAndItsLines()
    {
        FakeRun fake;
        fake.setEncoding(QStringLiteral("echo smoke; echo fire; exit 3"));
        fake.start();
        QVERIFY(fake.waitForEnds(1));
        const Failure &failure = fake.run.outcome().failure;
        QCOMPARE(failure.error, QStringLiteral("ffmpeg ended with status 3: fire"));
        QCOMPARE(failure.tool, QStringLiteral("ffmpeg"));
        QCOMPARE(failure.lines, (QStringList{QStringLiteral("smoke"), QStringLiteral("fire")}));
        QVERIFY(!failure.concernsBatch);
    }

    void errorLineIsToldAndConcernsTheBatch()
    {
        FakeRun fake;
        fake.setExtraction(QStringLiteral("echo '[ERROR] no room'; exit 1"));
        fake.start();
        QVERIFY(fake.waitForEnds(1));
        QCOMPARE(fake.errors, QStringList{QStringLiteral("[ERROR] no room")});
        QCOMPARE(fake.run.outcome().failure.error, QStringLiteral("no room"));
        QVERIFY(fake.run.outcome().failure.concernsBatch);
    }

    void failedConversionIsStopped()
    {
        FakeRun fake(3);
        fake.setConversion(
            QStringLiteral("case $dng in *1.dng) exit 1;; esac; cp \"$frame\" \"$tiff\""));
        fake.setEncoding(QStringLiteral("exec sleep 60"));
        fake.start();
        QVERIFY(fake.waitForEnds(1));
        QVERIFY(!fake.project.isToolBusy());
        QVERIFY(!QFileInfo::exists(fake.project.extractionDirectory()));
    }

    void unfinishedWorkIsKeptWhenAsked()
    {
        FakeRun fake;
        fake.settings.keepsUnfinishedWork = true;
        fake.setEncoding(QStringLiteral("exit 1"));
        fake.setConversion(QStringLiteral("exit 1"));
        fake.start();
        QVERIFY(fake.waitForEnds(1));
        QVERIFY(QFileInfo::exists(fake.project.extractionDirectory()));
        fake.run.discardWork();
        QVERIFY(!QFileInfo::exists(fake.project.extractionDirectory()));
        QVERIFY(!QFileInfo::exists(fake.path(QStringLiteral("FilmwrightTmp/clip.MLV.origin"))));
    }

    /// Its mark is held until then.
    void startWhileTheMovieIsBeingJudgedWaits()
    {
        FakeRun fake;
        QSemaphore disk;
        QThreadPool *const pool = QThreadPool::globalInstance();
        for (int thread = 0; thread < pool->maxThreadCount(); ++thread)
            pool->start([&disk] { disk.acquire(); });
        fake.start();
        QVERIFY(QTest::qWaitFor(
            [&fake] { return fake.project.mlvProjectMode() == MLVProjectModeFinished; }, 60000));
        QVERIFY(fake.run.isPending());
        fake.start();
        deliverEvents();
        QCOMPARE(fake.ends, 0);
        disk.release(pool->maxThreadCount());
        QVERIFY(fake.waitForEnds(1));
        QCOMPARE(fake.run.outcome().failure.error, QString());
        QCOMPARE(fake.tools.calls(QStringLiteral("ffmpeg")).size(), 2);
    }

    void stoppedRunTellsNoEnd()
    {
        FakeRun fake;
        fake.setEncoding(QStringLiteral("exec sleep 60"));
        fake.start();
        QVERIFY(QTest::qWaitFor(
            [&fake] { return fake.project.mlvProjectMode() == MLVProjectModeBuildingMovie; },
            60000));
        fake.run.stop();
        QCOMPARE(fake.run.outcome().result, RecordingOutcome::Interrupted);
        settle();
        QCOMPARE(fake.ends, 0);
    }

    /// Not even of its own stop.
    void detachedRunTellsNobody()
    {
        FakeRun fake;
        fake.setExtraction(QStringLiteral("exec sleep 60"));
        fake.start();
        QVERIFY(QTest::qWaitFor(
            [&fake] { return fake.project.mlvProjectMode() == MLVProjectModeExtracting; }, 60000));
        const int told = fake.told;
        fake.run.detach();
        settle();
        QCOMPARE(fake.told, told);
        QCOMPARE(fake.ends, 0);
        QVERIFY(!fake.project.isToolBusy());
    }
};

FILMWRIGHT_TEST(TestRecordingRun, QCoreApplication)
#include "tst_recordingrun.moc"
