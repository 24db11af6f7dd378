// SPDX-License-Identifier: MIT
#include "fakewindow.h"

#include "app/progressindicator.h"
#include "support/events.h"
#include "support/filecontent.h"
#include "support/fulldisk.h"
#include "support/processes.h"
#include "support/testprogram.h"

#include <QDialogButtonBox>
#include <QDir>
#include <QLabel>
#include <QPushButton>
#include <QTimer>

using namespace filmwright;

namespace {

const QString dark = QStringLiteral("dark");
const QString flat = QStringLiteral("flat");
const QString flatDark = QStringLiteral("flatDark");

const QString darkName = QStringLiteral("dark.mlv");
const QString flatName = QStringLiteral("flat.mlv");
const QString flatDarkName = QStringLiteral("flat_dark.mlv");
const QString substractedName = QStringLiteral("flat-flat_dark.mlv");

QDialog *sheet(const FakeWindow &window)
{
    return window.widget<QDialog>(QStringLiteral("preprocessPanel"));
}

QString sheetText(const FakeWindow &window)
{
    return window.widget<QLabel>(QStringLiteral("preprocessTextField"))->text();
}

ProgressIndicator *sheetBar(const FakeWindow &window)
{
    return window.widget<ProgressIndicator>(QStringLiteral("preprocessProgress"));
}

CustomTextField *field(const FakeWindow &window, const QString &kind)
{
    return window.widget<CustomTextField>(kind + QStringLiteral("TextField"));
}

/// Presses the button of that kind; the recording chosen is named after it.
QString choose(FakeWindow &window, const QString &kind)
{
    window.panel.chosen = window.makeRecordings({kind + QStringLiteral(" take.MLV")});
    window.press(kind + QStringLiteral("Button"));
    return window.panel.chosen.constFirst();
}

void cancel(const FakeWindow &window)
{
    auto *buttons = window.widget<QDialogButtonBox>(QStringLiteral("preprocessButtons"));
    QTest::mouseClick(buttons->button(QDialogButtonBox::Cancel), Qt::LeftButton);
}

/// A question comes 0.1 s after its average.
void passThePause()
{
    QTest::qWait(150);
}

QList<QStringList> averagings(const FakeWindow &window)
{
    QList<QStringList> calls = window.tools.calls(QStringLiteral("mlv_dump"));
    calls.removeIf(
        [](const QStringList &call) { return call.constFirst() != QLatin1String("-a"); });
    return calls;
}

/// The subtractions so far, as the outputs of mlv_dump.
QStringList substractions(const FakeWindow &window)
{
    QStringList outputs;
    for (const QStringList &call : window.tools.calls(QStringLiteral("mlv_dump")))
        if (call.constFirst() == QLatin1String("-s"))
            outputs << QFileInfo(call.at(3)).fileName();
    return outputs;
}

void addKinds()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("average");
    QTest::newRow("dark") << dark << darkName;
    QTest::newRow("flat") << flat << flatName;
    QTest::newRow("dark of the flat") << flatDark << flatDarkName;
}

} // namespace

class TestCalibrationWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void sheetTellsOfTheAveraging_data() { addKinds(); }
    void sheetTellsOfTheAveraging();
    void cancelledChooserLeavesTheChoice();
    void missingToolLeavesTheChoice();
    void oneFrameAsksNothing_data() { addKinds(); }
    void oneFrameAsksNothing();
    void severalFramesAskToReplaceTheRecording_data();
    void severalFramesAskToReplaceTheRecording();
    void questionComesAfterAPause();
    void replacedRecordingHoldsTheAverage();
    void recordingWithoutRoomForACopyIsAsItWas();
    void recordingIsAsItWasWhenTheDiskIsFull();
    void questionWaitsForAnOpenAlert();
    void errorTakesTheChoiceBack_data() { addKinds(); }
    void errorTakesTheChoiceBack();
    void errorStartsNoBatch();
    void errorOfADeadToolIsToldOnce();
    void noFrameLeavesTheSheetUp_data() { addKinds(); }
    void noFrameLeavesTheSheetUp();
    void deadToolTakesTheChoiceBack();
    void cancelEndsTheAveraging();
    void escapeEndsTheAveraging();
    void cancelDuringThePauseAsksNothing();
    void secondOfFlatAndItsDarkIsSubstracted_data();
    void secondOfFlatAndItsDarkIsSubstracted();
    void darkSubstractsNothing();
    void choosingAgainSubstractsAgain();
    void substractionRunsBehindTheQuestion();
    void substractionWithoutAFrameIsRemoved();
    void deadSubstractionTakesTheLastChoiceBack();
    void deletedFieldRemovesItsAverages_data();
    void deletedFieldRemovesItsAverages();
    void anotherFieldRemovesNothing();
    void batchUsesTheFlatAloneAfterItsDarkIsDeleted();
    void calibrationMayChangeDuringABatch();
    void calibrationIsForgottenAtQuit();
    void helpIsShownAndClosed();
};

