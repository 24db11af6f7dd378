// SPDX-License-Identifier: MIT
// What the window says of its own accord, and where a person looks for it.
#include "fakewindow.h"

#include "app/customtextfield.h"
#include "app/progressindicator.h"
#include "support/testprogram.h"

#include <QComboBox>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QHeaderView>
#include <QLabel>
#include <QMimeData>
#include <QPushButton>
#include <QScreen>
#include <QSpinBox>

using namespace filmwright;

namespace {

/// Drops a file on a widget as a file manager does.
bool dropOn(QWidget &widget, const QString &path)
{
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(path)});
    QDragEnterEvent enter({2, 2}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&widget, &enter);
    if (!enter.isAccepted())
        return false;
    QDropEvent drop(QPointF(2, 2), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&widget, &drop);
    return drop.isAccepted();
}

} // namespace

class TestTellingWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void duplicatesAreTold();
    void folderWithoutRecordingsIsTold();
    void refusedDragIsTold();
    void cancelThatAddsIsTold();
    void closingDuringABatchIsTold();
    void workersChangedDuringABatchAreTold();
    void missingPlayerIsTold();
    void moviesThatStartReplacesAreTold();
    void roomOfRawMoviesIsToldBeforeStart();
    void rawMoviesThatDoNotFitAreToldBeforeStart();
    void choicesSayWhatTheyMake();
    void percentIsInTheTitle();
    void recordingInWorkIsInSight();
    void brokenRecordingHidesNoTime();
    void errorNamesItsRecording();
    void dropsAreTakenEverywhere_data();
    void dropsAreTakenEverywhere();
    void calibrationIsTakenFromADrop();
    void calibrationFieldTakesOneRecordingOnly();
    void nothingToCancelUnderTheQuestion();
    void barIsEmptyAfterAdding();
    void preferencesTellTheRealFolder();
    void otherFolderThatWasNotChosenIsNone();
    void columnsFillTheWidth();
    void windowFitsTheScreen();
    void developerMenuHasItsName();
};

void TestTellingWindow::duplicatesAreTold()
{
    FakeWindow window;
    window.launch({a});
    QVERIFY(window.drop(window.makeRecordings({a, b})));
    QCOMPARE(window.status(), QStringLiteral("1 recording is in the queue already"));
    window.waitUntilRead();
    QCOMPARE(window.queue(), QStringList({a, b}));
}

void TestTellingWindow::folderWithoutRecordingsIsTold()
{
    FakeWindow window;
    window.launch();
    window.makeRecordings({QStringLiteral("holiday/notes.txt")});
    QVERIFY(window.drop({window.recordings() + QStringLiteral("/holiday")}));
    QCOMPARE(window.status(), QStringLiteral("No recordings in holiday"));
}

void TestTellingWindow::refusedDragIsTold()
{
    FakeWindow window;
    window.launch();
    QVERIFY(!window.welcomes(window.makeRecordings({a, QStringLiteral("notes.txt")})));
    QCOMPARE(window.status(),
             QStringLiteral("Only MLV recordings and folders can be dropped here"));
}

void TestTellingWindow::cancelThatAddsIsTold()
{
    FakeWindow window;
    window.launch({a});
    window.alerts.answers = {-1};
    window.add({b});
    QCOMPARE(window.status(), QStringLiteral("1 recording was added all the same"));
}

void TestTellingWindow::closingDuringABatchIsTold()
{
    FakeWindow window;
    window.setExtraction(endless);
    window.launch({a});
    window.pressStart();
    QVERIFY(!window.delegate->window()->close());
    QCOMPARE(window.status(),
             QStringLiteral("The window stays while a batch runs: stop it, or quit"));
    window.pressStart();
}

void TestTellingWindow::workersChangedDuringABatchAreTold()
{
    FakeWindow window;
    window.setExtraction(endless);
    window.launch({a});
    auto *workers = window.widget<QSpinBox>(QStringLiteral("prefWorkersField"));
    workers->setMaximum(8);
    window.pressStart();
    workers->setValue(3);
    QCOMPARE(window.status(), QStringLiteral("3 frames at once hold from the next recording on"));
    window.pressStart();
}

