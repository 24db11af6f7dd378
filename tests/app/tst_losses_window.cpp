// SPDX-License-Identifier: MIT
// A queue with recordings that can't be used, or that would hurt others: nothing else is lost, and
// nothing stays behind.
#include "fakewindow.h"

#include "app/progressindicator.h"
#include "support/events.h"
#include "support/fulldisk.h"
#include "support/testprogram.h"

#include <QComboBox>
#include <QDir>

using namespace filmwright;

namespace {

const QString nothing = QStringLiteral(":");
const QString encode = QStringLiteral("cp \"$film\" \"$movie\"");

QStringList moviesWritten(const FakeWindow &window)
{
    QStringList names;
    for (const QStringList &call : window.tools.calls(QStringLiteral("ffmpeg")))
        names << QFileInfo(call.constLast()).fileName();
    return names;
}

/// What is in the temporary directory, hidden files too.
QStringList temporaryEntries(const FakeWindow &window)
{
    return QDir(window.temporary(QString()))
        .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
}

} // namespace

class TestLossesWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void secondMovieOfANameIsRefused();
    void calibrationChosenDuringABatchIsWaitedFor();
    void deletedCalibrationHoldsFromTheNextRecording();
    void metadataThatAStopHasCostIsReadAgain();
    void unusableRecordingIsMarkedAndStartsNothing();
    void unusableRecordingCostsOnlyItself();
    void mendedRecordingIsReadAgain();
    void errorBehindAnAlertStopsItsBatch();
    void secondErrorBehindAnAlertStartsNoBatch();
    void errorOfAnEarlierStateActsOnNone();
    void nameOfAnAverageIsRefusedWithACalibration();
    void temporaryDirectoryIsNotSearched();
    void leftOversAreRemovedBeforeTheLock();
    void removedRecordingLeavesNothing_data();
    void removedRecordingLeavesNothing();
    void removedRecordingWithoutRoomLeavesNothing();
    void changedFolderLeavesNothing();
    void finishedRecordingLeavesNoNote();
    void quitWaitsForFramesInWork();
    void openWorksAfterTheQueueWasEmptied();
    void removalTellsWhatIsLeft();
    void stoppedBatchShowsWhatIsWritten();
    void rateOfZeroIsRefusedWhenItIsRead();
    void oddFramesAreRefusedForMov();
    void deleteInAPopUpKeepsTheQueue();
    void percentInANameStays();
    void toolIsNotGuessedFromAName();
};

void TestLossesWindow::secondMovieOfANameIsRefused()
{
    FakeWindow window;
    window.launch(
        {QStringLiteral("clip.MLV"), QStringLiteral("x.MLV"), QStringLiteral("clip.mlv")});
    window.pressStart();
    window.waitForEnd();
    const QString movie = window.recordings() + QStringLiteral("/clip.avi");
    QTRY_COMPARE(window.alerts.shown,
                 QStringList{QStringLiteral("1 of 3 recordings have no whole movie|clip.mlv: its "
                                            "movie would replace that of another recording, %1|Ok")
                                 .arg(movie)});
    QCOMPARE(moviesWritten(window),
             (QStringList{QStringLiteral("clip.avi"), QStringLiteral("x.avi")}));
    QCOMPARE(window.states(), QStringList({finished, finished, ready}));
}