void TestCalibrationWindow::sheetTellsOfTheAveraging()
{
    QFETCH(const QString, kind);
    QFETCH(const QString, average);
    FakeWindow window(1);
    window.setAveraging(window.untilReleased() + FakeTools::averaging(1));
    window.launch();
    const QString recording = choose(window, kind);
    QVERIFY(sheet(window)->isVisible());
    QVERIFY(sheet(window)->isModal());
    QCOMPARE(sheetText(window), QStringLiteral("Averaging frames"));
    QVERIFY(sheetBar(window)->isIndeterminate());
    QVERIFY(sheetBar(window)->isAnimating());
    QCOMPARE(field(window, kind)->stringValue(), QFileInfo(recording).fileName());
    window.release();
    QTRY_VERIFY(!sheet(window)->isVisible());
    QVERIFY(!sheetBar(window)->isAnimating());
    QVERIFY(QFileInfo::exists(window.temporary(average)));
    const QList<QStringList> calls = averagings(window);
    QCOMPARE(calls.size(), 1);
    QVERIFY(calls.constFirst().contains(recording));
    QVERIFY(calls.constFirst().contains(window.temporary(average)));
    QCOMPARE(window.alerts.shown, QStringList());
}

void TestCalibrationWindow::cancelledChooserLeavesTheChoice()
{
    FakeWindow window(1);
    window.launch();
    window.calibrate(QStringLiteral("darkButton"), QStringLiteral("first.MLV"));
    window.panel.chosen.clear();
    window.press(QStringLiteral("darkButton"));
    QVERIFY(!sheet(window)->isVisible());
    QCOMPARE(field(window, dark)->stringValue(), QStringLiteral("first.MLV"));
    QVERIFY(window.delegate->checkCalibrationIntegrity());
}

void TestCalibrationWindow::missingToolLeavesTheChoice()
{
    FakeWindow window(1);
    window.launch();
    QVERIFY(QFile::remove(window.tools.path() + QStringLiteral("/mlv_dump")));
    choose(window, dark);
    QCOMPARE(window.alerts.shown.size(), 1);
    QVERIFY(window.alerts.shown.constFirst().startsWith(
        QLatin1String("A tool is missing|the tool mlv_dump was not found; ")));
    QVERIFY(!sheet(window)->isVisible());
    QCOMPARE(field(window, dark)->stringValue(), QString());
}

void TestCalibrationWindow::oneFrameAsksNothing()
{
    QFETCH(const QString, kind);
    QFETCH(const QString, average);
    FakeWindow window(1);
    window.launch();
    choose(window, kind);
    QTRY_VERIFY(!sheet(window)->isVisible());
    passThePause();
    QCOMPARE(window.alerts.shown, QStringList());
    QVERIFY(QFileInfo::exists(window.temporary(average)));
}

