// SPDX-License-Identifier: MIT
#include "fakewindow.h"

#include "app/imageview.h"
#include "app/progressindicator.h"
#include "support/events.h"
#include "support/testprogram.h"

#include <QCheckBox>
#include <QComboBox>

using namespace filmwright;

class TestBatchWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void nothingToStartBeforeARecordingIsRead();
    void startConvertsEveryRecordingInListOrder();
    void missingAverageRefusesToStart_data();
    void missingAverageRefusesToStart();
    void flatDarkAloneNeedsNothing();
    void missingToolIsToldBeforeTheWork();
    void finishedRecordingsAreConvertedAgain();
    void stopLaunchesNothingMore();
    void startAfterStopTakesTheWholeList();
    void repairIsChosenForTheBatch();
    void controlsAreLockedWhileWorking();
    void recipeTakesThePlaceOfFormatAndQuality();
    void recipeOfRawFramesMakesAFolder();
    void recipeOfRawFramesNeedsNeitherDcrawNorFfmpeg();
    void recipeLeavesTheRepairsToChoose();
    void recipeThatCantBeUsedIsToldBeforeTheBatch();
    void anyOtherPopUpItemStandsForTheSecond_data();
    void anyOtherPopUpItemStandsForTheSecond();
    void averagesGivenToTheRecordings_data();
    void averagesGivenToTheRecordings();
    void calibrationIsReadAnewForEveryRecording();
    void errorLineStopsTheBatch();
    void percentInAnErrorIsNoDirective();
    void errorWhileNothingRunsStartsABatch();
    void errorWhileAnAlertIsOpenWaits();
    void convertedFrameIsShown();
    void statusTellsStageAndFrames();

private:
    static void chooseRawFrames(FakeWindow &window);
};

void TestBatchWindow::nothingToStartBeforeARecordingIsRead()
{
    FakeWindow window;
    window.launch();
    QVERIFY(!window.action(QStringLiteral("startStopItem"))->isEnabled());
    window.setBeforeReport(QStringLiteral("while [ ! -e \"$recording.go\" ]; do sleep 0.05; done"));
    const QStringList paths = window.makeRecordings({a});
    QVERIFY(window.drop(paths));
    QVERIFY(!window.action(QStringLiteral("startStopItem"))->isEnabled());
    QVERIFY(!window.action(QStringLiteral("sourceItem"))->isEnabled());
    QCOMPARE(window.states(), QStringList{QStringLiteral("Reading data")});
    QVERIFY(QFile(paths.constFirst() + QStringLiteral(".go")).open(QIODevice::WriteOnly));
    window.waitUntilRead();
    QVERIFY(window.action(QStringLiteral("startStopItem"))->isEnabled());
}

void TestBatchWindow::startConvertsEveryRecordingInListOrder()
{
    FakeWindow window;
    window.launch({a, b, c});
    window.pressStart();
    QCOMPARE(window.action(QStringLiteral("startStopItem"))->text(), QStringLiteral("Stop"));
    window.waitForEnd();
    QCOMPARE(window.states(), QStringList({finished, finished, finished}));
    QStringList movies;
    for (const QStringList &call : window.tools.calls(QStringLiteral("ffmpeg")))
        movies << QFileInfo(call.constLast()).fileName();
    QCOMPARE(movies, QStringList({QStringLiteral("a.avi"), QStringLiteral("b.avi"),
                                  QStringLiteral("c.avi")}));
    QTRY_COMPARE(window.status(), QStringLiteral("3 movies written"));
    QCOMPARE(window.alerts.shown, QStringList());
}

void TestBatchWindow::missingAverageRefusesToStart_data()
{
    QTest::addColumn<QStringList>("buttons");
    QTest::addColumn<QString>("average");
    const QString dark = QStringLiteral("darkButton");
    const QString flat = QStringLiteral("flatButton");
    const QString flatDark = QStringLiteral("flatDarkButton");
    QTest::newRow("dark") << QStringList{dark} << QStringLiteral("dark.mlv");
    QTest::newRow("flat") << QStringList{flat} << QStringLiteral("flat.mlv");
    QTest::newRow("flat less its dark")
        << QStringList{flat, flatDark} << QStringLiteral("flat-flat_dark.mlv");
}