void TestLossesWindow::calibrationChosenDuringABatchIsWaitedFor()
{
    FakeWindow window(1);
    window.launch({a, b});
    window.calibrate(QStringLiteral("darkButton"), QStringLiteral("A.MLV"));
    window.setEncoding(window.untilReleased(QStringLiteral("encode")) + encode);
    window.setAveraging(window.untilReleased(QStringLiteral("average")) + FakeTools::averaging(1));
    window.pressStart();
    QTRY_COMPARE(window.states(), QStringList({building, pending}));
    window.panel.chosen = window.makeRecordings({QStringLiteral("B.MLV")});
    window.press(QStringLiteral("darkButton"));
    window.release(QStringLiteral("encode"));
    QTRY_COMPARE(window.states().constFirst(), finished);
    settle(1);
    QCOMPARE(window.states(), QStringList({finished, pending}));
    QVERIFY(window.delegate->isWorking());
    window.release(QStringLiteral("average"));
    window.waitForEnd();
    QCOMPARE(window.states(), QStringList({finished, finished}));
    const auto tip = [&window](int row) {
        return window.delegate->toolTipForTableColumn(QStringLiteral("State"), row);
    };
    QCOMPARE(tip(1), QStringLiteral("Finished\nDark: A.MLV"));
    QCOMPARE(tip(0), QStringLiteral("Finished\nDark: B.MLV"));
}

void TestLossesWindow::deletedCalibrationHoldsFromTheNextRecording()
{
    FakeWindow window(1);
    window.launch({a, b});
    window.calibrate(QStringLiteral("darkButton"), QStringLiteral("A.MLV"));
    window.setEncoding(window.untilReleased(QStringLiteral("encode")) + encode);
    window.pressStart();
    QTRY_COMPARE(window.states(), QStringList({building, pending}));
    auto *field = window.widget<CustomTextField>(QStringLiteral("darkTextField"));
    QTest::mouseClick(field->deleteButton(), Qt::LeftButton);
    window.release(QStringLiteral("encode"));
    window.waitForEnd();
    QCOMPARE(window.delegate->toolTipForTableColumn(QStringLiteral("State"), 1),
             QStringLiteral("Finished\nDark: A.MLV"));
    QCOMPARE(window.delegate->toolTipForTableColumn(QStringLiteral("State"), 0), finished);
}

void TestLossesWindow::metadataThatAStopHasCostIsReadAgain()
{
    FakeWindow window;
    window.setBeforeReport(
        onlyForB("recording", QStringLiteral("echo '[ERROR] torn block'"), window.untilReleased()));
    window.launch();
    QVERIFY(window.drop(window.makeRecordings({a, b, c})));
    QTRY_COMPARE(window.alerts.shown,
                 QStringList{QStringLiteral("Process aborted|[ERROR] torn block|Ok")});
    QVERIFY(window.delegate->isWorking());
    window.release();
    window.waitForEnd();
    const auto &projects = window.delegate->projectList();
    QCOMPARE(projects.at(0)->videoFrames(), quint64(2));
    QCOMPARE(window.states().constFirst(), finished);

    // Whatever was broken off, the next start makes it good.
    window.setBeforeReport(nothing);
    window.pressStart();
    window.waitForEnd();
    QCOMPARE(window.states(), QStringList({finished, finished, finished}));
    for (const QStringList &call : window.tools.calls(QStringLiteral("ffmpeg")))
        QVERIFY(call.contains(QStringLiteral("25.00")));
}

void TestLossesWindow::unusableRecordingIsMarkedAndStartsNothing()
{
    FakeWindow window;
    window.setBeforeReport(onlyForB(
        "recording", QStringLiteral("echo '[UNUSABLE] no recording'; echo Done; exit 1"), nothing));
    window.launch({a, b, c});
    QTRY_COMPARE(window.stateView(1)->error(), QStringLiteral("no recording"));
    QVERIFY(window.stateView(0)->error().isEmpty());
    settle();
    QCOMPARE(window.states(), QStringList({ready, ready, ready}));
    QVERIFY(!window.delegate->isWorking());
    QCOMPARE(window.alerts.shown, QStringList());
    QVERIFY(window.action(QStringLiteral("startStopItem"))->isEnabled());
}

