// SPDX-License-Identifier: MIT
#include "fakeproject.h"
#include "support/events.h"
#include "support/testprogram.h"
#include "support/words.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTest>
#include <QTimer>

using namespace filmwright;

namespace {

const QString dng = QStringLiteral("dng");
const QString tiff = QStringLiteral("tiff");
const QString dcraw = QStringLiteral("dcraw");
const QString waitForTheGate = QStringLiteral("until test -e '%1'; do sleep 0.01; done; ");

void create(const QString &path)
{
    QVERIFY(QDir().mkpath(QFileInfo(path).path()));
    QVERIFY(QFile(path).open(QIODevice::WriteOnly));
}

/// The movie begins 0.1 s after the last frame.
void passThePause()
{
    QTest::qWait(150);
}

} // namespace

class TestMLVProjectController : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void newProjectIsIdle();
    void stateTexts_data();
    void stateTexts();
    void settingThePathReadsTheMetadata();
    void clearingThePathKeepsTheMetadataAndTellsNobody();
    void settingANewPathStopsTheOldReading();

    void wholeRoadInOrder();
    void gapsInTheNumberingAreClosedBeforeTheConversion();
    void mergedNeighboursAreNotBlendedOneByOne();
    void stageAfterTheLastFramePauses();
    void toolsAreCalledWithTheirArguments();
    void calibrationReachesMlvDump();
    void soundIsEncoded();
    void finishedProjectCanRunAgain();
    void keptFilesStay();

    void movieStartsOnlyAfterTheLastImagesCallback();
    void folderWithoutFramesStaysInConversion();
    void upperCaseExtensionIsNotConverted();
    void extraImageMakesTheCountNegativeAndStartsNothing();
    void completeExtractionIsReused();
    void wholeTiffIsNotConvertedAgain();
    void unfinishedTiffIsConvertedAgain();
    void errorLineIsHandedOnAndTheModeStays();

    void oneWorkerAfterCreation();
    void severalWorkersConvertBesideEachOther();
    void severalWorkersDeliverEveryFrameOnce();
    void stoppedWorkersLeaveNothingToANewStart();

    void hdrIsOffAfterCreation();
    void neighboursAreMergedIntoTheHdrFolder();
    void mergedFramesAreNotMergedAgain();
    void upperCaseTiffIsMerged();
    void fewerThanTwoFramesGoStraightToTheMovie();
    void hdrMovieHasNoSound();
    void rowsAreBlendedBeforeTheConversionInOneCall();
    void framesThatCouldNotBeBlendedAreNotConverted();
    void stopDuringBlending();
    void stopBetweenTwoMerges();

    void stopDuringExtraction();
    void stopBeforeAReusedExtractionIsReported();
    void stopDuringConversion();
    void stopBetweenConversionAndMovie();
    void stopDuringEncoding();
    void destructionDuringConversionLeavesNoTool();
};

void TestMLVProjectController::newProjectIsIdle()
{
    const MLVProjectController controller;
    QCOMPARE(controller.mlvProjectMode(), MLVProjectModeIdle);
    QCOMPARE(controller.state(), QStringLiteral("Ready"));
    QCOMPARE(controller.videoFrames(), 0U);
    QVERIFY(controller.mlvPath().isNull());
}

void TestMLVProjectController::stateTexts_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<int>("processMode");
    QTest::addColumn<QString>("text");
    QTest::newRow("idle") << -1 << 0 << "Ready";
    QTest::newRow("reading") << 0 << 1 << "Reading data";
    QTest::newRow("ready") << 1 << 0 << "Ready";
    QTest::newRow("pending") << 2 << 0 << "Pending";
    QTest::newRow("extracting, no run") << 3 << 0 << "Waiting for mlv_dump";
    QTest::newRow("extracting, metadata") << 3 << 1 << "Meta extraction";
    QTest::newRow("extracting, frames") << 3 << 2 << "Extracting DNG";
    for (int calibration = 3; calibration <= 6; ++calibration)
        QTest::addRow("extracting, calibration %d", calibration) << 3 << calibration << QString();
    QTest::newRow("converting") << 4 << 0 << "RGB conversion";
    QTest::newRow("encoding") << 5 << 0 << "Building movie";
    QTest::newRow("finished") << 6 << 0 << "Finished";
    QTest::newRow("anything else") << 7 << 0 << "Ready";
}