/// The offscreen platform opens nothing.
void TestTellingWindow::missingPlayerIsTold()
{
    FakeWindow window;
    window.launch({a});
    window.pressStart();
    window.waitForEnd();
    window.select(a);
    QAction *play = window.action(QStringLiteral("playMovieMenuItem"));
    QTRY_VERIFY(play->isEnabled());
    QTRY_COMPARE(window.status(), QStringLiteral("1 movie written"));
    play->trigger();
    QCOMPARE(window.status(), QStringLiteral("No program was found that plays a.avi"));
}

void TestTellingWindow::moviesThatStartReplacesAreTold()
{
    FakeWindow window;
    window.launch();
    const QAction &start = *window.action(QStringLiteral("startStopItem"));
    window.makeRecordings({QStringLiteral("a.avi"), QStringLiteral("b.avi"),
                           QStringLiteral("b.mov"), QStringLiteral("c.avi")});
    window.add({a, b});
    QCOMPARE(window.status(), QStringLiteral("2 recordings in the queue, Start replaces 2 movies"));
    const QString folder = window.recordings();
    QVERIFY2(start.toolTip().endsWith(QStringLiteral("%1/a.avi\n%1/b.avi").arg(folder)),
             qPrintable(start.toolTip()));
    window.widget<QComboBox>(QStringLiteral("movieFormatPopUpButton"))->setCurrentIndex(1);
    QCOMPARE(window.status(), QStringLiteral("2 recordings in the queue, Start replaces 1 movie"));
    QVERIFY(start.toolTip().endsWith(folder + QStringLiteral("/b.mov")));
    window.select(b);
    window.action(QStringLiteral("removeMenuItem"))->trigger();
    QCOMPARE(window.status(), QStringLiteral("1 recording in the queue"));
    QVERIFY(!start.toolTip().contains(QLatin1String("replaced")));
}

void TestTellingWindow::roomOfRawMoviesIsToldBeforeStart()
{
    FakeWindow window(100);
    window.setRawInformation(QStringLiteral(" 1920x1080"), 14);
    window.launch({a});
    const QAction &start = *window.action(QStringLiteral("startStopItem"));
    QCOMPARE(start.toolTip(),
             QStringLiteral("Start or stop making the movies; they take 311.04 MB"));
    window.widget<QComboBox>(QStringLiteral("movieQualityPopUpButton"))->setCurrentIndex(1);
    QCOMPARE(start.toolTip(), QStringLiteral("Start or stop making the movies"));
}

void TestTellingWindow::rawMoviesThatDoNotFitAreToldBeforeStart()
{
    FakeWindow window(60000000);
    window.setRawInformation(QStringLiteral(" 1920x1080"), 14);
    window.launch({a});
    const QString told = QStringLiteral("1 recording in the queue: its raw movie needs 186.62 TB, "
                                        "but only ");
    QVERIFY2(window.status().startsWith(told), qPrintable(window.status()));
    QVERIFY(window.status().endsWith(QStringLiteral(" are free in %1").arg(window.recordings())));
}

void TestTellingWindow::choicesSayWhatTheyMake()
{
    FakeWindow window;
    window.launch();
    auto *formats = window.widget<QComboBox>(QStringLiteral("movieFormatPopUpButton"));
    auto *qualities = window.widget<QComboBox>(QStringLiteral("movieQualityPopUpButton"));
    const QString raw = QStringLiteral(
        "Raw video, nothing compressed: 4.67 GB a minute of 1920x1080 at 25 frames/s");
    QCOMPARE(qualities->toolTip(), raw);
    QCOMPARE(qualities->itemData(0, Qt::ToolTipRole).toString(), raw);
    formats->setCurrentIndex(1);
    QVERIFY(qualities->itemData(1, Qt::ToolTipRole).toString().startsWith(QLatin1String("H.264")));
    QVERIFY(qualities->toolTip().startsWith(QLatin1String("H.264")));
    qualities->setCurrentIndex(1);
    QVERIFY(formats->itemData(0, Qt::ToolTipRole).toString().startsWith(QLatin1String("MPEG-4")));
}

