// SPDX-License-Identifier: MIT
#include "fakeproject.h"

#include "project/moviemark.h"
#include "project/projectmonitor.h"
#include "support/events.h"
#include "support/testprogram.h"

#include <QFile>
#include <QFileInfo>
#include <QTest>

using namespace filmwright;

namespace {

/// Notes how the run ends.
class MonitoredProject : public FakeProject
{
public:
    using FakeProject::FakeProject;

    void monitor(ProjectMonitor::Work work = ProjectMonitor::Conversion)
    {
        projectMonitor.reset();
        projectMonitor = std::make_unique<ProjectMonitor>(*controller, work, this);
        QObject::connect(projectMonitor.get(), &ProjectMonitor::ended, projectMonitor.get(),
                         [this](const Failure &failure) {
                             endings << failure.error;
                             last = failure;
                         });
    }

    std::unique_ptr<ProjectMonitor> projectMonitor;
    QStringList endings;
    Failure last;
};

QStringList one(const char *reason)
{
    return {QString::fromUtf8(reason)};
}

} // namespace

class TestProjectMonitor : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void wholeMovieEndsWithoutAReason();
    void errorLineEndsTheRunOnce();
    void reportThatNeverComes();
    void missingMlvDump();
    void extractionThatIsCutOff();
    void recordingWithoutFrames();
    void frameThatIsNotConverted();
    void frameThatIsConvertedToRubbish();
    void frameThatIsCutShort();
    void recipeThatHoldsNoOddFrames_data();
    void recipeThatHoldsNoOddFrames();
    void failingBlend();
    void pairThatIsNotMerged();
    void frameWithoutANeighbour();
    void pairsMergedWithoutAFrameAreMergedAnew();
    void pairsOfConvertedFramesAreNotMergedAgain();
    void failingEncoderLosesItsPartialMovie();
    void encoderThatDiesOfASignal();
    void encoderThatWritesNothing();
    void encoderThatStopsInTheMiddle();
    void encoderThatLosesFrames();
    void encoderThatRepeatsFrames();
    void missingEncoder();
    void movieIsMarkedExactlyWhileItIsWritten();
    void movieOfADeadRunIsRemovedFirst();
    void movieThatAnotherRunWrites();
    void movieThatAnotherRunBeginsMeanwhile();
};

void TestProjectMonitor::wholeMovieEndsWithoutAReason()
{
    MonitoredProject project(2);
    project.read();
    project.monitor();
    project.launch();
    QTRY_COMPARE(project.endings, QStringList{QString()});
    QCOMPARE(project.events.constLast(), QStringLiteral("told"));
}

void TestProjectMonitor::errorLineEndsTheRunOnce()
{
    MonitoredProject project(1);
    project.read();
    project.setExtraction(QStringLiteral("echo '[ERROR] bad block'; echo '[ERROR] worse'; exit 1"));
    project.monitor();
    project.launch();
    QTRY_COMPARE(project.endings, one("bad block"));
    QTRY_VERIFY(!project.controller->isToolBusy());
    settle();
    QCOMPARE(project.endings, one("bad block"));
}

void TestProjectMonitor::reportThatNeverComes()
{
    MonitoredProject project(1);
    project.tools.addTool(QStringLiteral("mlv_dump"), QStringLiteral("kill -SEGV $$"));
    project.controller = std::make_unique<MLVProjectController>();
    project.monitor(ProjectMonitor::Reading);
    project.controller->setMlvPath(project.recording());
    QTRY_COMPARE(project.endings, one("mlv_dump ended before it had read the recording"));
}

void TestProjectMonitor::missingMlvDump()
{
    MonitoredProject project(1);
    QVERIFY(QFile::remove(project.tools.path() + QStringLiteral("/mlv_dump")));
    project.controller = std::make_unique<MLVProjectController>();
    project.monitor(ProjectMonitor::Reading);
    project.controller->setMlvPath(project.recording());
    QTRY_COMPARE(project.endings, one("mlv_dump ended before it had read the recording"));
}

void TestProjectMonitor::extractionThatIsCutOff()
{
    MonitoredProject project(1);
    project.read();
    project.setExtraction(QStringLiteral("echo dng > \"$prefix\"000000.dng; kill -KILL $$"));
    project.monitor();
    project.launch();
    QTRY_COMPARE(project.endings, one("mlv_dump ended before it had extracted the frames"));
}