void TestMLVProjectController::stateTexts()
{
    QFETCH(int, mode);
    QFETCH(int, processMode);
    QFETCH(QString, text);
    const QString state = stateText(MLVProjectMode(mode), MlvDumpMode(processMode));
    QCOMPARE(state, text);
    QCOMPARE(state.isNull(), text.isNull());
}

void TestMLVProjectController::settingThePathReadsTheMetadata()
{
    FakeProject project(3);
    project.controller = MLVProjectController::projectWithMLVFile(project.recording());
    project.controller->setDelegate(&project);
    QCOMPARE(project.controller->mlvProjectMode(), MLVProjectModeReadingData);
    QCOMPARE(project.controller->mlvPath(), project.recording());
    QCOMPARE(project.events, QStringList());
    QTRY_COMPARE(project.log(), QStringLiteral("ready"));
    QCOMPARE(project.controller->videoFrames(), 3U);
    QCOMPARE(project.controller->fps(), 25.0F);
    QCOMPARE(
        project.tools.calls(QStringLiteral("mlv_dump")),
        QList<QStringList>({{QStringLiteral("-m"), QStringLiteral("-v"), project.recording()}}));
    QTRY_VERIFY(!project.controller->isToolBusy());
}

void TestMLVProjectController::clearingThePathKeepsTheMetadataAndTellsNobody()
{
    FakeProject project(3);
    project.read();
    project.controller->setMlvPath(QLatin1String(""));
    QCOMPARE(project.controller->mlvProjectMode(), MLVProjectModeIdle);
    QVERIFY(project.controller->mlvPath().isNull());
    QCOMPARE(project.controller->videoFrames(), 3U);
    QCOMPARE(project.events, QStringList());
}

void TestMLVProjectController::settingANewPathStopsTheOldReading()
{
    FakeProject project(3);
    project.tools.addTool(QStringLiteral("mlv_dump"), QStringLiteral("exec sleep 1000"));
    project.controller = MLVProjectController::projectWithMLVFile(project.recording());
    project.controller->setDelegate(&project);
    QVERIFY(project.controller->isToolBusy());
    project.setExtraction(FakeProject::extraction(3));
    project.controller->setMlvPath(project.recording());
    QTRY_COMPARE(project.log(), QStringLiteral("ready"));
    QTRY_VERIFY(!project.controller->isToolBusy());
}

void TestMLVProjectController::wholeRoadInOrder()
{
    FakeProject project(3);
    project.read();
    project.launch();
    QTRY_COMPARE(project.events.constLast(), QStringLiteral("told"));
    QCOMPARE(
        project.log(),
        QStringLiteral("pending extracting converting image image image encoding finished told"));
    QCOMPARE(project.controller->framesToConvert(), 3);
    QCOMPARE(project.controller->dngToProcess(), 0);
    QVERIFY(QFile::exists(project.movie()));
    QVERIFY(!QFile::exists(project.controller->extractionDirectory()));
}

void TestMLVProjectController::gapsInTheNumberingAreClosedBeforeTheConversion()
{
    FakeProject project(2);
    project.setExtraction(
        QStringLiteral("echo dng > \"$prefix\"000000.dng; echo dng > \"$prefix\"000002.dng; "
                       "echo Done"));
    project.read();
    project.launch();
    QTRY_COMPARE(project.events.constLast(), QStringLiteral("told"));
    QStringList converted;
    for (const QStringList &call : project.tools.calls(QStringLiteral("dcraw")))
        converted << QFileInfo(call.constLast()).fileName();
    QCOMPARE(converted, words("tmp000000.dng tmp000001.dng"));
}

/// The conversion unit's own flag is another matter.
void TestMLVProjectController::mergedNeighboursAreNotBlendedOneByOne()
{
    FakeProject project(2);
    project.read();
    project.controller->setDualISO(true);
    project.launch();
    QTRY_COMPARE(project.events.constLast(), QStringLiteral("told"));
    QCOMPARE(project.tools.calls(QStringLiteral("cr2hdr")), QList<QStringList>());
    for (const QStringList &call : project.tools.calls(QStringLiteral("dcraw")))
        QVERIFY(call.contains(QStringLiteral("4.000000")));
}