void TestTellingWindow::percentIsInTheTitle()
{
    FakeWindow window(4);
    window.setConversion(QStringLiteral("case \"$dng\" in *000002.dng) exec sleep 60 ;; esac; "
                                        "cp \"$frame\" \"$tiff\""));
    window.launch({a, b});
    QCOMPARE(window.delegate->window()->windowTitle(), QStringLiteral("Filmwright"));
    window.pressStart();
    QTRY_COMPARE(window.delegate->window()->windowTitle(), QStringLiteral("25 % – Filmwright"));
    window.pressStart();
    QCOMPARE(window.delegate->window()->windowTitle(), QStringLiteral("Filmwright"));
}

void TestTellingWindow::recordingInWorkIsInSight()
{
    FakeWindow window;
    window.setExtraction(endless);
    window.launch();
    QStringList names;
    for (int number = 0; number < 40; ++number)
        names << QStringLiteral("%1.MLV").arg(number, 2, 10, QLatin1Char('0'));
    window.add(names);
    window.table()->scrollToTop();
    window.pressStart();
    QTRY_VERIFY(window.table()->viewport()->rect().contains(
        window.table()->visualRect(window.table()->model()->index(39, 0)).center()));
    QVERIFY2(window.status().startsWith(QLatin1String("1 of 40, 0 %: ")),
             qPrintable(window.status()));
    window.pressStart();
}

/// Its frames will never be known.
void TestTellingWindow::brokenRecordingHidesNoTime()
{
    FakeWindow window(6);
    window.setBeforeReport(
        onlyForB("recording", QStringLiteral("echo '[UNUSABLE] no MLV file'; echo Done; exit"),
                 QStringLiteral(":")));
    window.setConversion(QStringLiteral("case \"$dng\" in *000004.dng) exec sleep 60 ;; esac; "
                                        "sleep 0.6; cp \"$frame\" \"$tiff\""));
    window.launch({a, b, QStringLiteral("c.MLV")});
    window.pressStart();
    QTRY_VERIFY_WITH_TIMEOUT(window.status().contains(QLatin1String(" in all")), 20000);
    window.pressStart();
}

void TestTellingWindow::errorNamesItsRecording()
{
    FakeWindow window;
    window.setExtraction(QStringLiteral("echo '[ERROR] no space'; sleep 60"));
    window.launch({a});
    QString told;
    window.alerts.whileOpen = [&] { told = window.status(); };
    window.pressStart();
    window.waitForEnd();
    QCOMPARE(window.alerts.shown,
             QStringList{QStringLiteral("Process aborted|[ERROR] no space|Ok")});
    QCOMPARE(told, QStringLiteral("a.MLV: no space"));
}

void TestTellingWindow::dropsAreTakenEverywhere_data()
{
    QTest::addColumn<QString>("place");
    for (const char *name : {"imageView", "toolBar", "calibrationBox", "movieBox",
                             "statusTextField", "menuBar", "progressIndicator"})
        QTest::newRow(name) << QString::fromLatin1(name);
}

void TestTellingWindow::dropsAreTakenEverywhere()
{
    QFETCH(const QString, place);
    FakeWindow window;
    window.launch();
    QVERIFY(dropOn(*window.widget<QWidget>(place), window.makeRecordings({a}).constFirst()));
    window.waitUntilRead();
    QCOMPARE(window.queue(), QStringList{a});
}

void TestTellingWindow::calibrationIsTakenFromADrop()
{
    FakeWindow window(1);
    window.launch();
    auto *field = window.widget<CustomTextField>(QStringLiteral("darkTextField"));
    QVERIFY(dropOn(*field, window.makeRecordings({QStringLiteral("dark.MLV")}).constFirst()));
    QCOMPARE(field->stringValue(), QStringLiteral("dark.MLV"));
    QTRY_VERIFY(QFileInfo::exists(window.temporary(QStringLiteral("dark.mlv"))));
    QCOMPARE(window.queue(), QStringList());
    QTRY_VERIFY(!window.widget<QDialog>(QStringLiteral("preprocessPanel"))->isVisible());
}