void TestLossesWindow::unusableRecordingCostsOnlyItself()
{
    FakeWindow window;
    window.setExtraction(onlyForB(
        "recording", QStringLiteral("echo '[UNUSABLE] another size than the dark'; exit 1"),
        FakeTools::extraction(2)));
    window.launch({a, b, c});
    window.pressStart();
    window.waitForEnd();
    QTRY_COMPARE(window.alerts.shown,
                 QStringList{QStringLiteral("1 of 3 recordings have no whole movie|b.MLV: another "
                                            "size than the dark|Ok")});
    QCOMPARE(window.states(), QStringList({finished, ready, finished}));
    QTRY_COMPARE(window.stateView(1)->error(), QStringLiteral("another size than the dark"));
}

void TestLossesWindow::mendedRecordingIsReadAgain()
{
    FakeWindow window;
    window.setBeforeReport(onlyForB(
        "recording", QStringLiteral("echo '[UNUSABLE] no recording'; echo Done; exit 1"), nothing));
    window.launch({a, b});
    window.pressStart();
    window.waitForEnd();
    QTRY_COMPARE(window.alerts.shown,
                 QStringList{QStringLiteral("1 of 2 recordings have no whole movie|b.MLV: no "
                                            "recording|Ok")});
    window.setBeforeReport(nothing);
    window.pressStart();
    window.waitForEnd();
    QTRY_COMPARE(window.status(), QStringLiteral("2 movies written"));
    QTRY_VERIFY(window.stateView(0)->error().isEmpty());
    QCOMPARE(window.alerts.shown.size(), 1);
}

void TestLossesWindow::errorBehindAnAlertStopsItsBatch()
{
    FakeWindow window;
    window.setExtraction(onlyForB(
        "recording", window.untilReleased() + QStringLiteral("echo '[ERROR] bad block'; exit 1"),
        FakeTools::extraction(2)));
    window.launch({a, b, c});
    window.pressStart();
    QTRY_COMPARE(window.states().constFirst(), finished);
    window.alerts.whileOpen = [&] {
        window.alerts.whileOpen = nullptr;
        window.release();
        settle(); // "b" fails, and a movie of "c" would begin
    };
    QVERIFY(!window.drop(window.makeRecordings({QStringLiteral("d.MLV")})));
    window.waitForEnd();
    QCOMPARE(window.alerts.shown.size(), 2);
    QCOMPARE(window.alerts.shown.constLast(),
             QStringLiteral("Process aborted|[ERROR] bad block|Ok"));
    QCOMPARE(moviesWritten(window), QStringList{QStringLiteral("a.avi")});
    QCOMPARE(window.states(), QStringList({ready, ready, ready}));
}

/// Both come in the batch, and the first one's answer stops it.
void TestLossesWindow::secondErrorBehindAnAlertStartsNoBatch()
{
    FakeWindow window;
    window.setExtraction(window.untilReleased() +
                         QStringLiteral("printf '[ERROR] bad block\\n[ERROR] worse\\n'; exit 1"));
    window.launch({a});
    window.pressStart();
    window.alerts.whileOpen = [&] {
        window.alerts.whileOpen = nullptr;
        window.release();
        settle();
    };
    QVERIFY(!window.drop(window.makeRecordings({b})));
    QTRY_COMPARE(window.alerts.shown.mid(1),
                 QStringList({QStringLiteral("Process aborted|[ERROR] bad block|Ok"),
                              QStringLiteral("Process aborted|[ERROR] worse|Ok")}));
    settle();
    QVERIFY(!window.delegate->isWorking());
    QCOMPARE(window.tools.calls(QStringLiteral("mlv_dump")).size(), 2); // a report, an extraction
}