/// A timer of half the pause, begun with the last frame, ends before the pause does.
void TestMLVProjectController::stageAfterTheLastFramePauses()
{
    class LastFrame : public FakeProject
    {
    public:
        using FakeProject::FakeProject;
        void imageRGBReceived(const QImage &image, MLVProjectController &from) override
        {
            FakeProject::imageRGBReceived(image, from);
            if (from.dngToProcess() == 1) // counted down after this call
                QTimer::singleShot(50, &from, [this] { events << QStringLiteral("half"); });
        }
    };
    LastFrame project(1);
    project.read();
    project.launch();
    QTRY_COMPARE(project.events.constLast(), QStringLiteral("told"));
    QCOMPARE(project.log(),
             QStringLiteral("pending extracting converting image half encoding finished told"));
}

void TestMLVProjectController::toolsAreCalledWithTheirArguments()
{
    FakeProject project(2);
    project.read();
    project.launch();
    QTRY_COMPARE(project.events.constLast(), QStringLiteral("told"));
    const QString directory = project.controller->extractionDirectory();
    QCOMPARE(project.tools.calls(QStringLiteral("mlv_dump")).at(1),
             (QStringList{QStringLiteral("--dng"), project.recording(), QStringLiteral("--no-cs"),
                          QStringLiteral("-f"), QStringLiteral("0-0"), QStringLiteral("-o"),
                          directory + QStringLiteral("tmp")}));
    const QStringList conversion = words("-H 3 -q 3 -w -W -T -b 4.000000");
    QCOMPARE(project.tools.calls(QStringLiteral("dcraw")),
             (QList<QStringList>{conversion + QStringList{project.frame(0, dng)},
                                 conversion + QStringList{project.frame(1, dng)}}));
    QCOMPARE(project.tools.calls(QStringLiteral("ffmpeg")),
             (QList<QStringList>{{QStringLiteral("-r"), QStringLiteral("25.00"),
                                  QStringLiteral("-i"), directory + QStringLiteral("tmp%06d.tiff"),
                                  QStringLiteral("-pix_fmt"), QStringLiteral("yuv420p"),
                                  QStringLiteral("-vcodec"), QStringLiteral("h264"),
                                  QStringLiteral("-qp"), QStringLiteral("17"), project.movie()}}));
}

void TestMLVProjectController::calibrationReachesMlvDump()
{
    FakeProject project(1);
    project.read();
    project.controller->setDarkPath(QStringLiteral("/t/dark.mlv"));
    project.controller->setFlatPath(QStringLiteral("/t/flat.mlv"));
    project.launch();
    QTRY_COMPARE(project.events.constLast(), QStringLiteral("told"));
    QCOMPARE(project.tools.calls(QStringLiteral("mlv_dump")).at(1).mid(5, 4),
             words("-s /t/dark.mlv -t /t/flat.mlv"));
}

void TestMLVProjectController::soundIsEncoded()
{
    FakeProject project(1);
    project.setExtraction(QStringLiteral("echo sound > \"$prefix.wav\"; ") +
                          FakeProject::extraction(1));
    project.read();
    project.controller->setMovieFormat(MovieFormatAVI);
    project.launch();
    QTRY_COMPARE(project.events.constLast(), QStringLiteral("told"));
    QCOMPARE(project.tools.calls(QStringLiteral("ffmpeg")).first().mid(4, 4),
             (QStringList{QStringLiteral("-i"),
                          project.controller->extractionDirectory() + QStringLiteral("tmp.wav"),
                          QStringLiteral("-c:a"), QStringLiteral("pcm_s16le")}));
}

void TestMLVProjectController::finishedProjectCanRunAgain()
{
    FakeProject project(2);
    project.read();
    project.launch();
    QTRY_COMPARE(project.events.constLast(), QStringLiteral("told"));
    project.events.clear();
    QVERIFY(QFile::remove(project.movie()));
    project.launch();
    QTRY_VERIFY(project.events.contains(QStringLiteral("told")));
    QCOMPARE(project.log(),
             QStringLiteral("pending extracting converting image image encoding finished told"));
    QVERIFY(QFile::exists(project.movie()));
}

