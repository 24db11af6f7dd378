// SPDX-License-Identifier: MIT
#include "mlvdump/mlvdumptask.h"
#include "mlvdump/reportqueue.h"
#include "runner/temporarydirectory.h"
#include "support/events.h"
#include "support/logcapture.h"
#include "support/processes.h"
#include "support/testprogram.h"
#include "support/toolfolder.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include <functional>
#include <stdexcept>

using namespace filmwright;

namespace {

class Listener : public MlvDumpTaskProtocol
{
public:
    void metaExtractionFinished(MlvDumpTask &) override { events << QStringLiteral("meta"); }
    void dngExtractionFinished(MlvDumpTask &) override
    {
        events << QStringLiteral("dng");
        if (whenTold)
            whenTold();
    }
    void dngExtractionAborted(MlvDumpTask &) override { events << QStringLiteral("aborted"); }
    void processingDarkFinished(MlvDumpTask &) override { events << QStringLiteral("dark"); }
    void processingFlatFinished(MlvDumpTask &) override { events << QStringLiteral("flat"); }
    void processingFlatDarkFinished(MlvDumpTask &) override
    {
        events << QStringLiteral("flat dark");
    }
    void processingFlatDarkSubstractionFinished(MlvDumpTask &) override
    {
        events << QStringLiteral("flat dark substraction");
    }
    void error(const QString &error, MlvDumpTask &) override
    {
        events << QStringLiteral("error ") + error;
        if (whenTold)
            whenTold();
    }

    QStringList events;
    std::function<void()> whenTold; // of extracted frames or an error
};

const QString clip = QStringLiteral("/v/a.MLV");
const QString mlvDump = QStringLiteral("mlv_dump");

} // namespace

class TestMlvDumpTask : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void mlvPathFallsBackToTheCalibrationPaths();
    void extractionDirectoryIsNamedAfterTheRecording();
    void extractionDirectoryOfACalibrationTaskIsTheTemporaryDirectory();

    void metaRunReadsTheReport();
    void metaRunForgetsEarlierValues();
    void cutOffReportIsLoggedAndNeverFinishes();
    void warningsOfAReportAndItsExtractionAreKeptOnceEach();
    void metaRunForgetsEarlierWarnings();
    void errorLineThatAlsoSaysDoneFinishesTheRun();
    void secondDoneLineReportsNothing();

    void unusableRecordingIsAReportWithoutFrames();
    void unusableRecordingFinishesNoFrameRun();
    void newRunForgetsWhyTheRecordingWasUnusable();

    void everyRunForgetsTheError();
    void newRunForgetsTheOldOnesLines();

    void framesWithoutCalibration();
    void framesOfAClip();
    void framesWithDark();
    void framesWithCorrections();
    void framesOfASelection_data();
    void framesOfASelection();
    void framesWithFlat();
    void framesWithDarkAndFlat();
    void frameRunCreatesAPrivateDirectory();
    void doneEndsTheFrameToolAtOnce();
    void completeExtractionIsReused();
    void completeSelectionIsReused();
    void extractionWithAGapIsMadeAnew();
    void otherIndexUsesAnExistingDirectoryAsItIs();
    void unknownFrameCountUsesAnExistingDirectoryAsItIs();
    void synchronousFrameRunReportsBeforeItReturns();
    void frameRunWithoutARecordingThrows();

    void gapsInTheNumberingAreClosed();
    void framesInCapitalsAreCountedInTheRenumbering();
    void otherFilesTakePartInTheRenumbering();

    void averagingRuns_data();
    void averagingRuns();
    void errorDeletesTheAverage_data();
    void errorDeletesTheAverage();
    void averagingErrorTextBeforeDoneIsNoCount();
    void countStandsBehindTheFirstBlank();
    void secondDoneLineOfAnAverageHasNoLineBeforeIt();
    void substractionArguments();
    void substractionRunsWithADarkAlone();
    void substractionWithoutCalibrationDoesNothing();
    void substractionErrorDeletesNothing();

    void abortIsReportedLater();
    void abortOfAnIdleTaskIsReportedToo();
    void abortForgetsTheError();
    void abortedReportThatWaitsForItsTurnNeverStarts();
    void killedReportGivesItsTurnAway();
    void reportThatAnErrorEndsGivesItsTurnAway();

private:
    void knowFrames(int count);
    QString frame(int number) const
    {
        return m_task->extractionDirectory() +
               QStringLiteral("tmp%1.dng").arg(number, 6, 10, QLatin1Char('0'));
    }
    void touch(const QString &path)
    {
        QVERIFY(QDir().mkpath(QFileInfo(path).path()));
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(path.toUtf8());
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<ToolFolder> m_tools;
    std::unique_ptr<MlvDumpTask> m_task;
    Listener m_listener;
};