void TestLossesWindow::errorOfAnEarlierStateActsOnNone()
{
    FakeWindow window;
    window.launch({a});
    window.setBeforeReport(QStringLiteral("case \"$recording\" in *a.*) ;; *) echo '[ERROR] torn'; "
                                          ": > \"$recording.told\" ;; esac"));
    const auto errors = [&window] { return window.alerts.shown.filter(QStringLiteral("torn")); };
    // Both come while nothing runs. The first answer starts a batch, the second comes when that one
    // is over.
    window.alerts.whileOpen = [&] {
        if (errors().size() == 1) {
            for (const QString &name : {b, c})
                QTRY_VERIFY(QFileInfo::exists(window.recordings() + QLatin1Char('/') + name +
                                              QStringLiteral(".told")));
            settle();
        } else if (errors().size() == 2) {
            QTRY_VERIFY_WITH_TIMEOUT(!window.delegate->isWorking(), 60000);
        }
    };
    QVERIFY(window.drop(window.makeRecordings({b, c})));
    QTRY_COMPARE_WITH_TIMEOUT(errors().size(), 2, 60000);
    window.waitForEnd();
    settle();
    QVERIFY(!window.delegate->isWorking());
    QCOMPARE(moviesWritten(window).count(QStringLiteral("a.avi")), 1);
}

void TestLossesWindow::nameOfAnAverageIsRefusedWithACalibration()
{
    FakeWindow window(1);
    window.launch();
    const QString name = QStringLiteral("dark.mlv");
    window.add({name, a});
    window.calibrate(QStringLiteral("darkButton"), QStringLiteral("cap.MLV"));
    window.pressStart();
    window.waitForEnd();
    QTRY_COMPARE(window.alerts.shown,
                 QStringList{QStringLiteral("1 of 2 recordings have no whole movie|dark.mlv: an "
                                            "averaged calibration recording is kept under its "
                                            "name; rename it|Ok")});
    QCOMPARE(window.states(), QStringList({ready, finished}));
    auto *field = window.widget<CustomTextField>(QStringLiteral("darkTextField"));
    QTest::mouseClick(field->deleteButton(), Qt::LeftButton);
    window.pressStart();
    window.waitForEnd();
    QTRY_COMPARE(window.status(), QStringLiteral("2 movies written"));
}

void TestLossesWindow::temporaryDirectoryIsNotSearched()
{
    FakeWindow window(1);
    window.launch();
    window.calibrate(QStringLiteral("darkButton"), QStringLiteral("cap.MLV"));
    QVERIFY(QFileInfo::exists(window.temporary(QStringLiteral("dark.mlv"))));
    QVERIFY(window.drop({QFileInfo(window.temporary(QString())).dir().path()}));
    QCOMPARE(window.queue().filter(QStringLiteral("dark.mlv")), QStringList());
}

void TestLossesWindow::leftOversAreRemovedBeforeTheLock()
{
    FakeWindow window;
    const QString leftOver = window.temporary(QStringLiteral("a.MLV/tmp000000.dng"));
    QVERIFY(QDir().mkpath(QFileInfo(leftOver).path()));
    QVERIFY(QFile(leftOver).open(QIODevice::WriteOnly));
    const FullDisk disk(0);
    window.launch();
    QVERIFY(!QFileInfo::exists(leftOver));
    QCOMPARE(window.alerts.shown.size(), 1); // this disk stays full all the same
    QVERIFY2(!window.alerts.shown.constFirst().contains(QLatin1String("in use")),
             qPrintable(window.alerts.shown.constFirst()));
}

void TestLossesWindow::removedRecordingLeavesNothing_data()
{
    QTest::addColumn<bool>("replaced");
    QTest::newRow("removed") << false;
    QTest::newRow("replaced") << true;
}

void TestLossesWindow::removedRecordingLeavesNothing()
{
    QFETCH(const bool, replaced);
    FakeWindow window;
    window.setEncoding(QStringLiteral("exec sleep 60"));
    window.launch({a});
    window.pressStart();
    QTRY_COMPARE(window.states(), QStringList{building});
    window.pressStart();
    QVERIFY(!temporaryEntries(window).isEmpty()); // for the next start
    if (replaced) {
        window.alerts.answers = {0};
        window.add({b});
    } else {
        window.select(a);
        QTest::keyClick(window.table(), Qt::Key_Delete);
        QCOMPARE(window.queue(), QStringList());
    }
    QCOMPARE(temporaryEntries(window), QStringList());
}