void TestMLVProjectController::keptFilesStay()
{
    FakeProject project(1);
    project.read();
    project.controller->setKeepsTmpFiles(true);
    project.launch();
    QTRY_COMPARE(project.events.constLast(), QStringLiteral("told"));
    QVERIFY(QFile::exists(project.frame(0, dng)));
    QVERIFY(QFile::exists(project.frame(0, tiff)));
}

void TestMLVProjectController::movieStartsOnlyAfterTheLastImagesCallback()
{
    FakeProject project(0);
    project.read();
    project.setExtraction(FakeProject::extraction(1));
    project.setConversion(QStringLiteral("exec sleep 1000"));
    project.launch();
    QTRY_COMPARE(project.controller->dngToProcess(), 1);
    project.controller->imageRGBReceived(QImage());
    QCOMPARE(project.controller->dngToProcess(), 0);
    QCOMPARE(project.controller->mlvProjectMode(), MLVProjectModeRGBConversion);
    QTRY_COMPARE(project.events.constLast(), QStringLiteral("told"));
}

void TestMLVProjectController::folderWithoutFramesStaysInConversion()
{
    FakeProject project(0);
    project.read();
    project.launch();
    QTRY_COMPARE(project.log(), QStringLiteral("pending extracting converting"));
    passThePause();
    QCOMPARE(project.log(), QStringLiteral("pending extracting converting"));
    QCOMPARE(project.controller->state(), QStringLiteral("RGB conversion"));
    project.controller->stop();
    QCOMPARE(project.log(), QStringLiteral("pending extracting converting idle"));
}

void TestMLVProjectController::upperCaseExtensionIsNotConverted()
{
    FakeProject project(2);
    project.read();
    create(project.frame(0, dng));
    create(project.frame(1, dng));
    create(project.frame(2, QStringLiteral("DNG")));
    project.launch();
    QTRY_COMPARE(project.events.constLast(), QStringLiteral("told"));
    QCOMPARE(project.events.count(QStringLiteral("image")), 2);
    QCOMPARE(project.tools.calls(QStringLiteral("dcraw")).size(), 2);
}

void TestMLVProjectController::extraImageMakesTheCountNegativeAndStartsNothing()
{
    FakeProject project(1);
    project.read();
    project.launch();
    QTRY_COMPARE(project.events.constLast(), QStringLiteral("told"));
    project.events.clear();
    project.controller->imageRGBReceived(QImage());
    QCOMPARE(project.controller->dngToProcess(), -1);
    passThePause();
    QCOMPARE(project.log(), QStringLiteral("no image"));
}

void TestMLVProjectController::completeExtractionIsReused()
{
    FakeProject project(2);
    project.read();
    create(project.frame(0, dng));
    create(project.frame(1, dng));
    project.launch();
    QCOMPARE(project.controller->state(), QStringLiteral("Waiting for mlv_dump"));
    QTRY_COMPARE(project.events.constLast(), QStringLiteral("told"));
    QCOMPARE(project.tools.calls(QStringLiteral("mlv_dump")).size(), 1);
}

void TestMLVProjectController::wholeTiffIsNotConvertedAgain()
{
    FakeProject project(2);
    project.read();
    create(project.frame(0, dng));
    create(project.frame(1, dng));
    project.writeTiff(project.frame(0, tiff));
    project.launch();
    QTRY_COMPARE(project.events.constLast(), QStringLiteral("told"));
    QCOMPARE(project.events.count(QStringLiteral("image")), 2);
    QCOMPARE(project.tools.calls(QStringLiteral("dcraw")).size(), 1);
    QCOMPARE(project.tools.calls(QStringLiteral("dcraw")).first().constLast(),
             project.frame(1, dng));
}

void TestMLVProjectController::unfinishedTiffIsConvertedAgain()
{
    FakeProject project(1);
    project.read();
    create(project.frame(0, dng));
    project.writeTiff(project.frame(0, tiff));
    QFile half(project.frame(0, tiff));
    QVERIFY(half.resize(half.size() - 1));
    project.launch();
    QTRY_COMPARE(project.events.constLast(), QStringLiteral("told"));
    QCOMPARE(project.tools.calls(QStringLiteral("dcraw")).size(), 1);
    QVERIFY(project.events.contains(QStringLiteral("image")));
}

