// SPDX-License-Identifier: MIT
// The preview: what it shows of the queue, and what is chosen in it.
#include "fakewindow.h"

#include "app/frameslider.h"
#include "app/histogramview.h"
#include "app/imageview.h"
#include "app/previewpane.h"
#include "runner/resources.h"
#include "support/processes.h"
#include "support/testprogram.h"

#include <QApplication>
#include <QCheckBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QPushButton>

using namespace filmwright;

namespace {

constexpr int patience = 60000; // milliseconds; a busy machine is no failure

const QString dcraw = QStringLiteral("dcraw");

/// A window with a hundred frames in each recording, and what is in its preview.
class PreviewWindow : public FakeWindow
{
public:
    explicit PreviewWindow(int frames = 100)
        : FakeWindow(frames)
    {
        // Only the frames that are asked for, which by a survey keep their numbers.
        setExtraction(QStringLiteral("first=${5%-*}; last=${5#*-}\n"
                                     "case $5 in 0-0) last=%1 ;; *-*) ;; *) first=0 ;; esac\n"
                                     "case \"$*\" in\n"
                                     "*--write-survey*) last=-1 ;;\n"
                                     "*--use-survey*) ;;\n"
                                     "*) last=$((last - first)); first=0 ;;\nesac\n"
                                     "while [ $first -le $last ]; do "
                                     "echo dng > \"$prefix$(printf '%06d' $first).dng\"; "
                                     "first=$((first + 1)); done; echo Done")
                          .arg(frames - 1));
    }

    ImageView *image() const { return widget<ImageView>(QStringLiteral("imageView")); }
    FrameSlider *slider() const { return widget<FrameSlider>(QStringLiteral("frameSlider")); }
    QString place() const { return text("framePlaceLabel"); }
    QString note() const { return text("frameNoteLabel"); }
    void trigger(const char *name) const { action(QLatin1String(name))->trigger(); }

    /// Shows the recording and waits for its frame as it will be in the movie.
    void show(const QString &name)
    {
        select(name);
        waitForFrame();
    }
    void waitForFrame() const
    {
        QTRY_VERIFY_WITH_TIMEOUT(
            !image()->image().isNull() &&
                !widget<PreviewPane>(QStringLiteral("previewPane"))->frames().isAwaited(),
            patience);
    }

    /// The frames that mlv_dump was asked for, as it was told: "0", "4-4".
    QStringList askedFrames() const
    {
        QStringList frames;
        for (const QStringList &call : previewCalls(mlvDumpName)) {
            if (call.contains(QLatin1String("--write-survey")))
                continue;
            const QString range = call.value(call.indexOf(QLatin1String("-f")) + 1);
            if (frames.isEmpty() || frames.constLast() != range)
                frames << range;
        }
        return frames;
    }

private:
    QString text(const char *label) const { return widget<QLabel>(QLatin1String(label))->text(); }
};

} // namespace

class TestPreviewWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void emptyPreviewSaysWhatItIsFor();
    void selectedRecordingShowsItsFirstFrame();
    void otherRecordingBeginsAtItsFirstFrame();
    void sliderShowsOtherFrames();
    void keysMoveThePictureToo();
    void unmeasuredFrameIsTold();
    void unreadableFrameTellsTheToolsReason();
    void unusableRecordingTellsTheReason();
    void reasonTakesThePlaceOfAConvertedFrame();
    void marksAreTheFramesOfTheMovie();
    void marksChangeHowRowsAreBlended();
    void marksExcludeNothingByMistake();
    void marksAreSetByKeys();
    void marksStayAsTheyAreDuringABatch();
    void exposureIsSeenAtOnce();
    void cancelledExposureIsTakenBack();
    void choicesForTheMovieAreSeen_data();
    void choicesForTheMovieAreSeen();
    void calibrationIsSeen();
    void neighboursAreSeenMerged();
    void batchIsShownWithoutASelection();
    void selectedRecordingIsShownDuringABatch();
    void histogramIsShownAndRemembered();
    void actualSizeIsACommand();
    void nothingIsLeftAfterQuitting();
};