void TestLossesWindow::removedRecordingWithoutRoomLeavesNothing()
{
    FakeWindow window;
    window.setRawInformation(QStringLiteral("900000x900000"), 14);
    window.launch({a});
    window.pressStart();
    window.waitForEnd();
    window.select(a);
    QTest::keyClick(window.table(), Qt::Key_Delete);
    QCOMPARE(window.queue(), QStringList());
    QCOMPARE(temporaryEntries(window), QStringList());
}

void TestLossesWindow::changedFolderLeavesNothing()
{
    FakeWindow window;
    window.setEncoding(QStringLiteral("exec sleep 60"));
    window.launch({a});
    window.pressStart();
    QTRY_COMPARE(window.states(), QStringList{building});
    window.pressStart();
    const QString before = window.temporary(QString());
    QVERIFY(QFileInfo::exists(before));
    window.action(QStringLiteral("preferencesMenuItem"))->trigger();
    QTest::keyClick(window.widget<QComboBox>(QStringLiteral("prefTempFolderPopUpButton")),
                    Qt::Key_End);
    window.panel.chosen = QStringList{window.path(QStringLiteral("frames"))};
    window.press(QStringLiteral("prefTempFolderButton"));
    QVERIFY(window.temporary(QString()) != before);
    QVERIFY(!QFileInfo::exists(before));
}

void TestLossesWindow::finishedRecordingLeavesNoNote()
{
    FakeWindow window;
    window.launch({a, b});
    window.pressStart();
    window.waitForEnd();
    QTRY_COMPARE(window.status(), QStringLiteral("2 movies written"));
    QCOMPARE(temporaryEntries(window), QStringList());
}

/// A worker that was still converting would write its frame after the removal.
void TestLossesWindow::quitWaitsForFramesInWork()
{
    FakeWindow window;
    window.setConversion(
        QStringLiteral("trap '' TERM INT; : > '%1'; sleep 0.5; "
                       "mkdir -p \"$(dirname \"$tiff\")\"; cp \"$frame\" \"$tiff\"")
            .arg(window.path(QStringLiteral("converting"))));
    window.launch({a});
    window.pressStart();
    QTRY_VERIFY(QFileInfo::exists(window.path(QStringLiteral("converting"))));
    const QString directory = window.temporary(QString());
    window.quit();
    QVERIFY(!QFileInfo::exists(directory));
}

void TestLossesWindow::openWorksAfterTheQueueWasEmptied()
{
    FakeWindow window;
    window.setBeforeReport(window.untilReleased());
    window.launch();
    QVERIFY(window.drop(window.makeRecordings({a})));
    const QString empty = window.recordings() + QStringLiteral("/empty");
    QVERIFY(QDir().mkdir(empty));
    window.alerts.answers = {0};
    QVERIFY(window.drop({empty}));
    QCOMPARE(window.queue(), QStringList());
    QVERIFY(window.action(QStringLiteral("sourceItem"))->isEnabled());
    QVERIFY(!window.action(QStringLiteral("startStopItem"))->isEnabled());
    QCOMPARE(window.status(), QStringLiteral("No recordings in empty"));
    window.release();
    window.open(window.makeRecordings({b}));
    window.waitUntilRead();
    QCOMPARE(window.queue(), QStringList{b});
}

void TestLossesWindow::removalTellsWhatIsLeft()
{
    FakeWindow window;
    window.launch({a, b});
    QCOMPARE(window.status(), QStringLiteral("2 recordings in the queue"));
    window.select(a);
    QTest::keyClick(window.table(), Qt::Key_Delete);
    QCOMPARE(window.status(), QStringLiteral("1 recording in the queue"));
}