void TestMLVProjectController::errorLineIsHandedOnAndTheModeStays()
{
    FakeProject project(1);
    project.read();
    project.setExtraction(QStringLiteral("echo '[ERROR] bad block'; exec sleep 1000"));
    project.launch();
    QTRY_COMPARE(project.log(), QStringLiteral("pending extracting error [ERROR] bad block"));
    QCOMPARE(project.controller->mlvProjectMode(), MLVProjectModeExtracting);
    project.controller->stop();
}

void TestMLVProjectController::oneWorkerAfterCreation()
{
    MLVProjectController controller;
    QCOMPARE(controller.conversionWorkers(), 1);
    controller.setConversionWorkers(0);
    QCOMPARE(controller.conversionWorkers(), 1);
    controller.setConversionWorkers(3);
    QCOMPARE(controller.conversionWorkers(), 3);
}

void TestMLVProjectController::severalWorkersConvertBesideEachOther()
{
    FakeProject project(2);
    // Each waits for the other.
    project.setConversion(QStringLiteral(
        "touch \"$dng.begun\"; folder=\"${dng%/*}\"; until test -e \"$folder/tmp000000.dng.begun\" "
        "-a -e \"$folder/tmp000001.dng.begun\"; do sleep 0.01; done; cp \"$frame\" \"$tiff\""));
    project.read();
    project.controller->setConversionWorkers(2);
    project.launch();
    QTRY_VERIFY(project.events.contains(QStringLiteral("told")));
    QCOMPARE(project.tools.calls(dcraw).size(), 2);
}

void TestMLVProjectController::severalWorkersDeliverEveryFrameOnce()
{
    FakeProject project(20);
    project.read();
    project.controller->setConversionWorkers(8);
    project.launch();
    QTRY_VERIFY(project.events.contains(QStringLiteral("told")));
    QCOMPARE(project.events.count(QStringLiteral("image")), 20);
    QCOMPARE(project.events.count(QStringLiteral("no image")), 0);
    QCOMPARE(project.tools.calls(dcraw).size(), 20);
    QCOMPARE(project.events.count(QStringLiteral("encoding")), 1);
}

/// A frame that a stopped dcraw had half written is made anew, whichever worker takes it.
void TestMLVProjectController::stoppedWorkersLeaveNothingToANewStart()
{
    FakeProject project(6);
    project.setConversion(
        QStringLiteral("head -c 20 \"$frame\" > \"$tiff\"; sleep 0.05; cp \"$frame\" \"$tiff\""));
    project.read();
    project.controller->setConversionWorkers(3);
    for (int round = 0; round < 5; ++round) {
        project.launch();
        QTRY_VERIFY(QDir(project.controller->extractionDirectory())
                        .entryList({QStringLiteral("*.tiff")})
                        .size() > round);
        project.controller->stop();
        project.events.clear();
    }
    project.launch();
    QTRY_VERIFY(project.events.contains(QStringLiteral("told")));
    QCOMPARE(project.events.count(QStringLiteral("image")), 6);
    QCOMPARE(project.events.count(QStringLiteral("no image")), 0);
}

void TestMLVProjectController::hdrIsOffAfterCreation()
{
    const MLVProjectController controller;
    QVERIFY(!controller.dualISO());
    QVERIFY(!controller.blendsAlternatingRows());
}

void TestMLVProjectController::neighboursAreMergedIntoTheHdrFolder()
{
    FakeProject project(4);
    project.read();
    project.controller->setDualISO(true);
    project.controller->setKeepsTmpFiles(true);
    project.launch();
    QTRY_COMPARE(project.events.constLast(), QStringLiteral("told"));
    QCOMPARE(project.log(),
             QStringLiteral(
                 "pending extracting converting image image image image encoding finished told"));
    const QString hdr = project.controller->extractionDirectory() + QStringLiteral("hdr/");
    QCOMPARE(QDir(hdr).entryList(QDir::Files),
             words("tmp000000.tiff tmp000001.tiff tmp000002.tiff"));
    QCOMPARE(project.tools.calls(QStringLiteral("ffmpeg")).first().at(3),
             hdr + QStringLiteral("tmp%06d.tiff"));
}