void TestProjectMonitor::recordingWithoutFrames()
{
    MonitoredProject project(0);
    project.read();
    project.monitor();
    project.launch();
    QTRY_COMPARE(project.endings, one("no frame could be extracted"));
}

void TestProjectMonitor::frameThatIsNotConverted()
{
    MonitoredProject project(3);
    project.setConversion(
        QStringLiteral("case $dng in *1.dng) exit 1;; esac; cp \"$frame\" \"$tiff\""));
    project.read();
    project.monitor();
    project.launch();
    QTRY_COMPARE(project.endings, one("dcraw converted only 2 of 3 frames"));
}

void TestProjectMonitor::frameThatIsConvertedToRubbish()
{
    MonitoredProject project(3);
    project.setConversion(QStringLiteral("case $dng in *1.dng) echo rubbish > \"$tiff\";; "
                                         "*) cp \"$frame\" \"$tiff\";; esac"));
    project.read();
    project.monitor();
    project.launch();
    QTRY_COMPARE(project.endings, one("dcraw converted only 2 of 3 frames"));
}

void TestProjectMonitor::frameThatIsCutShort()
{
    MonitoredProject project(2);
    project.setConversion(QStringLiteral(
        "cp \"$frame\" \"$tiff\"; case $dng in *1.dng) truncate -s -1 \"$tiff\";; esac"));
    project.read();
    project.monitor();
    project.launch();
    QTRY_COMPARE(project.endings, one("dcraw converted only 1 of 2 frames"));
}

void TestProjectMonitor::recipeThatHoldsNoOddFrames_data()
{
    QTest::addColumn<QStringList>("develop");
    QTest::addColumn<QString>("format");
    QTest::addColumn<QString>("reason");
    const QString refused = QStringLiteral("one holds no frames of 5x2 pixels: odd sides need a "
                                           "recipe of 4:4:4 or RGB, such as prores-4444 or ffv1");
    QTest::newRow("4:2:0") << QStringList() << "yuv420p10le" << refused;
    QTest::newRow("4:2:2") << QStringList() << "yuv422p" << refused;
    QTest::newRow("4:4:4") << QStringList() << "yuv444p10le" << QString();
    QTest::newRow("RGB") << QStringList() << "gbrp16le" << QString();
    QTest::newRow("half the size, which is cut")
        << QStringList{QStringLiteral("-h")} << "yuv420p" << QString();
}

void TestProjectMonitor::recipeThatHoldsNoOddFrames()
{
    QFETCH(QStringList, develop);
    QFETCH(QString, format);
    QFETCH(QString, reason);
    MonitoredProject project(1);
    project.read();
    Recipe recipe;
    recipe.name = QStringLiteral("one");
    recipe.extension = QStringLiteral("mov");
    recipe.develop = develop;
    recipe.video = QStringList{QStringLiteral("-pix_fmt"), format};
    project.controller->setRecipe(recipe);
    FakeTools::writeTiff(project.path(QStringLiteral("whole.tiff")), 5);
    project.monitor();
    project.launch();
    QTRY_COMPARE(project.endings, QStringList{reason});
    project.controller->stop();
}

void TestProjectMonitor::failingBlend()
{
    MonitoredProject project(2);
    project.setBlending(QStringLiteral("echo 'tmp000001.dng : no picture'; exit 1"));
    project.read();
    project.controller->setBlendsAlternatingRows(true);
    project.monitor();
    project.launch();
    QTRY_COMPARE(project.endings, one("cr2hdr ended with status 1: tmp000001.dng : no picture"));
}

void TestProjectMonitor::pairThatIsNotMerged()
{
    MonitoredProject project(3);
    project.read();
    project.controller->setDualISO(true);
    // A file stands where the folder of the merged frames belongs.
    project.setConversion(
        QStringLiteral("cp \"$frame\" \"$tiff\"; : > \"$(dirname \"$tiff\")/hdr\""));
    project.monitor();
    project.launch();
    QTRY_COMPARE(project.endings, one("only 0 of 2 pairs of frames were merged"));
}

void TestProjectMonitor::frameWithoutANeighbour()
{
    MonitoredProject project(1);
    project.read();
    project.controller->setDualISO(true);
    project.monitor();
    project.launch();
    QTRY_COMPARE(project.endings, one("its only frame has no neighbour to be merged with"));
}

