// SPDX-License-Identifier: MIT
// A project whose frames flow, with tools that do what the real ones can't be made to do.

#include "project/fakeproject.h"

#include "project/moviemark.h"
#include "project/projectmonitor.h"
#include "project/workstage.h"
#include "support/events.h"
#include "support/shortgrace.h"
#include "support/testprogram.h"

#include <QDir>
#include <QFile>
#include <QTest>

using namespace filmwright;

namespace {

const QString ffmpeg = QStringLiteral("ffmpeg");
const QString mlvDump = QStringLiteral("mlv_dump");
const QString wholeMovie = QStringLiteral("cat > /dev/null; cp \"$film\" \"$movie\"");

/// Frames of 24 bytes as TIFFs of 4 x 2 pixels; the buffer is told in frames.
class FlowingProject : public FakeProject
{
public:
    explicit FlowingProject(int frames, int room = 4)
        : FakeProject(frames)
    {
        constexpr int dng = 4 * 2 * 14 / 8;
        constexpr int tiff = 4 * 2 * 3;
        constexpr int beside = 2 * 8192;
        setRawInformation(QStringLiteral("4x2"), 14);
        setEncoding(wholeMovie);
        read();
        Recipe recipe;
        recipe.id = recipe.name = QStringLiteral("one");
        recipe.extension = QStringLiteral("mov");
        recipe.video = QStringList{QStringLiteral("-c:v"), QStringLiteral("one")};
        controller->setRecipe(recipe);
        controller->setFrameBuffer(room * (dng + tiff + beside));
    }

    void run()
    {
        monitor.reset();
        monitor = std::make_unique<ProjectMonitor>(*controller, ProjectMonitor::Conversion, this);
        QObject::connect(monitor.get(), &ProjectMonitor::ended, monitor.get(),
                         [this](const Failure &failure) { endings << failure.error; });
        launch();
    }

    /// What a failed run must not leave beside the recording.
    QStringList left() const
    {
        QStringList names;
        if (QFile::exists(movie()))
            names << movie();
        if (QFile::exists(MovieMark::pathFor(movie())))
            names << MovieMark::pathFor(movie());
        return names;
    }

    std::unique_ptr<ProjectMonitor> monitor;
    QStringList endings;
};

QStringList one(const char *reason)
{
    return {QString::fromUtf8(reason)};
}

} // namespace

class TestFlowingProject : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void wholeRoad();
    void toolsAreCalledWithTheirArguments();
    void selectedFramesAreAskedForAsTheRecordingCountsThem();
    void framesOfSeveralWorkersComeInOrder();
    void rangesWaitForTheEncoder();
    void rowsAreSurveyedAndThenBlendedRangeByRange();
    void progressTellsWhatIsEncoded();
    void nextRunGoesStageByStage();

    void readerThatDiesInTheMiddle();
    void readerThatDiesInTheSurvey();
    void recordingThatGoesBadInTheMiddle();
    void frameThatIsNotExtracted();
    void frameThatIsNotConverted();
    void rowsThatCantBeBlended();
    void encoderThatDiesAtOnce();
    void encoderThatDiesInTheMiddle();
    void encoderThatEndsTooEarly();
    void encoderThatClosesItsInputAndStays();
    void missingEncoder();
    void frameWithoutANeighbour();
    void stopAtAnyMoment_data();
    void stopAtAnyMoment();
};

void TestFlowingProject::wholeRoad()
{
    FlowingProject project(3);
    project.run();
    QTRY_COMPARE(project.endings, QStringList{QString()});
    QCOMPARE(
        project.log(),
        QStringLiteral("pending extracting converting image image image encoding finished told"));
    QCOMPARE(project.controller->framesOfMovie(), 3);
    QVERIFY(QFile::exists(project.movie()));
    QVERIFY(!QFile::exists(MovieMark::pathFor(project.movie())));
    QVERIFY(!QFile::exists(project.controller->workingFolder()));
}