void TestMLVProjectController::mergedFramesAreNotMergedAgain()
{
    FakeProject project(2);
    project.read();
    project.controller->setDualISO(true);
    project.controller->setKeepsTmpFiles(true);
    create(project.frame(0, dng));
    create(project.frame(1, dng));
    const QString merged =
        project.controller->extractionDirectory() + QStringLiteral("hdr/tmp000000.tiff");
    create(merged);
    project.launch();
    QTRY_COMPARE(project.events.constLast(), QStringLiteral("told"));
    QCOMPARE(QFileInfo(merged).size(), 0);
}

void TestMLVProjectController::upperCaseTiffIsMerged()
{
    FakeProject project(1);
    project.read();
    project.controller->setDualISO(true);
    project.controller->setKeepsTmpFiles(true);
    create(project.frame(0, dng));
    project.writeTiff(project.frame(1, QStringLiteral("TIFF")));
    project.launch();
    QTRY_COMPARE(project.events.constLast(), QStringLiteral("told"));
    QVERIFY(QFile::exists(project.controller->extractionDirectory() +
                          QStringLiteral("hdr/tmp000000.tiff")));
}

void TestMLVProjectController::fewerThanTwoFramesGoStraightToTheMovie()
{
    FakeProject project(1);
    project.read();
    project.controller->setDualISO(true);
    project.controller->setKeepsTmpFiles(true);
    project.launch();
    QTRY_COMPARE(project.events.constLast(), QStringLiteral("told"));
    const QDir hdr(project.controller->extractionDirectory() + QStringLiteral("hdr"));
    QVERIFY(hdr.exists());
    QCOMPARE(hdr.entryList(QDir::Files), QStringList());
}

void TestMLVProjectController::hdrMovieHasNoSound()
{
    // The encoder looks for the sound beside the frames, and nothing puts one into their folder.
    FakeProject project(2);
    project.setExtraction(QStringLiteral("echo sound > \"$prefix.wav\"; ") +
                          FakeProject::extraction(2));
    project.read();
    project.controller->setDualISO(true);
    project.launch();
    QTRY_COMPARE(project.events.constLast(), QStringLiteral("told"));
    QCOMPARE(project.tools.calls(QStringLiteral("ffmpeg")).first().count(QStringLiteral("-i")), 1);
}

void TestMLVProjectController::rowsAreBlendedBeforeTheConversionInOneCall()
{
    FakeProject project(3);
    project.setBlending(QStringLiteral("for frame; do test -e \"${frame%.dng}.tiff\" && exit 1; "
                                       "echo blended > \"$frame\"; done"));
    project.setConversion(QStringLiteral("grep -q blended \"$dng\" && cp \"$frame\" \"$tiff\""));
    project.read();
    project.controller->setBlendsAlternatingRows(true);
    project.launch();
    QTRY_COMPARE(project.events.constLast(), QStringLiteral("told"));
    QCOMPARE(
        project.log(),
        QStringLiteral(
            "pending extracting converting converting image image image encoding finished told"));
    QCOMPARE(project.tools.calls(QStringLiteral("cr2hdr")),
             QList<QStringList>{words("tmp000000.dng tmp000001.dng tmp000002.dng")});
}

void TestMLVProjectController::framesThatCouldNotBeBlendedAreNotConverted()
{
    FakeProject project(1);
    project.setBlending(QStringLiteral("exit 1"));
    project.read();
    project.controller->setBlendsAlternatingRows(true);
    project.launch();
    QTRY_COMPARE(project.log(), QStringLiteral("pending extracting converting converting"));
    QCOMPARE(project.controller->blender().terminationStatus(), 1);
    QCOMPARE(project.controller->framesToConvert(), 0);
    settle();
    QCOMPARE(project.tools.calls(QStringLiteral("dcraw")), QList<QStringList>());
}

void TestMLVProjectController::stopDuringBlending()
{
    FakeProject project(1);
    project.setBlending(QStringLiteral("exec sleep 1000"));
    project.read();
    project.controller->setBlendsAlternatingRows(true);
    project.launch();
    QTRY_VERIFY(project.controller->blender().isRunning());
    project.controller->stop();
    QVERIFY(!project.controller->isToolBusy());
    settle();
    QCOMPARE(project.log(), QStringLiteral("pending extracting converting idle"));
    QCOMPARE(project.tools.calls(QStringLiteral("dcraw")), QList<QStringList>());
}