void TestBatchWindow::missingAverageRefusesToStart()
{
    QFETCH(const QStringList, buttons);
    QFETCH(const QString, average);
    FakeWindow window(1);
    window.launch({a});
    for (const QString &button : buttons)
        window.calibrate(button, button + QStringLiteral(".MLV"));
    QVERIFY(window.delegate->checkCalibrationIntegrity());
    QVERIFY(QFile::remove(window.temporary(average)));
    window.pressStart();
    QCOMPARE(window.alerts.shown,
             QStringList{
                 QStringLiteral("Calibration integrity|PLease check your calibration files.|Ok")});
    QVERIFY(!window.delegate->isWorking());
    QCOMPARE(window.action(QStringLiteral("startStopItem"))->text(), QStringLiteral("Start"));
    QCOMPARE(window.states(), QStringList{ready});
}

void TestBatchWindow::flatDarkAloneNeedsNothing()
{
    FakeWindow window(1);
    window.launch({a});
    window.calibrate(QStringLiteral("flatDarkButton"), QStringLiteral("flatdark.MLV"));
    QVERIFY(QFile::remove(window.temporary(QStringLiteral("flat_dark.mlv"))));
    window.pressStart();
    window.waitForEnd();
    QCOMPARE(window.states(), QStringList{finished});
}

void TestBatchWindow::missingToolIsToldBeforeTheWork()
{
    FakeWindow window;
    window.launch({a});
    QVERIFY(QFile::remove(window.tools.path() + QStringLiteral("/ffmpeg")));
    const QByteArray path = qgetenv("PATH");
    qputenv("PATH", "/nowhere");
    window.pressStart();
    qputenv("PATH", path);
    QCOMPARE(window.alerts.shown.size(), 1);
    QVERIFY(window.alerts.shown.constFirst().startsWith(
        QLatin1String("A tool is missing|the tool ffmpeg was not found; it was looked for in ")));
    QCOMPARE(window.states(), QStringList{ready});
}

void TestBatchWindow::finishedRecordingsAreConvertedAgain()
{
    FakeWindow window;
    window.launch({b});
    window.pressStart();
    window.waitForEnd();
    window.add({a, c});
    const auto *bar = window.widget<ProgressIndicator>(QStringLiteral("progressIndicator"));
    QList<double> values;
    connect(bar, &QProgressBar::valueChanged, this, [&] { values << bar->doubleValue(); });
    window.pressStart();
    QCOMPARE(bar->maxValue(), 3.0);
    QVERIFY(bar->isAnimating());
    window.waitForEnd();
    QCOMPARE(values, QList<double>({1, 2, 3})); // it was empty since the adding
    QVERIFY(!bar->isAnimating());
    QStringList movies;
    for (const QStringList &call : window.tools.calls(QStringLiteral("ffmpeg")))
        movies << QFileInfo(call.constLast()).baseName();
    QCOMPARE(movies.join(QLatin1Char(' ')), QStringLiteral("b b a c"));
}

void TestBatchWindow::stopLaunchesNothingMore()
{
    FakeWindow window;
    window.setEncoding(endless);
    window.launch({a, b, c});
    window.pressStart();
    QTRY_COMPARE(window.states(),
                 QStringList({QStringLiteral("Building movie"), pending, pending}));
    QTRY_COMPARE(window.tools.calls(QStringLiteral("ffmpeg")).size(), 1);
    window.pressStart();
    QVERIFY(!window.delegate->isWorking());
    QCOMPARE(window.states(), QStringList({ready, ready, ready}));
    QCOMPARE(window.action(QStringLiteral("startStopItem"))->text(), QStringLiteral("Start"));
    const auto *bar = window.widget<ProgressIndicator>(QStringLiteral("progressIndicator"));
    QCOMPARE(bar->doubleValue(), 3.0);
    QVERIFY(!bar->isAnimating());
    settle();
    QCOMPARE(window.tools.calls(QStringLiteral("ffmpeg")).size(), 1);
    QCOMPARE(window.status(), QStringLiteral("Stopped: 0 of 3 movies written"));
    QCOMPARE(window.alerts.shown, QStringList());
}