void TestCalibrationWindow::severalFramesAskToReplaceTheRecording_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("question");
    const QString darkWords =
        QStringLiteral("Overwrite original MLV file with averaged dark in order to save disk space "
                       "(4.10 KB->8.00 bytes)?|No|Yes");
    QTest::newRow("dark") << dark << QStringLiteral("Dark ready|") + darkWords;
    QTest::newRow("flat") << flat
                          << QStringLiteral("Flat ready|Overwrite original MLV file with averaged "
                                            "flat in order to save disk space "
                                            "(4.10 KB->8.00 bytes)?|No|Yes");
    QTest::newRow("dark of the flat, in the words of the dark")
        << flatDark << QStringLiteral("Flat Dark ready|") + darkWords;
}

void TestCalibrationWindow::severalFramesAskToReplaceTheRecording()
{
    QFETCH(const QString, kind);
    QFETCH(const QString, question);
    FakeWindow window(2);
    window.launch();
    bool sheetWasUp = false;
    bool barMoved = true;
    window.alerts.whileOpen = [&] {
        sheetWasUp = sheet(window)->isVisible();
        barMoved = sheetBar(window)->isAnimating();
    };
    const QString recording = choose(window, kind);
    QTRY_VERIFY(!sheet(window)->isVisible());
    QCOMPARE(window.alerts.shown, QStringList{question});
    QVERIFY(sheetWasUp);
    QVERIFY(!barMoved);
    QCOMPARE(contentOf(recording), QByteArray(4096, 'x'));
    QCOMPARE(field(window, kind)->stringValue(), QFileInfo(recording).fileName());
}

/// A timer of half the pause, begun with it, ends before the question comes.
void TestCalibrationWindow::questionComesAfterAPause()
{
    FakeWindow window(2);
    window.launch();
    bool half = false;
    bool halfAtQuestion = false;
    auto *bar = window.widget<ProgressIndicator>(QStringLiteral("preprocessProgress"));
    window.alerts.whileOpen = [&] { halfAtQuestion = half; };
    choose(window, dark);
    bar->setValue(1); // its animation's end sets it back, in the same call that begins the pause
    connect(bar, &QProgressBar::valueChanged, this,
            [&] { QTimer::singleShot(50, this, [&] { half = true; }); });
    QTRY_COMPARE(window.alerts.shown.size(), 1);
    QVERIFY(halfAtQuestion);
}

void TestCalibrationWindow::replacedRecordingHoldsTheAverage()
{
    FakeWindow window(120);
    window.launch();
    window.alerts.answers = {0};
    const QString recording = choose(window, dark);
    QTRY_VERIFY(!sheet(window)->isVisible());
    QCOMPARE(sheetText(window), QStringLiteral("Replacing original file."));
    QCOMPARE(contentOf(recording), QByteArray("average\n"));
    QCOMPARE(contentOf(window.temporary(darkName)), QByteArray("average\n"));
    QCOMPARE(field(window, dark)->stringValue(), QFileInfo(recording).fileName());
    QVERIFY(window.delegate->checkCalibrationIntegrity());
    QCOMPARE(QDir(window.recordings()).entryList(QDir::Files),
             QStringList{QStringLiteral("dark take.MLV")});
}

/// The copy has a longer name beside the recording.
void TestCalibrationWindow::recordingWithoutRoomForACopyIsAsItWas()
{
    FakeWindow window(2);
    window.launch();
    window.alerts.answers = {0};
    const QString name = QString(251, QLatin1Char('n')) + QStringLiteral(".MLV");
    window.calibrate(QStringLiteral("darkButton"), name);
    QCOMPARE(window.alerts.shown.size(), 1);
    QCOMPARE(contentOf(window.panel.chosen.constFirst()), QByteArray(4096, 'x'));
    QCOMPARE(window.status(), name + QStringLiteral(" could not be replaced; it is as it was"));
    QVERIFY(window.delegate->checkCalibrationIntegrity());
}