void TestMlvDumpTask::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(setBaseTemporaryDirectory(m_folder->path()));
    m_tools = std::make_unique<ToolFolder>();
    m_tools->addTool(mlvDump,
                     QStringLiteral("echo 'Processed 8 video frames at 25.00 FPS (0.32 s)'; "
                                    "echo Done"));
    m_task = MlvDumpTask::mlvDumpTask();
    m_task->setDelegate(&m_listener);
    m_task->setMlvPath(clip);
    m_listener.events.clear();
    m_listener.whenTold = nullptr;
}

void TestMlvDumpTask::cleanup()
{
    m_task.reset();
    m_tools.reset();
    m_folder.reset();
}

/// Lets a report tell the task how many frames the recording has.
void TestMlvDumpTask::knowFrames(int count)
{
    const LogCapture log;
    m_task->extractMeta();
    for (const QString &line :
         {QStringLiteral("File Header (MLVI)"), QStringLiteral("Size: 0"), QStringLiteral("Ver: 0"),
          QStringLiteral("GUID: 0"), QStringLiteral("FPS: 25.000000"),
          QStringLiteral("File: 0 / 1"), QStringLiteral("Frames Video: %1").arg(count),
          QStringLiteral("Frames Audio: 0"), QStringLiteral("Done")})
        m_task->receivedLine(line, *m_task);
    QTRY_VERIFY(!m_task->isRunning());
    QCOMPARE(m_task->videoFrames(), static_cast<quint64>(count));
    m_listener.events.clear();
    QVERIFY(QFile::remove(m_tools->path() + QStringLiteral("/mlv_dump.calls")));
}

void TestMlvDumpTask::mlvPathFallsBackToTheCalibrationPaths()
{
    m_task->setMlvPath(QString());
    QVERIFY(m_task->mlvPath().isNull());
    m_task->setFlatDarkPath(QStringLiteral("/c/flatdark.MLV"));
    QCOMPARE(m_task->mlvPath(), QStringLiteral("/c/flatdark.MLV"));
    m_task->setFlatPath(QStringLiteral("/c/flat.MLV"));
    QCOMPARE(m_task->mlvPath(), QStringLiteral("/c/flat.MLV"));
    m_task->setDarkPath(QStringLiteral("/c/dark.MLV"));
    QCOMPARE(m_task->mlvPath(), QStringLiteral("/c/dark.MLV"));
    m_task->setMlvPath(clip);
    QCOMPARE(m_task->mlvPath(), clip);
}

void TestMlvDumpTask::extractionDirectoryIsNamedAfterTheRecording()
{
    QCOMPARE(m_task->extractionDirectory(),
             m_folder->path() + QStringLiteral("/FilmwrightTmp/a.MLV/"));
}

void TestMlvDumpTask::extractionDirectoryOfACalibrationTaskIsTheTemporaryDirectory()
{
    m_task->setMlvPath(QString());
    m_task->setDarkPath(QStringLiteral("/c/dark.MLV"));
    QCOMPARE(m_task->extractionDirectory(), m_folder->path() + QStringLiteral("/FilmwrightTmp/"));
}

void TestMlvDumpTask::metaRunReadsTheReport()
{
    const LogCapture log;
    m_tools->addTool(mlvDump,
                     QStringLiteral("printf 'File Header (MLVI)\\n1:\\n2:\\n3:\\nFPS: 24.0\\n5:\\n"
                                    "Video: 12\\nAudio: 3\\n'; echo Done"));
    m_task->extractMeta();
    QCOMPARE(m_task->processMode(), MlvDumpModeMeta);
    QTRY_COMPARE(m_listener.events, QStringList{QStringLiteral("meta")});
    QCOMPARE(m_task->processMode(), MlvDumpModeNone);
    QCOMPARE(m_task->videoFrames(), 12U);
    QCOMPARE(m_tools->calls(mlvDump),
             QList<QStringList>({{QStringLiteral("-m"), QStringLiteral("-v"), clip}}));
    QTRY_VERIFY(!m_task->isRunning());
}

void TestMlvDumpTask::metaRunForgetsEarlierValues()
{
    knowFrames(12);
    const LogCapture log;
    m_task->extractMeta();
    QCOMPARE(m_task->videoFrames(), 0U);
    QTRY_VERIFY(!m_task->isRunning());
}

void TestMlvDumpTask::cutOffReportIsLoggedAndNeverFinishes()
{
    const LogCapture log;
    m_tools->addTool(mlvDump, QStringLiteral("printf 'File Header (MLVI)\\n1:\\nDone\\n'"));
    m_task->extractMeta();
    QTRY_VERIFY(!m_task->isRunning());
    QCOMPARE(m_listener.events, QStringList());
    QCOMPARE(m_task->processMode(), MlvDumpModeMeta);
    QCOMPARE(LogCapture::lines(),
             QStringList{QStringLiteral("Index 7 is beyond the bounds of 3 entries")});
}