void TestProjectMonitor::pairsMergedWithoutAFrameAreMergedAnew()
{
    MonitoredProject project(3);
    FakeProject::writeMovie(project.path(QStringLiteral("whole.mov")), 2);
    project.setConversion(
        QStringLiteral("case $dng in *1.dng) exit 1;; esac; cp \"$frame\" \"$tiff\""));
    project.read();
    project.controller->setDualISO(true);
    project.controller->setKeepsTmpFiles(true);
    project.monitor();
    project.launch();
    QTRY_COMPARE(project.endings, one("dcraw converted only 2 of 3 frames"));
    project.controller->stop();
    const QDir merged(project.controller->tiffsDirectory());
    QCOMPARE(merged.entryList(QDir::Files), QStringList{QStringLiteral("tmp000000.tiff")});

    const QString pair = merged.filePath(QStringLiteral("tmp000000.tiff"));
    QVERIFY(QFile::setPermissions(pair, QFile::ReadOwner)); // a new one is writable

    project.setConversion(QStringLiteral("cp \"$frame\" \"$tiff\""));
    project.endings.clear();
    project.monitor();
    project.launch();
    QTRY_COMPARE(project.endings, QStringList{QString()});
    QVERIFY(QFile::permissions(pair) & QFile::WriteOwner);
    QCOMPARE(merged.entryList(QDir::Files),
             (QStringList{QStringLiteral("tmp000000.tiff"), QStringLiteral("tmp000001.tiff")}));
}

void TestProjectMonitor::pairsOfConvertedFramesAreNotMergedAgain()
{
    MonitoredProject project(2);
    FakeProject::writeMovie(project.path(QStringLiteral("whole.mov")), 1);
    project.read();
    project.controller->setDualISO(true);
    project.controller->setKeepsTmpFiles(true);
    project.monitor();
    project.launch();
    QTRY_COMPARE(project.endings, QStringList{QString()});
    const QString merged = project.controller->tiffsDirectory() + QStringLiteral("tmp000000.tiff");
    QVERIFY(QFile::setPermissions(merged, QFile::ReadOwner)); // a new one would be writable
    project.monitor();
    project.launch();
    QTRY_COMPARE(project.endings, (QStringList{QString(), QString()}));
    QVERIFY(!(QFile::permissions(merged) & QFile::WriteOwner));
}

void TestProjectMonitor::failingEncoderLosesItsPartialMovie()
{
    MonitoredProject project(1);
    project.setEncoding(
        QStringLiteral("echo half > \"$movie\"; echo 'No space left on device'; exit 3"));
    project.read();
    project.monitor();
    project.launch();
    QTRY_COMPARE(project.endings,
                 QStringList{QStringLiteral("no space left in the movie's folder %1: ffmpeg ended "
                                            "with status 3: No space left on device")
                                 .arg(QFileInfo(project.movie()).path())});
    QVERIFY(!QFile::exists(project.movie()));
}

void TestProjectMonitor::encoderThatDiesOfASignal()
{
    MonitoredProject project(1);
    project.setEncoding(QStringLiteral("echo half > \"$movie\"; kill -KILL $$"));
    project.read();
    project.monitor();
    project.launch();
    QTRY_COMPARE(project.endings, one("ffmpeg ended with status 9: it said nothing"));
    QVERIFY(!QFile::exists(project.movie()));
}

void TestProjectMonitor::encoderThatWritesNothing()
{
    MonitoredProject project(1);
    project.setEncoding(QStringLiteral("exit 0"));
    project.read();
    project.monitor();
    project.launch();
    QTRY_COMPARE(project.endings, one("ffmpeg wrote no movie"));
}

void TestProjectMonitor::encoderThatStopsInTheMiddle()
{
    MonitoredProject project(1);
    project.setEncoding(QStringLiteral("head -c 60 \"$film\" > \"$movie\""));
    project.read();
    project.monitor();
    project.launch();
    QTRY_COMPARE(project.endings, one("ffmpeg left its movie unfinished"));
    QVERIFY(!QFile::exists(project.movie()));
    QVERIFY(!QFile::exists(MovieMark::pathFor(project.movie())));
}

