// SPDX-License-Identifier: MIT
// Recordings that get no movie, or no whole one: what the window tells of them.
#include "fakewindow.h"

#include "project/moviemark.h"
#include "support/events.h"
#include "support/testprogram.h"

using namespace filmwright;

class TestFailuresWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void failureCostsOneRecording_data();
    void failureCostsOneRecording();
    void fullTemporaryFolderSkipsTheRecording();
    void movieOfAnotherRunSkipsTheRecording();
    void failureOfTheLastRunIsForgottenWithTheNext();
    void recordingThatCannotBeReadIsMarked();
    void summaryFitsTheScreen();
    void summaryForgetsAStoppedBatch();
};

void TestFailuresWindow::failureCostsOneRecording_data()
{
    QTest::addColumn<QString>("stage");
    QTest::addColumn<QString>("script");
    QTest::addColumn<QString>("reason");
    QTest::addColumn<QString>("printed");
    QTest::addColumn<QString>("state");
    QTest::newRow("mlv_dump dies while it extracts")
        << QStringLiteral("extraction") << QStringLiteral("echo torn; kill -SEGV $$")
        << QStringLiteral("mlv_dump ended before it had extracted the frames")
        << QStringLiteral("torn") << ready;
    QTest::newRow("no frame") << QStringLiteral("extraction") << QStringLiteral("echo Done")
                              << QStringLiteral("no frame could be extracted") << QString()
                              << ready;
    QTest::newRow("fewer frames than the recording has")
        << QStringLiteral("extraction") << FakeTools::extraction(1)
        << QStringLiteral("only 1 of 2 frames could be read") << QString() << finished;
    QTest::newRow("the sound can't be read")
        << QStringLiteral("extraction")
        << QStringLiteral("echo '[WARNING] the sound is left out'; ") + FakeTools::extraction(2)
        << QStringLiteral("the sound is left out") << QString() << finished;
    QTest::newRow("a frame is not converted")
        << QStringLiteral("conversion")
        << QStringLiteral("case \"$dng\" in *0.dng) echo torn; exit 1 ;; esac; cp \"$frame\" "
                          "\"$tiff\"")
        << QStringLiteral("dcraw converted only 1 of 2 frames") << QStringLiteral("torn")
        << ready; // no half movie is made
    QTest::newRow("ffmpeg fails") << QStringLiteral("encoding")
                                  << QStringLiteral("echo smoke; echo 'disk on fire'; exit 3")
                                  << QStringLiteral("ffmpeg ended with status 3: disk on fire")
                                  << QStringLiteral("smoke\ndisk on fire") << finished;
    QTest::newRow("ffmpeg writes nothing")
        << QStringLiteral("encoding") << QStringLiteral(":")
        << QStringLiteral("ffmpeg wrote no movie") << QString() << finished;
}

void TestFailuresWindow::failureCostsOneRecording()
{
    QFETCH(const QString, stage);
    QFETCH(const QString, script);
    QFETCH(const QString, reason);
    QFETCH(const QString, printed);
    QFETCH(const QString, state);
    FakeWindow window;
    const QString copy = QStringLiteral("cp \"$frame\" \"$tiff\"");
    const QString encode = QStringLiteral("cp \"$film\" \"$movie\"");
    if (stage == QLatin1String("extraction"))
        window.setExtraction(onlyForB("recording", script, FakeTools::extraction(2)));
    else if (stage == QLatin1String("conversion"))
        window.setConversion(
            QStringLiteral("case \"$dng\" in *b.MLV*) %1 ;; *) %2 ;; esac").arg(script, copy));
    else
        window.setEncoding(onlyForB("movie", script, encode));
    if (script == FakeTools::extraction(1)) { // the movie is of what was extracted
        FakeTools::writeMovie(window.path(QStringLiteral("short.mov")), 1);
        window.setEncoding(onlyForB(
            "movie",
            QStringLiteral("cp '%1' \"$movie\"").arg(window.path(QStringLiteral("short.mov"))),
            encode));
    }
    window.launch({a, b, c});
    window.pressStart();
    window.waitForEnd();
    QTRY_COMPARE(
        window.alerts.shown,
        QStringList{
            QStringLiteral("1 of 3 recordings have no whole movie|b.MLV: %1|Ok").arg(reason)});
    QCOMPARE(window.states(), QStringList({finished, state, finished}));
    QTRY_COMPARE(window.stateView(1)->error().section(QLatin1Char('\n'), 0, 0), reason);
    QCOMPARE(window.stateView(1)->error().section(QLatin1Char('\n'), 1), printed);
    QVERIFY(window.stateView(1)->toolTip().contains(reason.toHtmlEscaped()));
    QVERIFY(window.stateView(0)->error().isNull());
    QVERIFY(window.stateView(2)->error().isNull());
    QCOMPARE(window.status(), QStringLiteral("1 of 3 recordings have no whole movie"));
    settle();
    QCOMPARE(window.alerts.shown.size(), 1);
    const QFileInfo recording(window.delegate->projectList().front()->mlvPath());
    for (const QString &movie : {QStringLiteral("a.avi"), QStringLiteral("c.avi")})
        QVERIFY(recording.dir().exists(movie));
}

