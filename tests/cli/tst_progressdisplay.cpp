// SPDX-License-Identifier: MIT
#include "cli/exitstatus.h"
#include "cli/progressdisplay.h"
#include "cli/progressjson.h"

#include "support/testprogram.h"

#include <QTest>

using namespace filmwright;

class TestProgressDisplay : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void framesRateAndTimeLeft_data()
    {
        using Seconds = TimeEstimate::Seconds;
        const Progress onTheWay{WorkStage::Converting, 12, 48, 3, Seconds(20), Seconds(20)};
        Progress oneOfSeveral = onTheWay;
        oneOfSeveral.batchTimeLeft = Seconds(4000);
        Progress beforeOthers = onTheWay;
        beforeOthers.batchTimeLeft.reset();
        QTest::addColumn<Progress>("progress");
        QTest::addColumn<QString>("text");
        QTest::newRow("nothing known yet")
            << Progress{WorkStage::Converting, 0, 48, 0, {}, {}} << "0 of 48 frames";
        QTest::newRow("rate alone") << Progress{WorkStage::Extracting, 12, 48, 30, {}, {}}
                                    << "12 of 48 frames, 30.0 frames/s";
        QTest::newRow("single recording") << onTheWay << "12 of 48 frames, 3.0 frames/s, 0:20 left";
        QTest::newRow("one of several")
            << oneOfSeveral << "12 of 48 frames, 3.0 frames/s, 0:20 left, 1:06:40 in all";
        QTest::newRow("before others of unknown length")
            << beforeOthers << "12 of 48 frames, 3.0 frames/s, 0:20 left";
    }

    void framesRateAndTimeLeft()
    {
        QFETCH(Progress, progress);
        QTEST(progressText(progress), "text");
    }

    void objectOfEverythingKnown()
    {
        using Seconds = TimeEstimate::Seconds;
        const Progress progress{WorkStage::Converting, 12, 48, 3.14159, Seconds(20.4), Seconds(99)};
        QCOMPARE(
            progressJson(QStringLiteral("/a/b \"c\".MLV"), stageName(progress.stage), progress),
            QByteArrayLiteral("{\"batchSecondsLeft\":99,\"frames\":48,\"framesDone\":12,"
                              "\"framesPerSecond\":3.14,\"recording\":\"/a/b \\\"c\\\".MLV\","
                              "\"secondsLeft\":20,\"stage\":\"converting\"}\n"));
    }

    void objectWithoutWhatIsNotKnown()
    {
        QCOMPARE(progressJson(QStringLiteral("a"), QStringLiteral("reading"), {}),
                 QByteArrayLiteral("{\"recording\":\"a\",\"stage\":\"reading\"}\n"));
    }

    void objectsOfTheEnd()
    {
        QCOMPARE(finishedJson(QStringLiteral("a.MLV"), QStringLiteral("a.mov")),
                 QByteArrayLiteral(
                     "{\"movie\":\"a.mov\",\"recording\":\"a.MLV\",\"stage\":\"finished\"}\n"));
        QCOMPARE(failedJson(QStringLiteral("a.MLV"), QStringLiteral("line\nbreak")),
                 QByteArrayLiteral("{\"reason\":\"line\\nbreak\",\"recording\":\"a.MLV\","
                                   "\"stage\":\"failed\"}\n"));
        QCOMPARE(messageJson(QStringLiteral("m")), QByteArrayLiteral("{\"message\":\"m\"}\n"));
    }

    void namesCannotSteerTheTerminal()
    {
        QCOMPARE(printable(QStringLiteral("a\033[2Jb\nc \u00e4 \U0001F3AC")),
                 QStringLiteral("a\ufffd[2Jb\ufffdc \u00e4 \U0001F3AC"));
    }
};

FILMWRIGHT_TEST(TestProgressDisplay, QCoreApplication)
#include "tst_progressdisplay.moc"