void TestCalibrationWindow::recordingIsAsItWasWhenTheDiskIsFull()
{
    FakeWindow window(2);
    window.launch();
    window.alerts.answers = {0};
    std::unique_ptr<FullDisk> full;
    window.alerts.whileOpen = [&full] { full = std::make_unique<FullDisk>(4); };
    const QString recording = choose(window, flat);
    QTRY_VERIFY(!sheet(window)->isVisible());
    full.reset();
    QCOMPARE(window.alerts.shown.size(), 1);
    QCOMPARE(contentOf(recording), QByteArray(4096, 'x'));
    QCOMPARE(window.status(),
             QStringLiteral("flat take.MLV could not be replaced; it is as it was"));
    QCOMPARE(QDir(window.recordings()).entryList(QDir::Files | QDir::Hidden),
             QStringList{QStringLiteral("flat take.MLV")});
}

void TestCalibrationWindow::questionWaitsForAnOpenAlert()
{
    FakeWindow window(2);
    window.setAveraging(window.untilReleased() + FakeTools::averaging(2));
    window.launch({QStringLiteral("a.MLV")});
    choose(window, dark);
    window.alerts.whileOpen = [&window] {
        window.alerts.whileOpen = nullptr;
        window.release();
        QTRY_VERIFY(QFileInfo::exists(window.temporary(darkName)));
        settle();
        passThePause();
        QCOMPARE(window.alerts.shown.size(), 1);
    };
    window.delegate->applicationOpenFiles(window.makeRecordings({QStringLiteral("b.MLV")}));
    QTRY_COMPARE(window.alerts.shown.size(), 2);
    QVERIFY(window.alerts.shown.constLast().startsWith(QLatin1String("Dark ready|")));
    QTRY_VERIFY(!sheet(window)->isVisible());
    window.waitUntilRead();
}

void TestCalibrationWindow::errorTakesTheChoiceBack()
{
    QFETCH(const QString, kind);
    QFETCH(const QString, average);
    FakeWindow window(2);
    window.setAveraging(QStringLiteral("echo part > \"$average\"\necho '[ERROR] torn block'\n"
                                       "echo 'Processed 2 video frames'; echo Done"));
    window.launch();
    choose(window, kind);
    QTRY_VERIFY(!sheet(window)->isVisible());
    settle();
    passThePause();
    QCOMPARE(window.alerts.shown,
             QStringList{QStringLiteral("Process aborted|[ERROR] torn block|Ok")});
    QCOMPARE(field(window, kind)->stringValue(), QString());
    QVERIFY(!QFileInfo::exists(window.temporary(average)));
    QVERIFY(window.delegate->checkCalibrationIntegrity());
}

void TestCalibrationWindow::errorStartsNoBatch()
{
    FakeWindow window(2);
    window.setAveraging(QStringLiteral("echo '[ERROR] torn block'; echo Done"));
    window.launch({QStringLiteral("a.MLV")});
    choose(window, dark);
    QTRY_COMPARE(window.alerts.shown.size(), 1);
    QTRY_VERIFY(!sheet(window)->isVisible());
    QVERIFY(!window.delegate->isWorking());
    QCOMPARE(window.states(), QStringList{QStringLiteral("Ready")});
}

void TestCalibrationWindow::errorOfADeadToolIsToldOnce()
{
    FakeWindow window(2);
    window.setAveraging(QStringLiteral("echo '[ERROR] torn block'; exit 1"));
    window.launch();
    choose(window, flat);
    QTRY_VERIFY(!sheet(window)->isVisible());
    settle();
    passThePause();
    QCOMPARE(window.alerts.shown,
             QStringList{QStringLiteral("Process aborted|[ERROR] torn block|Ok")});
    QCOMPARE(field(window, flat)->stringValue(), QString());
}

void TestCalibrationWindow::noFrameLeavesTheSheetUp()
{
    QFETCH(const QString, kind);
    QFETCH(const QString, average);
    FakeWindow window(1);
    window.setAveraging(FakeTools::averaging(0));
    window.launch();
    const QString recording = choose(window, kind);
    QTRY_COMPARE(averagings(window).size(), 1);
    settle();
    QVERIFY(sheet(window)->isVisible());
    QVERIFY(!QFileInfo::exists(window.temporary(average)));
    QCOMPARE(field(window, kind)->stringValue(), QFileInfo(recording).fileName());
    QCOMPARE(window.delegate->checkCalibrationIntegrity(), kind == flatDark);
    cancel(window); // the way out
    QVERIFY(!sheet(window)->isVisible());
    QCOMPARE(field(window, kind)->stringValue(), QString());
    QVERIFY(window.delegate->checkCalibrationIntegrity());
    QCOMPARE(window.alerts.shown, QStringList());
}