void TestFlowingProject::toolsAreCalledWithTheirArguments()
{
    FlowingProject project(5);
    project.run();
    QTRY_COMPARE(project.endings, QStringList{QString()});
    const QString folder = project.controller->workingFolder();
    const QString survey = folder + QStringLiteral("frames.survey");
    const auto call = [&](const char *range, const char *option) {
        QStringList words{QStringLiteral("--dng"),
                          project.recording(),
                          QStringLiteral("--no-cs"),
                          QStringLiteral("-f"),
                          QString::fromUtf8(range),
                          QString::fromUtf8(option),
                          survey};
        if (option == QByteArray("--use-survey"))
            words << QStringLiteral("--renumber");
        return words << QStringLiteral("-o") << folder + QStringLiteral("tmp");
    };
    QCOMPARE(project.tools.calls(mlvDump).mid(1),
             (QList<QStringList>{call("0-0", "--write-survey"), call("1", "--use-survey"),
                                 call("2-3", "--use-survey"), call("4-4", "--use-survey")}));
    QCOMPARE(project.tools.calls(ffmpeg).constFirst().mid(0, 10).join(QLatin1Char(' ')),
             QStringLiteral("-f rawvideo -pixel_format rgb24 -video_size 4x2 -framerate 25 "
                            "-i pipe:0"));
}

void TestFlowingProject::selectedFramesAreAskedForAsTheRecordingCountsThem()
{
    FlowingProject project(9);
    FakeProject::writeMovie(project.path(QStringLiteral("whole.mov")), 4);
    project.setExtraction(QStringLiteral(
        "case \" $* \" in *' --write-survey '*) echo 'Processed 4 video frames';; *) "
        "case $5 in 3-4) n=0;; 5-6) n=2;; esac; echo dng > ${prefix}00000$n.dng; "
        "echo dng > ${prefix}00000$((n + 1)).dng;; esac; echo Done"));
    project.controller->setFrameSelection({4, 7});
    project.run();
    QTRY_COMPARE(project.endings, QStringList{QString()});
    QStringList ranges;
    for (const QStringList &call : project.tools.calls(mlvDump).mid(1))
        ranges << call.at(4);
    QCOMPARE(ranges,
             (QStringList{QStringLiteral("3-6"), QStringLiteral("3-4"), QStringLiteral("5-6")}));
}

void TestFlowingProject::framesOfSeveralWorkersComeInOrder()
{
    constexpr int frames = 12;
    FlowingProject project(frames, 8);
    // Frames of their own grey, of which the even ones take longer.
    QByteArray wanted;
    for (int number = 0; number < frames; ++number) {
        const QByteArray samples(24, char(number));
        wanted += samples;
        QVERIFY(TiffBitmap({4, 2, 3, 8, 12}, samples)
                    .write(project.path(
                        QStringLiteral("tmp%1.tiff").arg(number, 6, 10, QLatin1Char('0')))));
    }
    project.setConversion(QStringLiteral("case $dng in *[02468].dng) sleep 0.05;; esac; "
                                         "cp '%1'/\"$(basename \"$tiff\")\" \"$tiff\"")
                              .arg(project.path(QString())));
    const QString taken = project.path(QStringLiteral("taken"));
    project.setEncoding(QStringLiteral("cat > '%1'; cp \"$film\" \"$movie\"").arg(taken));
    project.controller->setConversionWorkers(3);
    project.run();
    QTRY_COMPARE(project.endings, QStringList{QString()});
    QFile file(taken);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll().toHex(), wanted.toHex());
}

/// The pipe itself holds what the encoder hasn't read; these frames don't fit into it.
void TestFlowingProject::rangesWaitForTheEncoder()
{
    FlowingProject project(12, 4);
    constexpr int wide = 200000;
    FakeProject::writeTiff(project.path(QStringLiteral("whole.tiff")), wide); // 1.2 megabytes
    const QString gate = project.path(QStringLiteral("gate"));
    // Its first byte tells that the first frame is being written.
    const QString begun = project.path(QStringLiteral("begun"));
    project.setEncoding(QStringLiteral("head -c 1 > /dev/null; : > '%1'; "
                                       "until test -e '%2'; do sleep 0.01; done; ")
                            .arg(begun, gate) +
                        wholeMovie);
    project.run();
    QTRY_COMPARE(project.events.count(QStringLiteral("image")), 4);
    QTRY_COMPARE(project.tools.calls(ffmpeg).size(), 1);
    QTRY_VERIFY(QFile::exists(begun));
    settle(1);
    QCOMPARE(project.events.count(QStringLiteral("image")), 4);
    QCOMPARE(project.tools.calls(mlvDump).size(), 1 + 1 + 2);
    QVERIFY(QFile(gate).open(QIODevice::WriteOnly));
    QTRY_COMPARE(project.endings, QStringList{QString()});
    QCOMPARE(project.events.count(QStringLiteral("image")), 12);
}