void TestMlvDumpTask::warningsOfAReportAndItsExtractionAreKeptOnceEach()
{
    m_task->receivedLine(QStringLiteral("[WARNING] chunk 1 is cut off"), *m_task);
    m_task->receivedLine(QStringLiteral("no [WARNING] at all"), *m_task);
    m_task->receivedLine(QStringLiteral("[WARNING] chunk 1 is cut off"), *m_task);
    m_task->receivedLine(QStringLiteral("[WARNING] no sound"), *m_task);
    QCOMPARE(m_task->warnings(),
             (QStringList{QStringLiteral("chunk 1 is cut off"), QStringLiteral("no sound")}));
}

void TestMlvDumpTask::metaRunForgetsEarlierWarnings()
{
    m_task->receivedLine(QStringLiteral("[WARNING] no sound"), *m_task);
    m_task->extractMeta();
    QCOMPARE(m_task->warnings(), QStringList());
    QTRY_VERIFY(!m_task->isRunning());
}

void TestMlvDumpTask::errorLineThatAlsoSaysDoneFinishesTheRun()
{
    const LogCapture log;
    m_tools->addTool(mlvDump, QStringLiteral("echo '[ERROR] bad block, Done'"));
    m_task->extractMeta();
    QTRY_COMPARE(m_listener.events, (QStringList{QStringLiteral("error [ERROR] bad block, Done"),
                                                 QStringLiteral("meta")}));
    QCOMPARE(m_task->error(), QStringLiteral("[ERROR] bad block, Done"));
    QTRY_VERIFY(!m_task->isRunning());
}

void TestMlvDumpTask::secondDoneLineReportsNothing()
{
    const LogCapture log;
    m_tools->addTool(mlvDump, QStringLiteral("echo Done; echo Done"));
    m_task->extractMeta();
    QTRY_VERIFY(!m_task->isRunning());
    QCOMPARE(m_listener.events, QStringList{QStringLiteral("meta")});
}

void TestMlvDumpTask::unusableRecordingIsAReportWithoutFrames()
{
    m_tools->addTool(mlvDump,
                     QStringLiteral("printf 'File Header (MLVI)\\n1:\\n2:\\n3:\\nFPS: 24.0\\n5:\\n"
                                    "Video: 12\\nAudio: 3\\nBlock: EXPO\\n'; "
                                    "echo '[UNUSABLE] The recording holds no raw video'; "
                                    "echo 'Processed 0 video frames at 24.00 FPS (0.00 s)'; "
                                    "echo Done; exit 1"));
    m_task->extractMeta();
    QTRY_COMPARE(m_listener.events, QStringList{QStringLiteral("meta")});
    QCOMPARE(m_task->unusableError(), QStringLiteral("The recording holds no raw video"));
    QCOMPARE(m_task->videoFrames(), 0U);
    QVERIFY(m_task->error().isNull());
    QCOMPARE(m_task->processMode(), MlvDumpModeNone);
    QTRY_VERIFY(!m_task->isRunning());
}

void TestMlvDumpTask::unusableRecordingFinishesNoFrameRun()
{
    m_tools->addTool(mlvDump, QStringLiteral("echo '[UNUSABLE] The recording vanished'; exit 1"));
    m_task->extractDNGAtIndex(0);
    QTRY_VERIFY(!m_task->isRunning());
    QCOMPARE(m_task->unusableError(), QStringLiteral("The recording vanished"));
    QCOMPARE(m_listener.events, QStringList());
}

void TestMlvDumpTask::newRunForgetsWhyTheRecordingWasUnusable()
{
    m_task->receivedLine(QStringLiteral("[UNUSABLE] The recording vanished"), *m_task);
    QCOMPARE(m_task->unusableError(), QStringLiteral("The recording vanished"));
    m_task->extractDNGAtIndex(0);
    QCOMPARE(m_task->unusableError(), QString());
    QTRY_COMPARE(m_listener.events, QStringList{QStringLiteral("dng")});
}

void TestMlvDumpTask::everyRunForgetsTheError()
{
    m_task->setFlatPath(QStringLiteral("/c/flat.MLV"));
    using Run = std::function<void()>;
    const QList<Run> runs{
        [this] { m_task->extractMeta(); },     [this] { m_task->extractDNGAtIndex(0); },
        [this] { m_task->prepareDark(); },     [this] { m_task->prepareFlat(); },
        [this] { m_task->prepareFlatDark(); }, [this] { m_task->substractFlatDark(); }};
    const LogCapture log;
    for (const Run &run : runs) {
        m_task->receivedLine(QStringLiteral("[ERROR] bad block"), *m_task);
        QVERIFY(!m_task->error().isNull());
        run();
        QVERIFY(m_task->error().isNull());
        QTRY_VERIFY(!m_task->isRunning());
    }
}