void TestBatchWindow::startAfterStopTakesTheWholeList()
{
    FakeWindow window;
    window.launch({a, b});
    window.setEncoding(onlyForB("movie", endless, QStringLiteral("cp \"$film\" \"$movie\"")));
    window.pressStart();
    QTRY_COMPARE(window.states(), QStringList({finished, QStringLiteral("Building movie")}));
    QTRY_COMPARE(window.tools.calls(QStringLiteral("ffmpeg")).size(), 2);
    window.pressStart();
    window.setEncoding(QStringLiteral("cp \"$film\" \"$movie\""));
    window.pressStart();
    window.waitForEnd();
    QCOMPARE(window.states(), QStringList({finished, finished}));
    QCOMPARE(window.tools.calls(QStringLiteral("ffmpeg")).size(), 4);
}

void TestBatchWindow::repairIsChosenForTheBatch()
{
    FakeWindow window;
    window.launch({a});
    const auto extraction = [&window] {
        window.pressStart();
        window.waitForEnd();
        QStringList call = window.tools.calls(QStringLiteral("mlv_dump")).constLast();
        const qsizetype begin = call.indexOf(QStringLiteral("0-0")) + 1;
        return call.sliced(begin, call.indexOf(QStringLiteral("-o")) - begin);
    };
    QCOMPARE(extraction(), QStringList());
    window.widget<QCheckBox>(QStringLiteral("repairPixelsCheckBox"))->click();
    QCOMPARE(extraction(),
             (QStringList{QStringLiteral("--repair-pixels"), QStringLiteral("auto")}));
    window.widget<QCheckBox>(QStringLiteral("repairPixelsCheckBox"))->click();
    window.widget<QCheckBox>(QStringLiteral("repairColumnsCheckBox"))->click();
    QCOMPARE(extraction(), QStringList{QStringLiteral("--repair-columns")});
}

void TestBatchWindow::controlsAreLockedWhileWorking()
{
    FakeWindow window;
    window.setExtraction(endless);
    window.launch({a});
    const auto enabled = [&window] {
        return QList<bool>{
            window.action(QStringLiteral("sourceItem"))->isEnabled(),
            window.action(QStringLiteral("startStopItem"))->isEnabled(),
            window.widget<QComboBox>(QStringLiteral("movieFormatPopUpButton"))->isEnabled(),
            window.widget<QComboBox>(QStringLiteral("movieQualityPopUpButton"))->isEnabled(),
            window.widget<QCheckBox>(QStringLiteral("repairPixelsCheckBox"))->isEnabled(),
            window.widget<QCheckBox>(QStringLiteral("repairColumnsCheckBox"))->isEnabled()};
    };
    const auto shows = [&window](const char *image) {
        return window.action(QStringLiteral("startStopItem"))->icon().pixmap(32).toImage() ==
               QIcon(QLatin1String(":/images/") + QLatin1String(image)).pixmap(32).toImage();
    };
    QCOMPARE(enabled(), QList<bool>({true, true, true, true, true, true}));
    QVERIFY(shows("Encode"));
    window.pressStart();
    QCOMPARE(enabled(), QList<bool>({false, true, false, false, false, false}));
    QVERIFY(shows("stopencode"));
    QVERIFY(!shows("Encode"));
    window.pressStart();
    QCOMPARE(enabled(), QList<bool>({true, true, true, true, true, true}));
    QVERIFY(shows("Encode"));
}

void TestBatchWindow::recipeTakesThePlaceOfFormatAndQuality()
{
    FakeWindow window;
    window.addRecipe(QStringLiteral("mine"), "-c:v x");
    window.setEncoding(QStringLiteral("case $1 in -encoders) printf ' ------\\n V..... x X\\n' ;; "
                                      "*) cp \"$film\" \"$movie\" ;; esac"));
    window.launch();
    auto *recipe = window.widget<QComboBox>(QStringLiteral("movieRecipePopUpButton"));
    const auto formatsAreEnabled = [&window] {
        return window.widget<QComboBox>(QStringLiteral("movieFormatPopUpButton"))->isEnabled() &&
               window.widget<QComboBox>(QStringLiteral("movieQualityPopUpButton"))->isEnabled();
    };
    window.add({a});
    QVERIFY(formatsAreEnabled());
    recipe->setCurrentIndex(recipe->findData(QStringLiteral("mine")));
    QVERIFY(!formatsAreEnabled());
    window.pressStart();
    QVERIFY(!recipe->isEnabled());
    window.waitForEnd();
    QVERIFY(recipe->isEnabled() && !formatsAreEnabled());
    QVERIFY(QFile::exists(window.recordings() + QStringLiteral("/a.mine.mp4")));
    recipe->setCurrentIndex(0);
    QVERIFY(formatsAreEnabled());
    window.pressStart();
    window.waitForEnd();
    QVERIFY(QFile::exists(window.recordings() + QStringLiteral("/a.avi")));
}