void TestFlowingProject::rowsAreSurveyedAndThenBlendedRangeByRange()
{
    FlowingProject project(3, 5); // blended frames have 16 bits
    project.setExtraction(
        QStringLiteral("case \" $* \" in *' --survey-frames '*) while [ \"$1\" != --survey-frames ]"
                       "; do shift; done; echo dng > \"${2}000000.dng\"; echo dng > "
                       "\"${2}000002.dng\"; echo 'Processed 3 video frames at'; echo Done; "
                       "exit;; esac\n") +
        FakeProject::extraction(3));
    project.controller->setBlendsAlternatingRows(true);
    project.run();
    QTRY_COMPARE(project.endings, QStringList{QString()});
    const QString survey = project.controller->workingFolder() + QStringLiteral("rows.survey");
    const auto call = [&](const char *option, const char *names) {
        return QStringList{QString::fromUtf8(option), survey} +
               QString::fromUtf8(names).split(QLatin1Char(' '));
    };
    QCOMPARE(project.tools.calls(QStringLiteral("cr2hdr")),
             (QList<QStringList>{call("--write-survey", "rows000000.dng rows000002.dng"),
                                 call("--use-survey", "tmp000000.dng tmp000001.dng"),
                                 call("--use-survey", "tmp000002.dng")}));
}

void TestFlowingProject::progressTellsWhatIsEncoded()
{
    FlowingProject project(5);
    const QString gate = project.path(QStringLiteral("gate"));
    project.setEncoding(
        QStringLiteral("echo 'frame=    2 fps=1'; until test -e '%1'; do sleep 0.01; done; ")
            .arg(gate) +
        wholeMovie);
    StageCounter counter(*project.controller);
    project.run();
    QCOMPARE(counter.position().stage, WorkStage::Extracting);
    QTRY_COMPARE(counter.position().stage, WorkStage::Encoding);
    QTRY_COMPARE(counter.position().done, 2U);
    QCOMPARE(counter.position().frames, 5U);
    QVERIFY(workOf(*project.controller).settings.flows());
    QVERIFY(QFile(gate).open(QIODevice::WriteOnly));
    QTRY_COMPARE(project.endings, QStringList{QString()});
    QCOMPARE(counter.position().stage, WorkStage::Finished);
}

void TestFlowingProject::nextRunGoesStageByStage()
{
    FlowingProject project(3);
    project.run();
    QTRY_COMPARE(project.endings, QStringList{QString()});
    project.controller->setFrameBuffer(0);
    project.setEncoding(QStringLiteral("cp \"$film\" \"$movie\""));
    project.endings.clear();
    project.events.clear();
    project.run();
    QTRY_COMPARE(project.endings, QStringList{QString()});
    QCOMPARE(
        project.log(),
        QStringLiteral("pending extracting converting image image image encoding finished told"));
    QVERIFY(!project.tools.calls(ffmpeg).constLast().contains(QLatin1String("pipe:0")));
}

void TestFlowingProject::readerThatDiesInTheMiddle()
{
    FlowingProject project(6);
    project.setExtraction(QStringLiteral("case $5 in 2-*) kill -KILL $$;; esac\n") +
                          FakeProject::extraction(6));
    project.run();
    QTRY_COMPARE(project.endings, one("mlv_dump ended before it had extracted the frames"));
    project.controller->stop();
    QCOMPARE(project.left(), QStringList());
}

void TestFlowingProject::readerThatDiesInTheSurvey()
{
    FlowingProject project(6);
    project.setExtraction(QStringLiteral("exit 1"));
    project.run();
    QTRY_COMPARE(project.endings, one("mlv_dump ended before it had extracted the frames"));
}

void TestFlowingProject::recordingThatGoesBadInTheMiddle()
{
    FlowingProject project(6);
    project.setExtraction(
        QStringLiteral("case $5 in 2-*) echo '[UNUSABLE] It was replaced'; exit 1;; esac\n") +
        FakeProject::extraction(6));
    project.run();
    QTRY_COMPARE(project.endings, one("It was replaced"));
    project.controller->stop();
    QCOMPARE(project.left(), QStringList());
}

void TestFlowingProject::frameThatIsNotExtracted()
{
    FlowingProject project(6);
    project.setExtraction(QStringLiteral("case $5 in 2-*) echo Done; exit;; esac\n") +
                          FakeProject::extraction(6));
    project.run();
    QTRY_COMPARE(project.endings, one("mlv_dump extracted no frame tmp000002.dng"));
    project.controller->stop();
    QCOMPARE(project.left(), QStringList());
}