void TestMlvDumpTask::newRunForgetsTheOldOnesLines()
{
    const LogCapture log;
    for (const char *line :
         {"File Header (MLVI)", "1:", "2:", "3:", "FPS: 24.0", "5:", "Video: 12", "Audio: 3"})
        m_task->receivedLine(QString::fromLatin1(line), *m_task);
    m_task->extractMeta();
    QTRY_COMPARE(m_listener.events, QStringList{QStringLiteral("meta")});
    QCOMPARE(m_task->videoFrames(), 0U);
    QTRY_VERIFY(!m_task->isRunning());
}

void TestMlvDumpTask::framesWithoutCalibration()
{
    m_task->extractDNGAtIndex(0);
    QCOMPARE(m_task->processMode(), MlvDumpModeDNG);
    QTRY_COMPARE(m_listener.events, QStringList{QStringLiteral("dng")});
    QCOMPARE(m_tools->calls(mlvDump),
             QList<QStringList>({{QStringLiteral("--dng"), clip, QStringLiteral("--no-cs"),
                                  QStringLiteral("-f"), QStringLiteral("0-0"), QStringLiteral("-o"),
                                  m_task->extractionDirectory() + QStringLiteral("tmp")}}));
}

/// Into a folder that is there, whose place and permissions are somebody else's concern.
void TestMlvDumpTask::framesOfAClip()
{
    const QTemporaryDir clips;
    const QString folder = clips.path() + QLatin1Char('/');
    m_task->setCorrections({{}, {}, {}, QStringLiteral("auto"), false});
    m_task->setClipFolder(folder);
    m_task->extractDNGAtIndex(0);
    QTRY_COMPARE(m_listener.events, QStringList{QStringLiteral("dng")});
    QCOMPARE(m_tools->calls(mlvDump),
             QList<QStringList>(
                 {{QStringLiteral("--dng"), clip, QStringLiteral("--no-cs"), QStringLiteral("-f"),
                   QStringLiteral("0-0"), QStringLiteral("--repair-pixels"), QStringLiteral("auto"),
                   QStringLiteral("--cinema-dng"), QStringLiteral("-o"),
                   folder + QStringLiteral("tmp")}}));
    QVERIFY(!QFileInfo::exists(m_task->workingFolder()));
}

void TestMlvDumpTask::framesWithDark()
{
    m_task->setDarkPath(QStringLiteral("/x/dark.MLV"));
    m_task->setFlatPath(QLatin1String(""));
    m_task->extractDNGAtIndex(0);
    QTRY_COMPARE(m_listener.events, QStringList{QStringLiteral("dng")});
    QCOMPARE(m_tools->calls(mlvDump),
             QList<QStringList>(
                 {{QStringLiteral("--dng"), clip, QStringLiteral("--no-cs"), QStringLiteral("-f"),
                   QStringLiteral("0-0"), QStringLiteral("-s"), QStringLiteral("/x/dark.MLV"),
                   QStringLiteral("-o"), m_task->extractionDirectory() + QStringLiteral("tmp")}}));
}

void TestMlvDumpTask::framesWithCorrections()
{
    m_task->setFlatPath(QStringLiteral("/x/flat.MLV"));
    m_task->setCorrections({QStringLiteral("15000"), QStringLiteral("recorded"),
                            QStringLiteral("recorded"), QStringLiteral("/x/a.fpm"), true});
    m_task->extractDNGAtIndex(0);
    QTRY_COMPARE(m_listener.events, QStringList{QStringLiteral("dng")});
    const QStringList call = m_tools->calls(mlvDump).constFirst();
    QCOMPARE(call.mid(5, 11),
             (QStringList{QStringLiteral("-t"), QStringLiteral("/x/flat.MLV"),
                          QStringLiteral("--white-level"), QStringLiteral("15000"),
                          QStringLiteral("--black-level"), QStringLiteral("recorded"),
                          QStringLiteral("--matrix"), QStringLiteral("recorded"),
                          QStringLiteral("--repair-pixels"), QStringLiteral("/x/a.fpm"),
                          QStringLiteral("--repair-columns")}));
    QCOMPARE(call.at(16), QStringLiteral("-o"));
    m_task->prepareFlat();
    QTRY_COMPARE(m_listener.events.size(), 2);
    QCOMPARE(m_tools->calls(mlvDump).constLast().size(), 4); // an average is never corrected
}

void TestMlvDumpTask::framesOfASelection_data()
{
    QTest::addColumn<quint64>("first");
    QTest::addColumn<quint64>("last");
    QTest::addColumn<QString>("range");
    QTest::newRow("in the middle") << quint64(3) << quint64(7) << "2-6";
    QTest::newRow("to the end") << quint64(3) << quint64(0) << "2-0";
    QTest::newRow("from the beginning") << quint64(1) << quint64(7) << "6";
    QTest::newRow("the first one alone") << quint64(1) << quint64(1) << "0";
}