void TestFailuresWindow::fullTemporaryFolderSkipsTheRecording()
{
    FakeWindow window;
    window.launch();
    window.setRawInformation(QStringLiteral("900000x900000"), 14);
    window.add({b});
    window.setRawInformation(QStringLiteral("4x2"), 14);
    window.add({c});
    window.pressStart();
    window.waitForEnd();
    QCOMPARE(window.states(), QStringList({ready, finished}));
    // The first alert asked about the queue.
    QTRY_VERIFY(window.alerts.shown.value(1).startsWith(
        QLatin1String("1 of 2 recordings have no whole movie|b.MLV: its frames need ")));
    QTRY_VERIFY(window.stateView(1)->error().startsWith(QLatin1String("its frames need ")));
}

void TestFailuresWindow::movieOfAnotherRunSkipsTheRecording()
{
    FakeWindow window;
    window.launch({b, c});
    MovieMark another(window.delegate->projectList().front()->moviePath());
    QCOMPARE(another.set(), QString());
    window.pressStart();
    window.waitForEnd();
    QCOMPARE(window.states(), QStringList({ready, finished}));
    QTRY_COMPARE(window.alerts.shown.value(0),
                 QStringLiteral("1 of 2 recordings have no whole movie|b.MLV: its movie is being "
                                "written by another run|Ok"));
    another.remove();
}

void TestFailuresWindow::failureOfTheLastRunIsForgottenWithTheNext()
{
    FakeWindow window;
    window.setEncoding(QStringLiteral("exit 1"));
    window.launch({a});
    window.pressStart();
    window.waitForEnd();
    QTRY_VERIFY(!window.stateView(0)->error().isNull());
    QTRY_COMPARE(window.alerts.shown.size(), 1);
    window.setEncoding(QStringLiteral("cp \"$film\" \"$movie\""));
    window.pressStart();
    window.waitForEnd();
    QTRY_COMPARE(window.status(), QStringLiteral("1 movie written"));
    QTRY_VERIFY(window.stateView(0)->error().isNull());
    QCOMPARE(window.stateView(0)->toolTip(), QString());
    QCOMPARE(window.alerts.shown.size(), 1);
}

void TestFailuresWindow::recordingThatCannotBeReadIsMarked()
{
    FakeWindow window;
    window.setBeforeReport(
        onlyForB("recording", QStringLiteral("kill -SEGV $$"), QStringLiteral(":")));
    window.launch({a, b});
    QTRY_COMPARE(window.states(), QStringList({ready, ready}));
    QVERIFY(window.action(QStringLiteral("startStopItem"))->isEnabled());
    QTRY_COMPARE(window.stateView(0)->error(),
                 QStringLiteral("mlv_dump ended before it had read the recording"));
    QCOMPARE(window.alerts.shown, QStringList());
}

void TestFailuresWindow::summaryFitsTheScreen()
{
    FakeWindow window;
    window.setExtraction(QStringLiteral("kill -SEGV $$"));
    window.launch();
    QStringList names;
    for (int number = 10; number < 27; ++number)
        names << QStringLiteral("take%1.MLV").arg(number);
    window.add(names);
    window.pressStart();
    window.waitForEnd();
    QTRY_COMPARE(window.alerts.shown.size(), 1);
    const QStringList lines = window.alerts.shown.constFirst().split(QLatin1Char('\n'));
    QCOMPARE(lines.size(), 16);
    QCOMPARE(lines.constFirst(),
             QStringLiteral("17 of 17 recordings have no whole movie|take10.MLV: mlv_dump ended "
                            "before it had extracted the frames"));
    QCOMPARE(lines.constLast(), QStringLiteral("… and 2 more|Ok"));
}

void TestFailuresWindow::summaryForgetsAStoppedBatch()
{
    FakeWindow window;
    window.setRawInformation(QStringLiteral("900000x900000"), 14);
    window.launch({a});
    window.pressStart(); // skipped for want of room, stopped before the next one's turn
    window.pressStart();
    window.setBeforeReport(QStringLiteral("kill -SEGV $$"));
    window.alerts.answers = {0};
    window.add({b});
    settle();
    QCOMPARE(window.status(), QStringLiteral("1 recording in the queue"));
    QCOMPARE(window.alerts.shown.size(), 1);
}

FILMWRIGHT_TEST(TestFailuresWindow, QApplication)
#include "tst_failures_window.moc"