void TestMLVProjectController::stopBetweenTwoMerges()
{
    FakeProject project(4);
    project.read();
    project.controller->setDualISO(true);
    project.launch();
    while (project.controller->pairsToMerge() == 0)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    project.controller->stop();
    QCOMPARE(project.controller->pairsToMerge(), 0);
    passThePause();
    QCOMPARE(project.events.constLast(), QStringLiteral("idle"));
    QCOMPARE(project.tools.calls(QStringLiteral("ffmpeg")), QList<QStringList>());
}

void TestMLVProjectController::stopDuringExtraction()
{
    FakeProject project(1);
    project.read();
    project.setExtraction(QStringLiteral("exec sleep 1000"));
    project.launch();
    QVERIFY(project.controller->isToolBusy());
    project.controller->stop();
    // The abort is reported on its own, after the current event.
    QTRY_COMPARE(project.log(), QStringLiteral("pending extracting idle idle"));
    QCOMPARE(project.controller->state(), QStringLiteral("Ready"));
}

void TestMLVProjectController::stopBeforeAReusedExtractionIsReported()
{
    FakeProject project(1);
    project.read();
    create(project.frame(0, dng));
    project.launch();
    project.controller->stop();
    settle();
    QCOMPARE(project.log(), QStringLiteral("pending extracting idle"));
    QCOMPARE(project.tools.calls(QStringLiteral("dcraw")), QList<QStringList>());
}

void TestMLVProjectController::stopDuringConversion()
{
    FakeProject project(3);
    const QString gate = project.path(QStringLiteral("gate"));
    project.setConversion(waitForTheGate.arg(gate) + QStringLiteral("cp \"$frame\" \"$tiff\""));
    project.read();
    project.launch();
    QTRY_COMPARE(project.tools.calls(QStringLiteral("dcraw")).size(), 1);
    project.controller->stop();
    QCOMPARE(project.log(), QStringLiteral("pending extracting converting idle"));
    create(gate);
    // The frame that was being converted is kept, but neither it nor another one is delivered.
    QTRY_VERIFY(QFile::exists(project.frame(0, tiff)));
    QTest::qWait(100); // a worker would go on by now, and nothing tells that it doesn't
    settle();
    QCOMPARE(project.log(), QStringLiteral("pending extracting converting idle"));
    QCOMPARE(project.tools.calls(QStringLiteral("dcraw")).size(), 1);
}

void TestMLVProjectController::stopBetweenConversionAndMovie()
{
    FakeProject project(0);
    project.read();
    project.setExtraction(FakeProject::extraction(1));
    project.setConversion(QStringLiteral("exec sleep 1000"));
    project.launch();
    QTRY_COMPARE(project.controller->dngToProcess(), 1);
    project.controller->imageRGBReceived(QImage());
    project.controller->stop();
    passThePause();
    QCOMPARE(project.log(), QStringLiteral("pending extracting converting no image idle"));
    QCOMPARE(project.tools.calls(QStringLiteral("ffmpeg")), QList<QStringList>());
}

void TestMLVProjectController::stopDuringEncoding()
{
    FakeProject project(1);
    project.setEncoding(QStringLiteral("echo half > \"$movie\"; exec sleep 1000"));
    project.read();
    project.launch();
    QTRY_VERIFY(QFile::exists(project.movie()));
    project.controller->stop();
    QVERIFY(!QFile::exists(project.movie()));
    QCOMPARE(project.log(),
             QStringLiteral("pending extracting converting image encoding idle idle"));
    QVERIFY(QFile::exists(project.frame(0, tiff)));
}

void TestMLVProjectController::destructionDuringConversionLeavesNoTool()
{
    FakeProject project(1);
    project.setConversion(QStringLiteral("echo half > \"$tiff\"; exec sleep 1000"));
    project.read();
    project.launch();
    const QString converted = project.frame(0, tiff);
    QTRY_VERIFY(QFile::exists(converted));
    project.controller.reset();
    QVERIFY(!QFile::exists(converted));
}

FILMWRIGHT_TEST(TestMLVProjectController, QCoreApplication)
#include "tst_mlvprojectcontroller.moc"