void TestMlvDumpTask::framesOfASelection()
{
    QFETCH(quint64, first);
    QFETCH(quint64, last);
    QFETCH(QString, range);
    m_task->setFrameSelection({first, last});
    m_task->extractDNGAtIndex(0);
    QTRY_COMPARE(m_listener.events, QStringList{QStringLiteral("dng")});
    QCOMPARE(m_tools->calls(mlvDump),
             QList<QStringList>(
                 {{QStringLiteral("--dng"), clip, QStringLiteral("--no-cs"), QStringLiteral("-f"),
                   range, QStringLiteral("--renumber"), QStringLiteral("-o"),
                   m_task->extractionDirectory() + QStringLiteral("tmp")}}));
}

void TestMlvDumpTask::framesWithFlat()
{
    m_task->setFlatPath(QStringLiteral("/x/flat.MLV"));
    m_task->extractDNGAtIndex(0);
    QTRY_COMPARE(m_listener.events, QStringList{QStringLiteral("dng")});
    QCOMPARE(m_tools->calls(mlvDump),
             QList<QStringList>(
                 {{QStringLiteral("--dng"), clip, QStringLiteral("--no-cs"), QStringLiteral("-f"),
                   QStringLiteral("0-0"), QStringLiteral("-t"), QStringLiteral("/x/flat.MLV"),
                   QStringLiteral("-o"), m_task->extractionDirectory() + QStringLiteral("tmp")}}));
}

void TestMlvDumpTask::framesWithDarkAndFlat()
{
    m_task->setDarkPath(QStringLiteral("/x/dark.MLV"));
    m_task->setFlatPath(QStringLiteral("/x/flat.MLV"));
    m_task->extractDNGAtIndex(7);
    QTRY_COMPARE(m_listener.events, QStringList{QStringLiteral("dng")});
    QCOMPARE(m_tools->calls(mlvDump),
             QList<QStringList>(
                 {{QStringLiteral("--dng"), clip, QStringLiteral("--no-cs"), QStringLiteral("-f"),
                   QStringLiteral("7-7"), QStringLiteral("-s"), QStringLiteral("/x/dark.MLV"),
                   QStringLiteral("-t"), QStringLiteral("/x/flat.MLV"), QStringLiteral("-o"),
                   m_task->extractionDirectory() + QStringLiteral("tmp")}}));
}

void TestMlvDumpTask::frameRunCreatesAPrivateDirectory()
{
    m_task->extractDNGAtIndex(0);
    QTRY_COMPARE(m_listener.events, QStringList{QStringLiteral("dng")});
    const QFileInfo directory(m_task->extractionDirectory());
    QVERIFY(directory.isDir());
    QCOMPARE(directory.permissions() & QFileDevice::Permissions(0x0077),
             QFileDevice::Permissions());
}

void TestMlvDumpTask::doneEndsTheFrameToolAtOnce()
{
    m_tools->addTool(mlvDump, QStringLiteral("echo 'is this Done?'; exec sleep 1000"));
    m_task->extractDNGAtIndex(0);
    QTRY_COMPARE(m_listener.events, QStringList{QStringLiteral("dng")});
    QVERIFY(!m_task->isRunning());
    QCOMPARE(m_task->processMode(), MlvDumpModeNone);
}

void TestMlvDumpTask::completeExtractionIsReused()
{
    knowFrames(100);
    for (int number = 0; number < 100; ++number)
        touch(frame(number));
    m_task->extractDNGAtIndex(0);
    QCOMPARE(m_listener.events, QStringList());
    QCOMPARE(m_task->processMode(), MlvDumpModeNone);
    QTRY_COMPARE(m_listener.events, QStringList{QStringLiteral("dng")});
    QCOMPARE(m_tools->calls(mlvDump), QList<QStringList>());
}

void TestMlvDumpTask::completeSelectionIsReused()
{
    knowFrames(100);
    m_task->setFrameSelection({11, 20});
    QCOMPARE(m_task->framesToExtract(), 10U);
    for (int number = 0; number < 10; ++number)
        touch(frame(number));
    m_task->extractDNGAtIndex(0);
    QTRY_COMPARE(m_listener.events, QStringList{QStringLiteral("dng")});
    QCOMPARE(m_tools->calls(mlvDump), QList<QStringList>());
    m_task->setFrameSelection({11, 21});
    m_task->extractDNGAtIndex(0);
    QTRY_COMPARE(m_tools->calls(mlvDump).size(), 1);
}

void TestMlvDumpTask::extractionWithAGapIsMadeAnew()
{
    knowFrames(100);
    for (int number = 0; number < 100; ++number)
        touch(frame(number));
    QVERIFY(QFile::remove(frame(50)));
    m_task->extractDNGAtIndex(0);
    QTRY_COMPARE(m_listener.events, QStringList{QStringLiteral("dng")});
    QCOMPARE(m_tools->calls(mlvDump).size(), 1);
    QCOMPARE(m_tools->calls(mlvDump).first().mid(3, 2),
             (QStringList{QStringLiteral("-f"), QStringLiteral("0-0")}));
    QCOMPARE(QDir(m_task->extractionDirectory()).entryList(QDir::Files), QStringList());
}