void TestCalibrationWindow::deadToolTakesTheChoiceBack()
{
    FakeWindow window(2);
    window.setAveraging(QStringLiteral("echo part > \"$average\"; kill -SEGV $$"));
    window.launch();
    choose(window, dark);
    QTRY_VERIFY(!sheet(window)->isVisible());
    QTRY_COMPARE(window.alerts.shown,
                 QStringList{QStringLiteral(
                     "Process aborted|mlv_dump ended before the calibration was ready.|Ok")});
    QCOMPARE(field(window, dark)->stringValue(), QString());
    QVERIFY(!QFileInfo::exists(window.temporary(darkName)));
    QVERIFY(window.delegate->checkCalibrationIntegrity());
}

void TestCalibrationWindow::cancelEndsTheAveraging()
{
    FakeWindow window(2);
    const QString note = window.path(QStringLiteral("pid"));
    window.setAveraging(
        QStringLiteral("echo part > \"$average\"; echo $$ > '%1'; exec sleep 60").arg(note));
    window.launch();
    choose(window, dark);
    QTRY_VERIFY(contentOf(note).endsWith('\n'));
    const qint64 averaging = contentOf(note).trimmed().toLongLong();
    QVERIFY(processRuns(averaging));
    cancel(window);
    QTRY_VERIFY(!processRuns(averaging));
    QVERIFY(!sheet(window)->isVisible());
    QCOMPARE(field(window, dark)->stringValue(), QString());
    QVERIFY(!QFileInfo::exists(window.temporary(darkName)));
    settle();
    passThePause();
    QCOMPARE(window.alerts.shown, QStringList());
}

void TestCalibrationWindow::escapeEndsTheAveraging()
{
    FakeWindow window(2);
    window.setAveraging(endless);
    window.launch();
    choose(window, flat);
    QTest::keyClick(sheet(window), Qt::Key_Escape);
    QVERIFY(!sheet(window)->isVisible());
    QCOMPARE(field(window, flat)->stringValue(), QString());
}

void TestCalibrationWindow::cancelDuringThePauseAsksNothing()
{
    FakeWindow window(2);
    window.launch();
    choose(window, dark);
    QTRY_VERIFY(!sheetBar(window)->isAnimating());
    cancel(window);
    QVERIFY(!sheet(window)->isVisible());
    passThePause();
    QCOMPARE(window.alerts.shown, QStringList());
    QCOMPARE(field(window, dark)->stringValue(), QString());
}

void TestCalibrationWindow::secondOfFlatAndItsDarkIsSubstracted_data()
{
    QTest::addColumn<QStringList>("kinds");
    QTest::newRow("flat first") << QStringList{flat, flatDark};
    QTest::newRow("its dark first") << QStringList{flatDark, flat};
}

void TestCalibrationWindow::secondOfFlatAndItsDarkIsSubstracted()
{
    QFETCH(const QStringList, kinds);
    FakeWindow window(1);
    window.setSubstraction(window.untilReleased() + FakeTools::averaging(1));
    window.launch();
    choose(window, kinds.constFirst());
    QTRY_VERIFY(!sheet(window)->isVisible());
    QCOMPARE(substractions(window), QStringList());
    choose(window, kinds.constLast());
    QTRY_COMPARE(substractions(window), QStringList{substractedName});
    QVERIFY(sheet(window)->isVisible());
    QCOMPARE(sheetText(window), QStringLiteral("Substracting flat dark from flat."));
    QVERIFY(sheetBar(window)->isAnimating());
    QVERIFY(!window.delegate->checkCalibrationIntegrity());
    window.release();
    QTRY_VERIFY(!sheet(window)->isVisible());
    QVERIFY(window.delegate->checkCalibrationIntegrity());
    for (const QString &name : {flatName, flatDarkName, substractedName})
        QVERIFY(QFileInfo::exists(window.temporary(name)));
    QCOMPARE(window.alerts.shown, QStringList());
}