/// A folder isn't the calibration's; the window takes it as the queue's.
void TestTellingWindow::calibrationFieldTakesOneRecordingOnly()
{
    FakeWindow window;
    window.launch();
    window.makeRecordings({QStringLiteral("day.mlv/a.MLV")});
    auto *field = window.widget<CustomTextField>(QStringLiteral("flatTextField"));
    QVERIFY(dropOn(*field, window.recordings() + QStringLiteral("/day.mlv")));
    window.waitUntilRead();
    QCOMPARE(field->stringValue(), QString());
    QCOMPARE(window.queue(), QStringList{a});
}

void TestTellingWindow::nothingToCancelUnderTheQuestion()
{
    FakeWindow window(2);
    window.launch();
    bool cancel = true;
    const auto *buttons = window.widget<QWidget>(QStringLiteral("preprocessButtons"));
    window.alerts.whileOpen = [&] { cancel = buttons->isVisible(); };
    window.panel.chosen = window.makeRecordings({QStringLiteral("dark.MLV")});
    window.press(QStringLiteral("darkButton"));
    QVERIFY(buttons->isVisible());
    QTRY_COMPARE(window.alerts.shown.size(), 1);
    QVERIFY(!cancel);
}

void TestTellingWindow::barIsEmptyAfterAdding()
{
    FakeWindow window;
    window.launch({a});
    window.pressStart();
    window.waitForEnd();
    auto *bar = window.widget<ProgressIndicator>(QStringLiteral("progressIndicator"));
    QCOMPARE(bar->doubleValue(), bar->maxValue());
    window.add({b});
    QCOMPARE(bar->doubleValue(), bar->minValue());
}

void TestTellingWindow::preferencesTellTheRealFolder()
{
    FakeWindow window;
    window.launch();
    const QString note = window.widget<QLabel>(QStringLiteral("prefTempFolderNote"))->text();
    QVERIFY2(note.contains(window.temporary(QString()).chopped(1)), qPrintable(note));
}

void TestTellingWindow::otherFolderThatWasNotChosenIsNone()
{
    FakeWindow window;
    window.launch();
    auto *popUp = window.widget<QComboBox>(QStringLiteral("prefTempFolderPopUpButton"));
    auto *button = window.widget<QPushButton>(QStringLiteral("prefTempFolderButton"));
    auto *dialog = window.widget<QDialog>(QStringLiteral("prefWindow"));
    window.action(QStringLiteral("preferencesMenuItem"))->trigger();
    popUp->setCurrentIndex(1);
    Q_EMIT popUp->activated(1);
    button->click(); // and cancelled
    QCOMPARE(popUp->currentIndex(), 1);
    QVERIFY(button->isEnabled());
    dialog->close();
    QCOMPARE(popUp->currentIndex(), 0);
    QVERIFY(!button->isEnabled());
}

void TestTellingWindow::columnsFillTheWidth()
{
    FakeWindow window;
    window.launch();
    const QHeaderView &header = *window.table()->horizontalHeader();
    for (const int width : {1366, 2600}) {
        window.delegate->window()->resize(width, 700);
        QTRY_COMPARE(header.length(), window.table()->viewport()->width());
    }
    window.table()->setColumnWidth(1, 300);
    QCOMPARE(header.length(), window.table()->viewport()->width());
    window.delegate->window()->resize(1000, 700);
    QTRY_VERIFY(window.table()->columnWidth(0) >=
                24 * window.table()->fontMetrics().averageCharWidth());
}

void TestTellingWindow::windowFitsTheScreen()
{
    FakeWindow window;
    window.launch();
    const QSize room = window.delegate->window()->screen()->availableSize();
    const QSize size = window.delegate->window()->size();
    const QSize least = window.delegate->window()->minimumSizeHint();
    QVERIFY(size.width() <= std::max(room.width(), least.width()));
    QVERIFY(size.height() < room.height());
    // Half of 1920x1080, as a person sees it at 200 %.
    QVERIFY2(least.width() <= 960 && least.height() <= 540,
             qPrintable(QString::number(least.height())));
}

void TestTellingWindow::developerMenuHasItsName()
{
    FakeWindow window;
    window.launch();
    QVERIFY(window.action(QStringLiteral("devMenuItem")));
    QVERIFY(window.action(QStringLiteral("devMenuItem"))->isVisible());
}

FILMWRIGHT_TEST(TestTellingWindow, QApplication)
#include "tst_telling_window.moc"