void TestPreviewWindow::emptyPreviewSaysWhatItIsFor()
{
    PreviewWindow window;
    window.launch();
    QVERIFY(window.image()->image().isNull());
    QVERIFY(window.image()->text().startsWith(QLatin1String("Select a recording")));
    QVERIFY(!window.slider()->isEnabled());
    QCOMPARE(window.place(), QString());
    for (const char *name : {"setInMenuItem", "setOutMenuItem", "clearMarksMenuItem"})
        QVERIFY(!window.action(QLatin1String(name))->isEnabled());
    window.add({a});
    window.show(a);
    window.table()->clearSelection();
    QVERIFY(window.image()->image().isNull());
    QVERIFY(window.image()->text().startsWith(QLatin1String("Select a recording")));
}

void TestPreviewWindow::selectedRecordingShowsItsFirstFrame()
{
    PreviewWindow window;
    window.launch({a});
    QVERIFY(window.previewCalls(mlvDumpName).isEmpty());
    window.show(a);
    QCOMPARE(window.askedFrames(), QStringList{QStringLiteral("0")});
    QCOMPARE(window.place(), QStringLiteral("Frame 1 of 100, 0:00"));
    QCOMPARE(window.note(), QString());
    QCOMPARE(window.image()->image().size(), QSize(4, 2));
}

void TestPreviewWindow::otherRecordingBeginsAtItsFirstFrame()
{
    PreviewWindow window;
    window.launch({a, b});
    window.show(a);
    window.slider()->setValue(60);
    window.waitForFrame();
    window.show(b);
    QCOMPARE(window.slider()->value(), 1);
    QCOMPARE(window.askedFrames(),
             QStringList({QStringLiteral("0"), QStringLiteral("59-59"), QStringLiteral("0")}));
    QVERIFY(window.previewCalls(mlvDumpName).constLast().at(1).endsWith(b));
}

void TestPreviewWindow::sliderShowsOtherFrames()
{
    PreviewWindow window;
    window.launch({a});
    window.show(a);
    QTest::keyClick(window.slider(), Qt::Key_Right);
    window.waitForFrame();
    QCOMPARE(window.place(), QStringLiteral("Frame 2 of 100, 0:00"));
    QTest::keyClick(window.slider(), Qt::Key_PageUp);
    window.waitForFrame();
    QCOMPARE(window.place(), QStringLiteral("Frame 27 of 100, 0:01"));
    QTest::keyClick(window.slider(), Qt::Key_End);
    window.waitForFrame();
    QCOMPARE(window.place(), QStringLiteral("Frame 100 of 100, 0:04"));
    QCOMPARE(window.askedFrames(), QStringList({QStringLiteral("0"), QStringLiteral("1-1"),
                                                QStringLiteral("26-26"), QStringLiteral("99-99")}));
}

void TestPreviewWindow::keysMoveThePictureToo()
{
    PreviewWindow window;
    window.launch({a});
    window.show(a);
    activate(*window.delegate->window());
    window.image()->setFocus();
    QTest::keyClick(window.image(), Qt::Key_End);
    QCOMPARE(window.slider()->value(), 100);
    QTest::keyClick(window.image(), Qt::Key_Left);
    QCOMPARE(window.slider()->value(), 99);
    QTest::keyClick(window.image(), Qt::Key_Home);
    QCOMPARE(window.slider()->value(), 1);
}

void TestPreviewWindow::unmeasuredFrameIsTold()
{
    PreviewWindow window;
    const QString release = window.path(QStringLiteral("release"));
    window.setExtraction(QStringLiteral("case \"$*\" in *--write-survey*) "
                                        "until [ -e '%1' ]; do sleep 0.01; done ;; esac\n%2")
                             .arg(release, FakeTools::extraction(1)));
    window.launch({a});
    window.select(a);
    QTRY_COMPARE_WITH_TIMEOUT(window.note(), QStringLiteral("Measuring the recording…"), patience);
    QVERIFY(!window.image()->image().isNull());
    QFile file(release);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QTRY_COMPARE_WITH_TIMEOUT(window.note(), QString(), patience);
}

