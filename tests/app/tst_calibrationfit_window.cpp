// SPDX-License-Identifier: MIT
// Calibration recordings whose frames have another shape than those they are chosen for.
#include "fakewindow.h"

#include "app/customtextfield.h"
#include "support/testprogram.h"

#include <QDialog>

using namespace filmwright;

namespace {

/// Has recordings with `part` in their names tell another shape of their frames than the others.
void setShapes(FakeWindow &window, const QString &part, const QString &resolution, int bits)
{
    window.setRawInformation(QStringLiteral("1920x1080"), 14);
    window.setBeforeReport(QStringLiteral("case \"$recording\" in *'%1'*) echo 'Block: RAWI'; "
                                          "printf '1:\\n2:\\n3:\\n4: %2\\n'; "
                                          "echo '  bits_per_pixel   %3' ;; esac")
                               .arg(part, resolution)
                               .arg(bits));
}

} // namespace

class TestCalibrationFitWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void calibrationOfAnotherSizeIsToldAtOnce_data();
    void calibrationOfAnotherSizeIsToldAtOnce();
    void flatAndItsDarkOfDifferentSizesAreTold();
    void recordingsThatFitAreNotTold();
    void recordingsAddedToACalibrationOfAnotherSizeAreTold();
    void misfitGoesWithTheCalibration();
};

void TestCalibrationFitWindow::calibrationOfAnotherSizeIsToldAtOnce_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("resolution");
    QTest::addColumn<int>("bits");
    QTest::newRow("dark") << QStringLiteral("dark") << QStringLiteral("1280x720") << 14;
    QTest::newRow("flat") << QStringLiteral("flat") << QStringLiteral("1280x720") << 14;
    QTest::newRow("bits") << QStringLiteral("dark") << QStringLiteral("1920x1080") << 12;
}

/// While the averaging still goes on.
void TestCalibrationFitWindow::calibrationOfAnotherSizeIsToldAtOnce()
{
    QFETCH(const QString, kind);
    QFETCH(const QString, resolution);
    QFETCH(const int, bits);
    FakeWindow window(2);
    setShapes(window, QStringLiteral("small"), resolution, bits);
    window.setAveraging(QStringLiteral("exec sleep 60"));
    window.launch({QStringLiteral("a.MLV"), QStringLiteral("small.MLV"), QStringLiteral("b.MLV")});
    window.panel.chosen = window.makeRecordings({kind + QStringLiteral(" take.MLV")});
    window.press(kind + QStringLiteral("Button"));
    QTRY_COMPARE(window.alerts.shown.size(), 1);
    QCOMPARE(window.alerts.shown.constFirst(),
             QStringLiteral("The calibration doesn't fit|%1 take.MLV has frames of 1920x1080 at 14 "
                            "bits. It can't be used for:\n\nsmall.MLV, %2 at %3 bits|Ok")
                 .arg(kind, resolution)
                 .arg(bits));
    auto *sheet = window.widget<QDialog>(QStringLiteral("preprocessPanel"));
    QVERIFY(sheet->isVisible());
    const QString sentence = QStringLiteral("%1 take.MLV doesn't fit: it has frames of 1920x1080 "
                                            "at 14 bits, the recording has frames of %2 at %3 bits")
                                 .arg(kind, resolution)
                                 .arg(bits);
    QTRY_VERIFY(window.stateView(1)->toolTip().contains(sentence));
    QVERIFY(!window.stateView(0)->toolTip().contains(QLatin1String("fit")));
    sheet->reject();
}

void TestCalibrationFitWindow::flatAndItsDarkOfDifferentSizesAreTold()
{
    FakeWindow window(1);
    setShapes(window, QStringLiteral("flatDark"), QStringLiteral("640x360"), 14);
    window.launch();
    window.calibrate(QStringLiteral("flatButton"), QStringLiteral("flat take.MLV"));
    QCOMPARE(window.alerts.shown, QStringList());
    window.calibrate(QStringLiteral("flatDarkButton"), QStringLiteral("flatDark take.MLV"));
    QTRY_COMPARE(window.alerts.shown.size(), 1);
    QCOMPARE(
        window.alerts.shown.constFirst(),
        QStringLiteral("The calibration doesn't fit|flatDark take.MLV has frames of 640x360 at "
                       "14 bits. It can't be used for:\n\nflat take.MLV, 1920x1080 at 14 "
                       "bits|Ok"));
}

void TestCalibrationFitWindow::recordingsThatFitAreNotTold()
{
    FakeWindow window(1);
    setShapes(window, QStringLiteral("small"), QStringLiteral("640x360"), 14);
    window.launch({QStringLiteral("a.MLV"), QStringLiteral("b.MLV")});
    window.calibrate(QStringLiteral("darkButton"), QStringLiteral("dark take.MLV"));
    QTRY_COMPARE(window.tools.calls(QStringLiteral("mlv_dump")).size(), 4);
    window.add({QStringLiteral("c.MLV")});
    QCOMPARE(window.alerts.shown.size(), 1); // the question of the drop
    QCOMPARE(window.status(), QStringLiteral("3 recordings in the queue"));
}

void TestCalibrationFitWindow::recordingsAddedToACalibrationOfAnotherSizeAreTold()
{
    FakeWindow window(1);
    setShapes(window, QStringLiteral("small"), QStringLiteral("640x360"), 14);
    window.launch();
    window.calibrate(QStringLiteral("darkButton"), QStringLiteral("dark take.MLV"));
    QTRY_COMPARE(window.tools.calls(QStringLiteral("mlv_dump")).size(), 2);
    window.add({QStringLiteral("a.MLV"), QStringLiteral("small.MLV")});
    QTRY_COMPARE(window.status(), QStringLiteral("1 recording doesn't fit the calibration"));
    QTRY_VERIFY(window.stateView(0)->toolTip().contains(QLatin1String("doesn't fit")));
}

void TestCalibrationFitWindow::misfitGoesWithTheCalibration()
{
    FakeWindow window(1);
    setShapes(window, QStringLiteral("small"), QStringLiteral("640x360"), 14);
    window.launch({QStringLiteral("small.MLV")});
    window.calibrate(QStringLiteral("darkButton"), QStringLiteral("dark take.MLV"));
    QTRY_VERIFY(window.stateView(0)->toolTip().contains(QLatin1String("doesn't fit")));
    window.widget<CustomTextField>(QStringLiteral("darkTextField"))->deleteClicked();
    QTRY_VERIFY(!window.stateView(0)->toolTip().contains(QLatin1String("doesn't fit")));
}

FILMWRIGHT_TEST(TestCalibrationFitWindow, QApplication)
#include "tst_calibrationfit_window.moc"