void TestMlvDumpTask::otherIndexUsesAnExistingDirectoryAsItIs()
{
    knowFrames(100);
    QVERIFY(QDir().mkpath(m_task->extractionDirectory()));
    m_task->extractDNGAtIndex(3);
    QCOMPARE(m_listener.events, QStringList());
    QTRY_COMPARE(m_listener.events, QStringList{QStringLiteral("dng")});
    QCOMPARE(m_tools->calls(mlvDump), QList<QStringList>());
}

void TestMlvDumpTask::unknownFrameCountUsesAnExistingDirectoryAsItIs()
{
    QVERIFY(QDir().mkpath(m_task->extractionDirectory()));
    m_task->extractDNGAtIndex(0);
    QTRY_COMPARE(m_listener.events, QStringList{QStringLiteral("dng")});
    QCOMPARE(m_tools->calls(mlvDump), QList<QStringList>());
}

void TestMlvDumpTask::synchronousFrameRunReportsBeforeItReturns()
{
    m_task->extractDNGAtIndex(0, true);
    QCOMPARE(m_listener.events, QStringList{QStringLiteral("dng")});
}

void TestMlvDumpTask::frameRunWithoutARecordingThrows()
{
    m_task->setMlvPath(QString());
    m_task->setDarkPath(QStringLiteral("/c/dark.MLV"));
    QVERIFY_THROWS_EXCEPTION(std::invalid_argument, m_task->extractDNGAtIndex(0));
    QCOMPARE(m_tools->calls(mlvDump), QList<QStringList>());
}

void TestMlvDumpTask::gapsInTheNumberingAreClosed()
{
    m_tools->addTool(mlvDump, QStringLiteral("for last; do :; done; for n in 0 2 5; do "
                                             "echo $n > \"$last\"00000$n.dng; done; echo Done"));
    QStringList seen; // when the frames are told to be there
    m_listener.whenTold = [&] {
        seen = QDir(m_task->extractionDirectory()).entryList(QDir::Files);
    };
    m_task->extractDNGAtIndex(0);
    QTRY_COMPARE(m_listener.events, QStringList{QStringLiteral("dng")});
    QCOMPARE(seen, (QStringList{QStringLiteral("tmp000000.dng"), QStringLiteral("tmp000001.dng"),
                                QStringLiteral("tmp000002.dng")}));
    QFile last(frame(2));
    QVERIFY(last.open(QIODevice::ReadOnly));
    QCOMPARE(last.readAll(), QByteArray("5\n"));
}

void TestMlvDumpTask::framesInCapitalsAreCountedInTheRenumbering()
{
    m_tools->addTool(mlvDump, QStringLiteral("for last; do :; done; echo 3 > \"$last\"000003.DNG; "
                                             "echo Done"));
    m_task->extractDNGAtIndex(0);
    QTRY_COMPARE(m_listener.events, QStringList{QStringLiteral("dng")});
    QCOMPARE(QDir(m_task->extractionDirectory()).entryList(QDir::Files),
             QStringList{QStringLiteral("tmp000000.dng")});
}

void TestMlvDumpTask::otherFilesTakePartInTheRenumbering()
{
    // The sound file comes first in the listing; with frame 0 missing it is taken for it.
    m_tools->addTool(mlvDump, QStringLiteral("for last; do :; done; echo sound > \"$last\".wav; "
                                             "echo 1 > \"$last\"000001.dng; echo Done"));
    m_task->extractDNGAtIndex(0);
    QTRY_COMPARE(m_listener.events, QStringList{QStringLiteral("dng")});
    QFile moved(frame(0));
    QVERIFY(moved.open(QIODevice::ReadOnly));
    QCOMPARE(moved.readAll(), QByteArray("sound\n"));
}

void TestMlvDumpTask::averagingRuns_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("output");
    QTest::addColumn<int>("mode");
    QTest::newRow("dark") << "dark"
                          << "dark.mlv" << int(MlvDumpModeDark);
    QTest::newRow("flat") << "flat"
                          << "flat.mlv" << int(MlvDumpModeFlat);
    QTest::newRow("flat dark") << "flat dark"
                               << "flat_dark.mlv" << int(MlvDumpModeFlatDark);
}

namespace {

void prepare(MlvDumpTask &task, const QString &kind)
{
    task.setMlvPath(QString());
    task.setDarkPath(QStringLiteral("/c/dark.MLV"));
    task.setFlatPath(QStringLiteral("/c/flat.MLV"));
    task.setFlatDarkPath(QStringLiteral("/c/flat dark.MLV"));
    if (kind == QLatin1String("dark"))
        task.prepareDark();
    else if (kind == QLatin1String("flat"))
        task.prepareFlat();
    else
        task.prepareFlatDark();
}

} // namespace