void TestPreviewWindow::unreadableFrameTellsTheToolsReason()
{
    PreviewWindow window;
    window.setExtraction(QStringLiteral(
        "echo '[UNUSABLE] The recording holds no frame that can be decoded'; exit 1"));
    window.launch({a});
    window.select(a);
    QTRY_COMPARE_WITH_TIMEOUT(window.image()->text(),
                              QStringLiteral("The recording holds no frame that can be decoded"),
                              patience);
    QVERIFY(window.image()->image().isNull());
}

void TestPreviewWindow::unusableRecordingTellsTheReason()
{
    PreviewWindow window;
    window.setBeforeReport(QStringLiteral("echo '[UNUSABLE] The recording is empty'; "
                                          "echo Processed 0; echo Done; exit 1"));
    window.launch({a});
    window.select(a);
    QTRY_COMPARE_WITH_TIMEOUT(window.image()->text(), QStringLiteral("The recording is empty"),
                              patience);
    QVERIFY(window.previewCalls(mlvDumpName).isEmpty());
}

void TestPreviewWindow::reasonTakesThePlaceOfAConvertedFrame()
{
    PreviewWindow window(1);
    window.setBeforeReport(
        QStringLiteral("case \"$recording\" in *b.MLV) echo '[UNUSABLE] The recording is empty'; "
                       "echo Processed 0; echo Done; exit 1 ;; esac"));
    window.launch({a, b});
    window.pressStart();
    window.waitForEnd();
    QVERIFY(!window.image()->image().isNull());
    window.select(b);
    QVERIFY(window.image()->image().isNull());
    QCOMPARE(window.image()->text(), QStringLiteral("The recording is empty"));
}

void TestPreviewWindow::marksAreTheFramesOfTheMovie()
{
    PreviewWindow window(12);
    window.launch({a, b});
    window.show(a);
    window.slider()->setValue(3);
    window.trigger("setInMenuItem");
    window.slider()->setValue(5);
    window.trigger("setOutMenuItem");
    QCOMPARE(window.note(), QStringLiteral("Movie: 3-5"));
    QCOMPARE(window.slider()->selection(), (FrameSelection{3, 5}));
    QTRY_COMPARE_WITH_TIMEOUT(window.stateView(1)->choices()->text(), QStringLiteral("Frames 3-5"),
                              patience);
    window.show(b);
    QCOMPARE(window.note(), QString());
    window.show(a);
    QCOMPARE(window.slider()->selection(), (FrameSelection{3, 5}));
    window.pressStart();
    window.waitForEnd();
    QStringList ranges;
    for (const QStringList &call : window.conversionCalls(mlvDumpName))
        if (call.constFirst() == QLatin1String("--dng"))
            ranges << call.at(4);
    QCOMPARE(ranges, QStringList({QStringLiteral("2-4"), QStringLiteral("0-0")}));
}

/// Rows are blended by what the frames of the movie have in common.
void TestPreviewWindow::marksChangeHowRowsAreBlended()
{
    PreviewWindow window;
    window.launch({a});
    window.select(a);
    window.trigger("blendRowsMenuItem");
    window.waitForFrame();
    const auto surveyed = [&window] {
        QStringList ranges;
        for (const QStringList &call : window.previewCalls(mlvDumpName))
            if (call.contains(QLatin1String("--survey-frames")))
                ranges << call.at(4);
        return ranges;
    };
    QCOMPARE(surveyed(), QStringList{QStringLiteral("0-0")});
    window.slider()->setValue(50);
    window.trigger("setInMenuItem");
    window.waitForFrame();
    QCOMPARE(surveyed(), QStringList({QStringLiteral("0-0"), QStringLiteral("49-0")}));
}

void TestPreviewWindow::marksExcludeNothingByMistake()
{
    PreviewWindow window;
    window.launch({a});
    window.show(a);
    const auto markAt = [&window](int frame, const char *action) {
        window.slider()->setValue(frame);
        window.trigger(action);
        return window.slider()->selection();
    };
    QCOMPARE(markAt(20, "setOutMenuItem"), (FrameSelection{1, 20}));
    QCOMPARE(markAt(30, "setInMenuItem"), (FrameSelection{30, 0}));  // behind the end
    QCOMPARE(markAt(10, "setOutMenuItem"), (FrameSelection{1, 10})); // before the beginning
    QCOMPARE(markAt(100, "setOutMenuItem"), FrameSelection());
    QCOMPARE(markAt(50, "setInMenuItem"), (FrameSelection{50, 0}));
    window.trigger("clearMarksMenuItem");
    QCOMPARE(window.slider()->selection(), FrameSelection());
}

