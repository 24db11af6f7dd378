// SPDX-License-Identifier: MIT
#include "cli/exitstatus.h"
#include "cli/progressdisplay.h"

#include <QTest>

using namespace filmwright;

class TestProgressDisplay : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void framesRateAndTimeLeft_data()
    {
        QTest::addColumn<int>("done");
        QTest::addColumn<int>("frames");
        QTest::addColumn<double>("rate");
        QTest::addColumn<QString>("text");
        QTest::newRow("rate not known yet") << 0 << 48 << 0.0 << "0 of 48 frames";
        QTest::newRow("on the way")
            << 12 << 48 << 3.0 << "12 of 48 frames, 3.0 frames/s, 0:12 left";
        QTest::newRow("minutes") << 0 << 1000 << 4.0 << "0 of 1000 frames, 4.0 frames/s, 4:10 left";
        QTest::newRow("done") << 48 << 48 << 3.0 << "48 of 48 frames, 3.0 frames/s, 0:00 left";
        QTest::newRow("more than announced") << 49 << 48 << 3.0 << "49 of 48 frames";
    }

    void framesRateAndTimeLeft()
    {
        QFETCH(int, done);
        QFETCH(int, frames);
        QFETCH(double, rate);
        QTEST(progressText(quint64(done), quint64(frames), rate), "text");
    }

    void namesCannotSteerTheTerminal()
    {
        QCOMPARE(printable(QStringLiteral("a\033[2Jb\nc \u00e4 \U0001F3AC")),
                 QStringLiteral("a\ufffd[2Jb\ufffdc \u00e4 \U0001F3AC"));
    }
};

QTEST_GUILESS_MAIN(TestProgressDisplay)
#include "tst_progressdisplay.moc"