void TestMlvDumpTask::averagingRuns()
{
    QFETCH(QString, kind);
    QFETCH(QString, output);
    QFETCH(int, mode);
    prepare(*m_task, kind);
    QTRY_COMPARE(m_listener.events, QStringList{kind});
    QCOMPARE(m_task->videoFrames(), 8U);
    QCOMPARE(int(m_task->processMode()), mode);
    QCOMPARE(m_tools->calls(mlvDump),
             QList<QStringList>(
                 {{QStringLiteral("-a"), QStringLiteral("/c/%1.MLV").arg(kind),
                   QStringLiteral("-o"), temporaryDirectory() + QLatin1Char('/') + output}}));
    QTRY_VERIFY(!m_task->isRunning());
}

void TestMlvDumpTask::errorDeletesTheAverage_data()
{
    averagingRuns_data();
}

void TestMlvDumpTask::errorDeletesTheAverage()
{
    QFETCH(QString, kind);
    QFETCH(QString, output);
    m_tools->addTool(mlvDump, QStringLiteral("echo x > \"$4\"; echo '[ERROR] bad'; "
                                             "printf 'Processed 0 video frames\\nDone\\n'"));
    const QString average = temporaryDirectory() + QLatin1Char('/') + output;
    bool existedWhenTold = true;
    m_listener.whenTold = [&] { existedWhenTold = QFile::exists(average); };
    prepare(*m_task, kind);
    QTRY_COMPARE(m_listener.events, (QStringList{QStringLiteral("error [ERROR] bad"), kind}));
    QVERIFY(!existedWhenTold);
    QVERIFY(!QFile::exists(average));
    QTRY_VERIFY(!m_task->isRunning());
}

void TestMlvDumpTask::averagingErrorTextBeforeDoneIsNoCount()
{
    const LogCapture log;
    m_tools->addTool(mlvDump, QStringLiteral("echo Done"));
    prepare(*m_task, QStringLiteral("dark"));
    QTRY_VERIFY(!m_task->isRunning());
    QCOMPARE(m_listener.events, QStringList());
    QCOMPARE(LogCapture::lines(),
             QStringList{QStringLiteral("Index -1 is beyond the bounds of 1 entries")});
}

void TestMlvDumpTask::countStandsBehindTheFirstBlank()
{
    m_tools->addTool(mlvDump, QStringLiteral("printf 'Processed  8 video frames\\nDone\\n'"));
    prepare(*m_task, QStringLiteral("dark"));
    QTRY_COMPARE(m_listener.events, QStringList{QStringLiteral("dark")});
    QCOMPARE(m_task->videoFrames(), 0U);
    QTRY_VERIFY(!m_task->isRunning());
}

void TestMlvDumpTask::secondDoneLineOfAnAverageHasNoLineBeforeIt()
{
    prepare(*m_task, QStringLiteral("dark"));
    QTRY_VERIFY(!m_task->isRunning());
    m_listener.events.clear();
    m_task->receivedLine(QStringLiteral("Processed 8 video frames"), *m_task);
    m_task->receivedLine(QStringLiteral("Done 7"), *m_task);
    QVERIFY_THROWS_EXCEPTION(std::out_of_range,
                             m_task->receivedLine(QStringLiteral("Done"), *m_task));
    QCOMPARE(m_listener.events, QStringList{QStringLiteral("dark")});
    QCOMPARE(m_task->videoFrames(), 8U);
}

void TestMlvDumpTask::substractionArguments()
{
    m_task->setMlvPath(QString());
    m_task->setFlatPath(QStringLiteral("/c/flat.MLV"));
    m_task->setFlatDarkPath(QStringLiteral("/c/flatdark.MLV"));
    m_task->substractFlatDark();
    QTRY_COMPARE(m_listener.events, QStringList{QStringLiteral("flat dark substraction")});
    const QString directory = temporaryDirectory() + QLatin1Char('/');
    QCOMPARE(
        m_tools->calls(mlvDump),
        QList<QStringList>({{QStringLiteral("-s"), directory + QStringLiteral("flat_dark.mlv"),
                             QStringLiteral("-o"), directory + QStringLiteral("flat-flat_dark.mlv"),
                             directory + QStringLiteral("flat.mlv")}}));
    QTRY_VERIFY(!m_task->isRunning());
}

void TestMlvDumpTask::substractionRunsWithADarkAlone()
{
    m_task->setMlvPath(QString());
    m_task->setDarkPath(QStringLiteral("/c/dark.MLV"));
    m_task->substractFlatDark();
    QTRY_COMPARE(m_listener.events, QStringList{QStringLiteral("flat dark substraction")});
    QTRY_VERIFY(!m_task->isRunning());
}