void TestCalibrationWindow::darkSubstractsNothing()
{
    FakeWindow window(1);
    window.launch();
    for (const QString &kind : {flat, flatDark, dark}) {
        choose(window, kind);
        QTRY_VERIFY(!sheet(window)->isVisible());
    }
    settle();
    QCOMPARE(substractions(window).size(), 1);
}

void TestCalibrationWindow::choosingAgainSubstractsAgain()
{
    FakeWindow window(1);
    window.launch();
    for (const QString &kind : {flat, flatDark, flat, flatDark}) {
        choose(window, kind);
        QTRY_VERIFY(!sheet(window)->isVisible());
    }
    QTRY_COMPARE(substractions(window).size(), 3);
    QTRY_VERIFY(!sheet(window)->isVisible());
}

void TestCalibrationWindow::substractionRunsBehindTheQuestion()
{
    FakeWindow window(2);
    window.setSubstraction(window.untilReleased() + FakeTools::averaging(1));
    window.launch();
    window.calibrate(QStringLiteral("flatButton"), QStringLiteral("flat.MLV"));
    qsizetype runningAtQuestion = 0;
    window.alerts.whileOpen = [&] {
        QTRY_COMPARE(substractions(window).size(), 1);
        runningAtQuestion = substractions(window).size();
    };
    choose(window, flatDark);
    QTRY_COMPARE(window.alerts.shown.size(), 2);
    QCOMPARE(runningAtQuestion, 1);
    // The answer takes the sheet down though the subtraction goes on.
    QTRY_VERIFY(!sheet(window)->isVisible());
    QVERIFY(!window.delegate->checkCalibrationIntegrity());
    window.release();
    QTRY_VERIFY(window.delegate->checkCalibrationIntegrity());
}

void TestCalibrationWindow::substractionWithoutAFrameIsRemoved()
{
    FakeWindow window(1);
    window.setSubstraction(FakeTools::averaging(0));
    window.launch();
    choose(window, flat);
    QTRY_VERIFY(!sheet(window)->isVisible());
    choose(window, flatDark);
    QTRY_COMPARE(substractions(window).size(), 1);
    QTRY_VERIFY(!sheet(window)->isVisible());
    QVERIFY(!QFileInfo::exists(window.temporary(substractedName)));
    QVERIFY(!window.delegate->checkCalibrationIntegrity());
    QCOMPARE(field(window, flatDark)->stringValue(), QStringLiteral("flatDark take.MLV"));
}

void TestCalibrationWindow::deadSubstractionTakesTheLastChoiceBack()
{
    FakeWindow window(1);
    window.setSubstraction(QStringLiteral("kill -SEGV $$"));
    window.launch();
    choose(window, flat);
    QTRY_VERIFY(!sheet(window)->isVisible());
    choose(window, flatDark);
    QTRY_COMPARE(window.alerts.shown,
                 QStringList{QStringLiteral(
                     "Process aborted|mlv_dump ended before the calibration was ready.|Ok")});
    QVERIFY(!sheet(window)->isVisible());
    QCOMPARE(field(window, flat)->stringValue(), QStringLiteral("flat take.MLV"));
    QCOMPARE(field(window, flatDark)->stringValue(), QString());
    QVERIFY(window.delegate->checkCalibrationIntegrity());
}

void TestCalibrationWindow::deletedFieldRemovesItsAverages_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QStringList>("left");
    QTest::newRow("dark") << dark << QStringList{flatName, flatDarkName, substractedName};
    QTest::newRow("flat") << flat << QStringList{darkName, flatDarkName};
    QTest::newRow("dark of the flat") << flatDark << QStringList{darkName, flatName};
}