void TestLossesWindow::stoppedBatchShowsWhatIsWritten()
{
    FakeWindow window;
    window.setEncoding(onlyForB("movie", QStringLiteral("exec sleep 60"), encode));
    window.launch({a, b, c});
    window.pressStart();
    QTRY_COMPARE(window.states(), QStringList({finished, building, pending}));
    window.pressStart();
    QCOMPARE(window.states(), QStringList({ready, ready, ready}));
    QTRY_COMPARE(window.status(), QStringLiteral("Stopped: 1 of 3 movies written"));
    QTRY_VERIFY(window.stateView(2)->isMovieWritten());
    QVERIFY(!window.stateView(1)->isMovieWritten());
    QVERIFY(!window.stateView(0)->isMovieWritten());
}

void TestLossesWindow::rateOfZeroIsRefusedWhenItIsRead()
{
    FakeWindow window;
    window.setRate(QStringLiteral("0.004"));
    window.launch({a});
    QTRY_COMPARE(window.stateView(0)->error(),
                 QStringLiteral("no movie can be made of 0 frames a second, its frame rate"));
    const QString movie = window.recordings() + QStringLiteral("/a.avi");
    QVERIFY(QFile(movie).open(QIODevice::WriteOnly));
    window.pressStart();
    window.waitForEnd();
    QTRY_COMPARE(window.status(), QStringLiteral("1 of 1 recordings have no whole movie"));
    QVERIFY(QFileInfo::exists(movie)); // an earlier one
    QCOMPARE(window.tools.calls(QStringLiteral("dcraw")), QList<QStringList>());
}

void TestLossesWindow::oddFramesAreRefusedForMov()
{
    FakeWindow window(3);
    FakeTools::writeTiff(window.path(QStringLiteral("whole.tiff")), 5);
    window.launch({a});
    auto *format = window.widget<QComboBox>(QStringLiteral("movieFormatPopUpButton"));
    format->setCurrentIndex(1);
    window.pressStart();
    window.waitForEnd();
    QTRY_COMPARE(window.stateView(0)->error(),
                 QStringLiteral("MOV holds no frames of 5x2 pixels: both have to be even; choose "
                                "AVI"));
    QCOMPARE(moviesWritten(window), QStringList());
    format->setCurrentIndex(0);
    window.pressStart();
    window.waitForEnd();
    QTRY_COMPARE(window.status(), QStringLiteral("1 movie written"));
}

void TestLossesWindow::deleteInAPopUpKeepsTheQueue()
{
    FakeWindow window;
    window.launch({a});
    window.select(a);
    auto *format = window.widget<QComboBox>(QStringLiteral("movieFormatPopUpButton"));
    format->setFocus();
    QTest::keyClick(format, Qt::Key_Delete);
    QCOMPARE(window.queue(), QStringList{a});
}

void TestLossesWindow::percentInANameStays()
{
    FakeWindow window;
    window.setExtraction(QStringLiteral("exit 1"));
    window.launch({QStringLiteral("50%% done.MLV")});
    window.pressStart();
    window.waitForEnd();
    QTRY_COMPARE(window.alerts.shown.size(), 1);
    QVERIFY2(window.alerts.shown.constFirst().contains(QLatin1String("|50%% done.MLV: ")),
             qPrintable(window.alerts.shown.constFirst()));
}

/// A folder may be called like a tool.
void TestLossesWindow::toolIsNotGuessedFromAName()
{
    FakeWindow window;
    window.setBlending(QStringLiteral("echo 'cr2hdr has spoken'"));
    window.setEncoding(QStringLiteral("echo 'the encoder has spoken'; "
                                      "echo '/media/cr2hdr is gone'; exit 1"));
    window.launch({a});
    window.select(a);
    window.action(QStringLiteral("blendRowsMenuItem"))->trigger();
    window.pressStart();
    window.waitForEnd();
    QTRY_COMPARE(window.stateView(0)->error(),
                 QStringLiteral("ffmpeg ended with status 1: /media/cr2hdr is gone\n"
                                "the encoder has spoken\n/media/cr2hdr is gone"));
}

FILMWRIGHT_TEST(TestLossesWindow, QApplication)
#include "tst_losses_window.moc"