void TestMlvDumpTask::substractionWithoutCalibrationDoesNothing()
{
    m_task->setDarkPath(QLatin1String(""));
    m_task->setFlatPath(QLatin1String(""));
    m_task->setFlatDarkPath(QLatin1String(""));
    m_task->substractFlatDark();
    QCOMPARE(m_task->processMode(), MlvDumpModeNone);
    QVERIFY(!m_task->isRunning());
    QCOMPARE(m_tools->calls(mlvDump), QList<QStringList>());
}

void TestMlvDumpTask::substractionErrorDeletesNothing()
{
    m_tools->addTool(mlvDump, QStringLiteral("echo x > \"$4\"; echo '[ERROR] bad'; "
                                             "printf 'Processed 0 video frames\\nDone\\n'"));
    m_task->setMlvPath(QString());
    m_task->setFlatPath(QStringLiteral("/c/flat.MLV"));
    m_task->substractFlatDark();
    QTRY_COMPARE(m_listener.events.size(), 2);
    QVERIFY(QFile::exists(temporaryDirectory() + QStringLiteral("/flat-flat_dark.mlv")));
    QTRY_VERIFY(!m_task->isRunning());
}

void TestMlvDumpTask::abortIsReportedLater()
{
    m_tools->addTool(mlvDump, QStringLiteral("exec sleep 1000"));
    m_task->extractMeta();
    QVERIFY(m_task->isRunning());
    m_task->abort();
    QVERIFY(!m_task->isRunning());
    QCOMPARE(m_listener.events, QStringList());
    QTRY_COMPARE(m_listener.events, QStringList{QStringLiteral("aborted")});
    QCOMPARE(m_task->processMode(), MlvDumpModeMeta);
}

void TestMlvDumpTask::abortOfAnIdleTaskIsReportedToo()
{
    m_task->abort();
    QTRY_COMPARE(m_listener.events, QStringList{QStringLiteral("aborted")});
}

namespace {

/// Takes every turn that is left for a report.
class Crowd
{
public:
    Crowd()
    {
        do {
            m_tasks.push_back(std::make_unique<QObject>());
            ReportQueue::instance().enter(m_tasks.back().get(), [] {});
        } while (!isWaiting());
    }
    ~Crowd()
    {
        for (const auto &task : m_tasks)
            ReportQueue::instance().leave(task.get());
    }
    Crowd(const Crowd &) = delete;
    Crowd &operator=(const Crowd &) = delete;

    /// Whether the last that came has no turn yet.
    bool isWaiting() const { return ReportQueue::instance().isWaiting(m_tasks.back().get()); }

private:
    std::vector<std::unique_ptr<QObject>> m_tasks;
};

} // namespace

void TestMlvDumpTask::abortForgetsTheError()
{
    m_task->receivedLine(QStringLiteral("[ERROR] bad block"), *m_task);
    QCOMPARE(m_task->error(), QStringLiteral("[ERROR] bad block"));
    m_task->abort();
    QVERIFY(m_task->error().isNull());
}

void TestMlvDumpTask::abortedReportThatWaitsForItsTurnNeverStarts()
{
    {
        const Crowd crowd;
        m_task->extractMeta();
        QVERIFY(m_task->isReportPending());
        m_task->abort();
        QTRY_COMPARE(m_listener.events, QStringList{QStringLiteral("aborted")});
        QVERIFY(!m_task->isReportPending());
    }
    const Crowd later; // every report that waited before has had its turn
    QCOMPARE(m_tools->calls(mlvDump), QList<QStringList>());
}

void TestMlvDumpTask::killedReportGivesItsTurnAway()
{
    m_tools->addTool(mlvDump, QStringLiteral("exec sleep 1000"));
    m_task->extractMeta();
    QVERIFY(m_task->isRunning());
    const Crowd crowd;
    m_task->kill();
    QTRY_VERIFY(!crowd.isWaiting());
    settle(); // its process object goes with it
}

void TestMlvDumpTask::reportThatAnErrorEndsGivesItsTurnAway()
{
    class Thrower : public TaskWrapperDelegate, public TaskWrapperDataReceiver
    {
    public:
        void receivedData(const QByteArray &, TaskWrapper &) override
        {
            throw std::runtime_error("no more");
        }
        void aborted() override {}
    };
    Thrower thrower;
    m_task->setTaskWrapperdelegate(&thrower);
    m_tools->addTool(mlvDump, QStringLiteral("echo up"));
    m_task->extractMeta();
    const Crowd crowd;
    QTRY_VERIFY(!crowd.isWaiting());
    QVERIFY(!m_task->isRunning());
    QTRY_COMPARE(childProcesses(), 0);
}

FILMWRIGHT_TEST(TestMlvDumpTask, QCoreApplication)
#include "tst_mlvdumptask.moc"