void TestPreviewWindow::marksAreSetByKeys()
{
    PreviewWindow window;
    window.launch({a});
    window.show(a);
    activate(*window.delegate->window());
    window.slider()->setValue(7);
    window.table()->setFocus();
    QTest::keyClick(window.table(), Qt::Key_I);
    window.slider()->setFocus();
    QTest::keyClick(window.slider(), Qt::Key_End);
    QTest::keyClick(window.slider(), Qt::Key_Left);
    QTest::keyClick(window.slider(), Qt::Key_O);
    QCOMPARE(window.delegate->projectList().front()->frameSelection(), (FrameSelection{7, 99}));
    window.image()->setFocus();
    QTest::keyClick(window.image(), Qt::Key_X);
    QVERIFY(window.delegate->projectList().front()->frameSelection().isWhole());
}

void TestPreviewWindow::marksStayAsTheyAreDuringABatch()
{
    PreviewWindow window(2);
    window.setEncoding(QStringLiteral("exec sleep 1000"));
    window.launch({a});
    window.show(a);
    window.pressStart();
    QVERIFY(!window.action(QStringLiteral("setInMenuItem"))->isEnabled());
    window.pressStart();
    QTRY_VERIFY_WITH_TIMEOUT(window.action(QStringLiteral("setInMenuItem"))->isEnabled(), patience);
}

void TestPreviewWindow::exposureIsSeenAtOnce()
{
    PreviewWindow window;
    window.launch({a});
    window.show(a);
    window.trigger("developmentMenuItem");
    window.widget<QDoubleSpinBox>(QStringLiteral("exposureField"))->setValue(1);
    window.waitForFrame();
    QCOMPARE(window.previewCalls(dcraw).constLast().at(8), QStringLiteral("8.000000"));
    QCOMPARE(window.delegate->projectList().front()->rawCorrections().exposure, 0.0);
    window.widget<QDialogButtonBox>(QStringLiteral("developmentButtons"))
        ->button(QDialogButtonBox::Ok)
        ->click();
    window.waitForFrame();
    QCOMPARE(window.previewCalls(dcraw).constLast().at(8), QStringLiteral("8.000000"));
}

void TestPreviewWindow::cancelledExposureIsTakenBack()
{
    PreviewWindow window;
    window.launch({a});
    window.show(a);
    window.trigger("developmentMenuItem");
    window.widget<QDoubleSpinBox>(QStringLiteral("exposureField"))->setValue(-1);
    window.waitForFrame();
    window.slider()->setValue(9);
    window.waitForFrame();
    QCOMPARE(window.previewCalls(dcraw).constLast().at(8), QStringLiteral("2.000000"));
    window.widget<QDialog>(QStringLiteral("developmentDialog"))->reject();
    window.waitForFrame();
    QCOMPARE(window.previewCalls(dcraw).constLast().at(8), QStringLiteral("4.000000"));
}

void TestPreviewWindow::choicesForTheMovieAreSeen_data()
{
    QTest::addColumn<QString>("control");
    QTest::addColumn<QString>("argument");
    QTest::newRow("pixels") << QStringLiteral("repairPixelsCheckBox")
                            << QStringLiteral("--repair-pixels");
    QTest::newRow("columns") << QStringLiteral("repairColumnsCheckBox")
                             << QStringLiteral("--repair-columns");
}

void TestPreviewWindow::choicesForTheMovieAreSeen()
{
    QFETCH(const QString, control);
    QFETCH(const QString, argument);
    PreviewWindow window;
    window.launch({a});
    window.show(a);
    QVERIFY(!window.previewCalls(mlvDumpName).constLast().contains(argument));
    window.widget<QCheckBox>(control)->setChecked(true);
    window.waitForFrame();
    QVERIFY(window.previewCalls(mlvDumpName).constLast().contains(argument));
}