void TestProjectMonitor::encoderThatLosesFrames()
{
    MonitoredProject project(3);
    FakeProject::writeMovie(project.path(QStringLiteral("whole.mov")), 2);
    project.read();
    project.monitor();
    project.launch();
    QTRY_COMPARE(project.endings, one("ffmpeg encoded only 2 of 3 frames"));
    QVERIFY(!QFile::exists(project.movie()));
}

void TestProjectMonitor::encoderThatRepeatsFrames()
{
    MonitoredProject project(3);
    FakeProject::writeMovie(project.path(QStringLiteral("whole.mov")), 4);
    project.read();
    project.monitor();
    project.launch();
    QTRY_COMPARE(project.endings, one("ffmpeg encoded 4 frames where there are 3"));
    QCOMPARE(project.last.tool, QStringLiteral("ffmpeg"));
    QVERIFY(!QFile::exists(project.movie()));
}

void TestProjectMonitor::missingEncoder()
{
    MonitoredProject project(1);
    project.read();
    QVERIFY(QFile::remove(project.tools.path() + QStringLiteral("/ffmpeg")));
    project.monitor();
    project.launch();
    QTRY_COMPARE(project.endings, one("ffmpeg could not be started"));
}

void TestProjectMonitor::movieIsMarkedExactlyWhileItIsWritten()
{
    MonitoredProject project(1);
    const QString seen = project.path(QStringLiteral("seen"));
    project.setConversion(QStringLiteral("cp \"$frame\" \"$tiff\"; ls -A '%1' > '%1/before'")
                              .arg(project.path(QString())));
    project.setEncoding(QStringLiteral("ls -A '%1' > '%2'; cp \"$film\" \"$movie\"")
                            .arg(project.path(QString()), seen));
    project.read();
    project.monitor();
    project.launch();
    QTRY_COMPARE(project.endings, QStringList{QString()});
    QFile before(project.path(QStringLiteral("before")));
    QFile during(seen);
    QVERIFY(before.open(QIODevice::ReadOnly) && during.open(QIODevice::ReadOnly));
    QVERIFY(!before.readAll().contains(".clip.mov.unfinished"));
    QVERIFY(during.readAll().contains(".clip.mov.unfinished"));
    QVERIFY(!QFile::exists(MovieMark::pathFor(project.movie())));
}

void TestProjectMonitor::movieOfADeadRunIsRemovedFirst()
{
    MonitoredProject project(1);
    // The dead run was asked for the other format.
    const QString halfMovie = project.path(QStringLiteral("clip.avi"));
    FakeProject::writeMovie(halfMovie, 0);
    QVERIFY(MovieMark(halfMovie).set().isEmpty());
    project.setExtraction(QStringLiteral("echo '[ERROR] bad block'; exit 1"));
    project.read();
    project.monitor();
    project.launch();
    QTRY_COMPARE(project.endings, one("bad block"));
    QVERIFY(!QFile::exists(halfMovie));
    QVERIFY(!QFile::exists(MovieMark::pathFor(halfMovie)));
}

void TestProjectMonitor::movieThatAnotherRunWrites()
{
    MonitoredProject project(1);
    MovieMark other(project.movie());
    QCOMPARE(other.set(), QString());
    FakeProject::writeMovie(project.movie(), 0);
    project.read();
    project.monitor();
    project.launch();
    QTRY_COMPARE(project.endings, one("its movie is being written by another run"));
    project.controller->stop();
    QVERIFY(QFile::exists(project.movie()));
    QVERIFY(QFile::exists(MovieMark::pathFor(project.movie())));
    QCOMPARE(project.tools.calls(QStringLiteral("mlv_dump")).size(), 1); // the metadata
}

void TestProjectMonitor::movieThatAnotherRunBeginsMeanwhile()
{
    MonitoredProject project(1);
    project.read();
    project.monitor();
    project.launch();
    MovieMark other(project.movie());
    QCOMPARE(other.set(), QString());
    FakeProject::writeMovie(project.movie(), 0);
    QTRY_COMPARE(project.endings, one("its movie is being written by another run"));
    project.controller->stop();
    QVERIFY(QFile::exists(project.movie()));
    QVERIFY(QFile::exists(MovieMark::pathFor(project.movie())));
    QCOMPARE(project.tools.calls(QStringLiteral("ffmpeg")), QList<QStringList>());
}

FILMWRIGHT_TEST(TestProjectMonitor, QCoreApplication)
#include "tst_projectmonitor.moc"