void TestFlowingProject::frameThatIsNotConverted()
{
    FlowingProject project(6);
    project.setConversion(
        QStringLiteral("case $dng in *3.dng) exit 1;; esac; cp \"$frame\" \"$tiff\""));
    project.run();
    QTRY_COMPARE(project.endings, one("dcraw could not convert a frame"));
    project.controller->stop();
    QCOMPARE(project.left(), QStringList());
}

void TestFlowingProject::rowsThatCantBeBlended()
{
    FlowingProject project(6);
    project.setBlending(
        QStringLiteral("case $* in *tmp000002*) echo 'tmp000002.dng : no picture'; exit 1;; esac"));
    project.controller->setBlendsAlternatingRows(true);
    project.run();
    QTRY_COMPARE(project.endings, one("cr2hdr ended with status 1: tmp000002.dng : no picture"));
    project.controller->stop();
    QCOMPARE(project.left(), QStringList());
}

void TestFlowingProject::encoderThatDiesAtOnce()
{
    FlowingProject project(50);
    project.setEncoding(QStringLiteral("echo half > \"$movie\"; echo 'no such option'; exit 1"));
    project.run();
    QTRY_COMPARE(project.endings, one("ffmpeg ended with status 1: no such option"));
    QVERIFY(project.tools.calls(mlvDump).size() < 20); // it isn't gone on with
    QCOMPARE(project.left(), QStringList());
    QVERIFY(!QFile::exists(project.controller->workingFolder()));
}

void TestFlowingProject::encoderThatDiesInTheMiddle()
{
    FlowingProject project(50);
    project.setEncoding(QStringLiteral("head -c 100 > \"$movie\"; kill -KILL $$"));
    project.run();
    QTRY_COMPARE(project.endings, one("ffmpeg ended with status 9: it said nothing"));
    QCOMPARE(project.left(), QStringList());
}

void TestFlowingProject::encoderThatEndsTooEarly()
{
    FlowingProject project(50);
    FakeProject::writeMovie(project.path(QStringLiteral("whole.mov")), 2);
    project.setEncoding(QStringLiteral("head -c 48 > /dev/null; cp \"$film\" \"$movie\""));
    project.run();
    QTRY_COMPARE(project.endings, one("ffmpeg encoded only 2 of 50 frames"));
    QCOMPARE(project.left(), QStringList());
}

void TestFlowingProject::encoderThatClosesItsInputAndStays()
{
    const ShortGrace grace;
    FlowingProject project(50);
    project.setEncoding(QStringLiteral("exec <&-; exec sleep 600"));
    project.run();
    QTRY_COMPARE(project.endings, one("ffmpeg doesn't read its frames any more"));
    project.controller->stop();
    QCOMPARE(project.left(), QStringList());
}

void TestFlowingProject::missingEncoder()
{
    FlowingProject project(6);
    QVERIFY(QFile::remove(project.tools.path() + QStringLiteral("/ffmpeg")));
    project.run();
    QTRY_COMPARE(project.endings, one("ffmpeg could not be started"));
    project.controller->stop();
    QCOMPARE(project.left(), QStringList());
}

void TestFlowingProject::frameWithoutANeighbour()
{
    FlowingProject project(1);
    project.controller->setDualISO(true);
    project.run();
    QTRY_COMPARE(project.endings, one("its only frame has no neighbour to be merged with"));
}

void TestFlowingProject::stopAtAnyMoment_data()
{
    QTest::addColumn<QString>("event");
    QTest::newRow("extracting") << "extracting";
    QTest::newRow("at the first frame") << "converting";
    QTest::newRow("at an image") << "image";
    QTest::newRow("all developed") << "encoding";
}

/// Nothing comes after a stop, nothing is left, and the next run is whole.
void TestFlowingProject::stopAtAnyMoment()
{
    QFETCH(QString, event);
    FlowingProject project(9);
    const QString gate = project.path(QStringLiteral("gate"));
    project.setEncoding(QStringLiteral("until test -e '%1'; do sleep 0.01; done; ").arg(gate) +
                        wholeMovie);
    project.launch();
    QTRY_VERIFY(project.events.contains(event));
    project.controller->stop();
    QTRY_VERIFY(!project.controller->isToolBusy());
    project.events.clear();
    settle();
    QVERIFY(!project.events.contains(QStringLiteral("image")));
    QCOMPARE(project.left(), QStringList());
    QVERIFY(QFile(gate).open(QIODevice::WriteOnly));
    project.run();
    QTRY_COMPARE(project.endings, QStringList{QString()});
}

FILMWRIGHT_TEST(TestFlowingProject, QCoreApplication)
#include "tst_flowingproject.moc"