void TestCalibrationWindow::deletedFieldRemovesItsAverages()
{
    QFETCH(const QString, kind);
    QFETCH(const QStringList, left);
    FakeWindow window(1);
    window.launch();
    for (const QString &each : {dark, flat, flatDark}) {
        choose(window, each);
        QTRY_VERIFY(!sheet(window)->isVisible());
    }
    QTRY_VERIFY(window.delegate->checkCalibrationIntegrity());
    QTest::mouseClick(field(window, kind)->deleteButton(), Qt::LeftButton);
    QCOMPARE(field(window, kind)->stringValue(), QString());
    for (const QString &name : {darkName, flatName, flatDarkName, substractedName})
        QCOMPARE(QFileInfo::exists(window.temporary(name)), left.contains(name));
    QVERIFY(window.delegate->checkCalibrationIntegrity());
}

void TestCalibrationWindow::anotherFieldRemovesNothing()
{
    FakeWindow window(1);
    window.launch();
    window.calibrate(QStringLiteral("darkButton"), QStringLiteral("dark.MLV"));
    CustomTextField another;
    window.delegate->fieldDeleted(another);
    QVERIFY(QFileInfo::exists(window.temporary(darkName)));
    QCOMPARE(field(window, dark)->stringValue(), QStringLiteral("dark.MLV"));
}

void TestCalibrationWindow::batchUsesTheFlatAloneAfterItsDarkIsDeleted()
{
    FakeWindow window(1);
    window.launch({QStringLiteral("a.MLV")});
    for (const QString &each : {flat, flatDark}) {
        choose(window, each);
        QTRY_VERIFY(!sheet(window)->isVisible());
    }
    QTRY_VERIFY(window.delegate->checkCalibrationIntegrity());
    QTest::mouseClick(field(window, flatDark)->deleteButton(), Qt::LeftButton);
    window.pressStart();
    window.waitForEnd();
    QCOMPARE(window.delegate->projectList().front()->flatPath(), window.temporary(flatName));
}

void TestCalibrationWindow::calibrationMayChangeDuringABatch()
{
    FakeWindow window(1);
    window.setEncoding(window.untilReleased() + QStringLiteral("cp \"$film\" \"$movie\""));
    window.launch({QStringLiteral("a.MLV"), QStringLiteral("b.MLV")});
    window.pressStart();
    QTRY_COMPARE(window.states().constFirst(), QStringLiteral("Building movie"));
    choose(window, dark);
    QTRY_VERIFY(!sheet(window)->isVisible());
    window.release();
    window.waitForEnd();
    QCOMPARE(window.delegate->projectList().at(0)->darkPath(), QString());
    QCOMPARE(window.delegate->projectList().at(1)->darkPath(), window.temporary(darkName));
}

void TestCalibrationWindow::calibrationIsForgottenAtQuit()
{
    FakeWindow window(1);
    window.launch();
    choose(window, dark);
    QTRY_VERIFY(!sheet(window)->isVisible());
    window.launch();
    QCOMPARE(field(window, dark)->stringValue(), QString());
    QVERIFY(!QFileInfo::exists(window.temporary(darkName)));
    QVERIFY(window.delegate->checkCalibrationIntegrity());
}

void TestCalibrationWindow::helpIsShownAndClosed()
{
    FakeWindow window;
    window.launch();
    auto *help = window.widget<QDialog>(QStringLiteral("calibrationHelpPanel"));
    auto *buttons = window.widget<QDialogButtonBox>(QStringLiteral("calibrationHelpButtons"));
    window.press(QStringLiteral("calibrationHelpButton"));
    QVERIFY(help->isVisible());
    QVERIFY(help->isModal());
    QTest::mouseClick(buttons->button(QDialogButtonBox::Close), Qt::LeftButton);
    QVERIFY(!help->isVisible());
    QCOMPARE(help->result(), 0);
    window.action(QStringLiteral("calibrationHelpMenuItem"))->trigger();
    QVERIFY(help->isVisible());
    QTest::keyClick(help, Qt::Key_Escape);
    QVERIFY(!help->isVisible());
}

FILMWRIGHT_TEST(TestCalibrationWindow, QApplication)
#include "tst_calibration_window.moc"