void TestPreviewWindow::calibrationIsSeen()
{
    PreviewWindow window;
    window.setAveraging(FakeTools::averaging(1));
    window.launch({a});
    window.show(a);
    window.calibrate(QStringLiteral("darkButton"), QStringLiteral("dark.MLV"));
    QTRY_VERIFY_WITH_TIMEOUT(window.previewCalls(mlvDumpName)
                                 .constLast()
                                 .contains(window.temporary(QStringLiteral("dark.mlv"))),
                             patience);
    window.waitForFrame();
    window.widget<CustomTextField>(QStringLiteral("darkTextField"))->setFocus();
    QTest::keyClick(window.widget<QWidget>(QStringLiteral("darkTextField")), Qt::Key_Delete);
    window.slider()->setValue(2);
    window.waitForFrame();
    QVERIFY(!window.previewCalls(mlvDumpName).constLast().contains(QStringLiteral("-s")));
}

void TestPreviewWindow::neighboursAreSeenMerged()
{
    PreviewWindow window;
    window.launch({a});
    window.show(a);
    window.trigger("mergeNeighboursMenuItem");
    window.waitForFrame();
    QCOMPARE(window.askedFrames().constLast(), QStringLiteral("1"));
    QTest::keyClick(window.slider(), Qt::Key_End);
    window.waitForFrame();
    QCOMPARE(window.askedFrames().constLast(), QStringLiteral("98-99"));
}

void TestPreviewWindow::batchIsShownWithoutASelection()
{
    PreviewWindow window(2);
    window.launch({a});
    window.pressStart();
    QTRY_COMPARE_WITH_TIMEOUT(window.image()->image().size(), QSize(4, 2), patience);
    window.waitForEnd();
    QVERIFY(window.previewCalls(mlvDumpName).isEmpty());
}

void TestPreviewWindow::selectedRecordingIsShownDuringABatch()
{
    PreviewWindow window(2);
    const QString wide = window.path(QStringLiteral("wide.tiff"));
    FakeTools::writeTiff(wide, 8);
    window.setConversion(QStringLiteral("case \"$dng\" in */filmwright-preview-*) frame='%1' ;; "
                                        "esac; cp \"$frame\" \"$tiff\"")
                             .arg(wide));
    window.launch({a, b});
    window.show(a);
    QList<QSize> sizes;
    window.pressStart();
    while (window.delegate->isWorking()) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        sizes << window.image()->image().size();
    }
    QVERIFY(!sizes.contains(QSize(4, 2)));
    QCOMPARE(window.image()->image().size(), QSize(8, 2));
}

void TestPreviewWindow::histogramIsShownAndRemembered()
{
    PreviewWindow window;
    window.launch({a});
    const auto histogram = [&window] {
        return window.widget<HistogramView>(QStringLiteral("histogramView"));
    };
    QVERIFY(histogram()->isHidden());
    window.trigger("histogramMenuItem");
    QVERIFY(histogram()->isVisible());
    window.show(a);
    QCOMPARE(histogram()->text(), QStringLiteral("Clipped: red 0.0 %, green 0.0 %, blue 0.0 %"));
    QCOMPARE(histogram()->accessibleDescription(), histogram()->text());
    window.launch();
    QVERIFY(histogram()->isVisible());
    window.trigger("histogramMenuItem");
    window.launch();
    QVERIFY(histogram()->isHidden());
}

void TestPreviewWindow::actualSizeIsACommand()
{
    PreviewWindow window;
    window.launch({a});
    window.show(a);
    QAction *command = window.action(QStringLiteral("actualSizeMenuItem"));
    command->trigger();
    QVERIFY(window.image()->isActualSize());
    QTest::mouseClick(window.image(), Qt::LeftButton);
    QVERIFY(!window.image()->isActualSize());
    QVERIFY(!command->isChecked());
}

void TestPreviewWindow::nothingIsLeftAfterQuitting()
{
    const qsizetype children = childProcesses();
    PreviewWindow window;
    window.setConversion(QStringLiteral("exec sleep 1000"));
    window.launch({a});
    window.select(a);
    QTRY_VERIFY_WITH_TIMEOUT(runningChildren().contains(QStringLiteral("sleep")), patience);
    window.quit();
    QCOMPARE(childProcesses(), children);
}

FILMWRIGHT_TEST(TestPreviewWindow, QApplication)
#include "tst_preview_window.moc"