void TestBatchWindow::chooseRawFrames(FakeWindow &window)
{
    QFile file(window.addRecipe(QStringLiteral("raw"), "-c:v x"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("[Recipe]\nExtension=dng\n");
    file.close();
    window.launch();
    auto *recipe = window.widget<QComboBox>(QStringLiteral("movieRecipePopUpButton"));
    recipe->setCurrentIndex(recipe->findData(QStringLiteral("raw")));
    window.add({a});
}

void TestBatchWindow::recipeOfRawFramesMakesAFolder()
{
    FakeWindow window;
    chooseRawFrames(window);
    window.pressStart();
    window.waitForEnd();
    const QDir folder(window.recordings() + QStringLiteral("/a"));
    QTRY_VERIFY(QFile::exists(folder.filePath(QStringLiteral("a_000000.dng"))));
    QVERIFY(!QFile::exists(window.recordings() + QStringLiteral("/a.unfinished")));
    QVERIFY(window.tools.calls(QStringLiteral("dcraw")).isEmpty());
    window.select(a);
    QVERIFY(window.action(QStringLiteral("playMovieMenuItem"))->isEnabled());
}

void TestBatchWindow::recipeOfRawFramesNeedsNeitherDcrawNorFfmpeg()
{
    FakeWindow window;
    chooseRawFrames(window);
    for (const char *tool : {"dcraw", "ffmpeg"})
        QVERIFY(QFile::remove(window.tools.path() + u'/' + QLatin1String(tool)));
    const QByteArray path = qgetenv("PATH");
    qputenv("PATH", "/nowhere");
    window.pressStart();
    qputenv("PATH", path);
    QCOMPARE(window.alerts.shown, QStringList());
    QVERIFY(window.delegate->isWorking());
    window.waitForEnd();
}

void TestBatchWindow::recipeLeavesTheRepairsToChoose()
{
    FakeWindow window;
    window.addRecipe(QStringLiteral("mine"), "-c:v x");
    window.launch();
    auto *recipe = window.widget<QComboBox>(QStringLiteral("movieRecipePopUpButton"));
    recipe->setCurrentIndex(recipe->findData(QStringLiteral("mine")));
    QVERIFY(window.widget<QCheckBox>(QStringLiteral("repairPixelsCheckBox"))->isEnabled());
    QVERIFY(window.widget<QCheckBox>(QStringLiteral("repairColumnsCheckBox"))->isEnabled());
}

void TestBatchWindow::recipeThatCantBeUsedIsToldBeforeTheBatch()
{
    FakeWindow window;
    const QString path = window.addRecipe(QStringLiteral("mine"), "-c:v missing");
    window.setEncoding(QStringLiteral("printf ' ------\\n V..... x X\\n'"));
    window.launch();
    auto *recipe = window.widget<QComboBox>(QStringLiteral("movieRecipePopUpButton"));
    recipe->setCurrentIndex(recipe->findData(QStringLiteral("mine")));
    window.add({a});
    window.pressStart();
    QVERIFY(!window.delegate->isWorking());
    QVERIFY(window.alerts.shown.constLast().contains(
        QStringLiteral("ffmpeg has no encoder \"missing\"")));
    window.addRecipe(QStringLiteral("mine"), "what -c:v x, with another length");
    window.pressStart();
    QVERIFY(!window.delegate->isWorking());
    QVERIFY(window.alerts.shown.constLast().contains(path + QStringLiteral(":3: \"what\"")));
}

void TestBatchWindow::anyOtherPopUpItemStandsForTheSecond_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<int>("value");
    QTest::newRow("first") << 0 << 0;
    QTest::newRow("second") << 1 << 1;
    QTest::newRow("third") << 2 << 1;
}

void TestBatchWindow::anyOtherPopUpItemStandsForTheSecond()
{
    QFETCH(const int, index);
    QFETCH(const int, value);
    FakeWindow window;
    window.launch({a});
    for (const char *name : {"movieFormatPopUpButton", "movieQualityPopUpButton"}) {
        auto *popUp = window.widget<QComboBox>(QLatin1String(name));
        popUp->addItem(QStringLiteral("third"));
        popUp->setCurrentIndex(index);
    }
    window.pressStart();
    window.waitForEnd();
    const MLVProjectController &project = *window.delegate->projectList().front();
    QCOMPARE(project.movieFormat(), value);
    QCOMPARE(project.movieQuality(), value);
}

void TestBatchWindow::averagesGivenToTheRecordings_data()
{
    QTest::addColumn<QStringList>("buttons");
    QTest::addColumn<QString>("dark");
    QTest::addColumn<QString>("flat");
    const QString dark = QStringLiteral("darkButton");
    const QString flat = QStringLiteral("flatButton");
    const QString flatDark = QStringLiteral("flatDarkButton");
    QTest::newRow("none") << QStringList() << QString() << QString();
    QTest::newRow("dark") << QStringList{dark} << QStringLiteral("dark.mlv") << QString();
    QTest::newRow("flat") << QStringList{flat} << QString() << QStringLiteral("flat.mlv");
    QTest::newRow("flat and its dark")
        << QStringList{flat, flatDark} << QString() << QStringLiteral("flat-flat_dark.mlv");
    QTest::newRow("all") << QStringList{dark, flatDark, flat} << QStringLiteral("dark.mlv")
                         << QStringLiteral("flat-flat_dark.mlv");
    QTest::newRow("dark of a flat alone") << QStringList{flatDark} << QString() << QString();
}

void TestBatchWindow::averagesGivenToTheRecordings()
{
    QFETCH(const QStringList, buttons);
    QFETCH(const QString, dark);
    QFETCH(const QString, flat);
    FakeWindow window(1);
    window.launch({a, b});
    for (const QString &button : buttons)
        window.calibrate(button, button + QStringLiteral(".MLV"));
    window.pressStart();
    window.waitForEnd();
    for (const auto &project : window.delegate->projectList()) {
        QCOMPARE(project->darkPath(), dark.isEmpty() ? QString() : window.temporary(dark));
        QCOMPARE(project->flatPath(), flat.isEmpty() ? QString() : window.temporary(flat));
        QVERIFY(!project->darkPath().isNull());
        QVERIFY(!project->flatPath().isNull());
    }
}

void TestBatchWindow::calibrationIsReadAnewForEveryRecording()
{
    FakeWindow window(1);
    window.launch({a, b});
    window.calibrate(QStringLiteral("darkButton"), QStringLiteral("dark.MLV"));
    window.setEncoding(window.untilReleased() + QStringLiteral("cp \"$film\" \"$movie\""));
    window.pressStart();
    QTRY_COMPARE(window.states(), QStringList({QStringLiteral("Building movie"), pending}));
    auto *field = window.widget<CustomTextField>(QStringLiteral("darkTextField"));
    QTest::mouseClick(field->deleteButton(), Qt::LeftButton);
    QVERIFY(!QFileInfo::exists(window.temporary(QStringLiteral("dark.mlv"))));
    window.release();
    window.waitForEnd();
    const auto &projects = window.delegate->projectList();
    QCOMPARE(projects.at(0)->darkPath(), window.temporary(QStringLiteral("dark.mlv")));
    QCOMPARE(projects.at(1)->darkPath(), QString());
}

void TestBatchWindow::errorLineStopsTheBatch()
{
    FakeWindow window;
    window.setExtraction(onlyForB("recording",
                                  QStringLiteral("echo '[ERROR] bad block'; exec sleep 60"),
                                  FakeTools::extraction(2)));
    window.launch({a, b, c});
    QStringList atAlert;
    window.alerts.whileOpen = [&] { atAlert = window.states(); };
    window.pressStart();
    window.waitForEnd();
    QCOMPARE(window.alerts.shown,
             QStringList{QStringLiteral("Process aborted|[ERROR] bad block|Ok")});
    QCOMPARE(atAlert, QStringList({finished, QStringLiteral("Extracting DNG"), pending}));
    QCOMPARE(window.states(), QStringList({ready, ready, ready}));
    QCOMPARE(window.action(QStringLiteral("startStopItem"))->text(), QStringLiteral("Start"));
    settle();
    QCOMPARE(window.tools.calls(QStringLiteral("ffmpeg")).size(), 1);
    QTRY_COMPARE(window.stateView(1)->error(), QStringLiteral("bad block"));
    QCOMPARE(window.stateView(0)->error(), QString());
    QCOMPARE(window.stateView(2)->error(), QString());
}

void TestBatchWindow::percentInAnErrorIsNoDirective()
{
    FakeWindow window;
    window.setExtraction(QStringLiteral("echo '[ERROR] 100%% of %d %s lost'; exec sleep 60"));
    window.launch({a});
    window.pressStart();
    window.waitForEnd();
    QCOMPARE(window.alerts.shown,
             QStringList{QStringLiteral("Process aborted|[ERROR] 100% of %d %s lost|Ok")});
}

void TestBatchWindow::errorWhileNothingRunsStartsABatch()
{
    FakeWindow window;
    window.launch({a});
    window.setBeforeReport(
        onlyForB("recording", QStringLiteral("echo '[ERROR] torn block'"), QStringLiteral(":")));
    window.alerts.answers = {1, 1};
    QVERIFY(window.drop(window.makeRecordings({b})));
    QTRY_VERIFY(window.delegate->isWorking());
    QCOMPARE(window.alerts.shown.constLast(),
             QStringLiteral("Process aborted|[ERROR] torn block|Ok"));
    window.waitForEnd();
    QCOMPARE(window.states().constFirst(), finished);
}

void TestBatchWindow::errorWhileAnAlertIsOpenWaits()
{
    FakeWindow window;
    window.setExtraction(window.untilReleased() +
                         QStringLiteral("echo '[ERROR] bad block'; exec sleep 60"));
    window.launch({a});
    window.pressStart();
    QStringList shownAtFirstAlert;
    window.alerts.whileOpen = [&] {
        window.alerts.whileOpen = nullptr;
        window.release();
        settle(); // the error has ended the extraction
        shownAtFirstAlert = window.alerts.shown;
        QVERIFY(window.delegate->isWorking());
    };
    QVERIFY(!window.drop(window.makeRecordings({b})));
    QCOMPARE(shownAtFirstAlert.size(), 1);
    QTRY_COMPARE(window.alerts.shown,
                 QStringList({QStringLiteral("Please wait|Operation not allowed while working.|Ok"),
                              QStringLiteral("Process aborted|[ERROR] bad block|Ok")}));
    QTRY_VERIFY(!window.delegate->isWorking());
}

void TestBatchWindow::convertedFrameIsShown()
{
    FakeWindow window;
    window.launch({a});
    const auto *preview = window.widget<ImageView>(QStringLiteral("imageView"));
    QVERIFY(preview->image().isNull());
    window.pressStart();
    window.waitForEnd();
    QCOMPARE(preview->image().size(), QSize(4, 2));
}

void TestBatchWindow::statusTellsStageAndFrames()
{
    FakeWindow window(3);
    window.setConversion(QStringLiteral("case \"$dng\" in *2.dng) exec sleep 5 ;; esac; "
                                        "cp \"$frame\" \"$tiff\""));
    window.launch({a});
    QTRY_COMPARE(window.status(), QStringLiteral("1 recording in the queue"));
    window.pressStart();
    const QString begin = QStringLiteral("1 of 1, 55 %: converting, 2 of 3 frames");
    QTRY_VERIFY2(window.status().startsWith(begin), qPrintable(window.status()));
    QVERIFY2(window.status().endsWith(QStringLiteral(" – a.MLV")), qPrintable(window.status()));
    window.pressStart();
}

FILMWRIGHT_TEST(TestBatchWindow, QApplication)
#include "tst_batch_window.moc"
