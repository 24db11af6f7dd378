// SPDX-License-Identifier: MIT
#include "mlvdump/frameselection.h"

#include "support/testprogram.h"

#include <QTest>

using namespace filmwright;

class TestFrameSelection : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void allFrames()
    {
        const FrameSelection all;
        QVERIFY(all.isWhole());
        QCOMPARE(all.countOf(10), 10U);
        QCOMPARE(all.countOf(0), 0U);
        QCOMPARE(all.text(), QString());
    }

    void someFrames_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<quint64>("count"); // of 10
        QTest::addColumn<QString>("range");
        QTest::newRow("in the middle") << "3-7" << quint64(5) << "2-6";
        QTest::newRow("one") << "3-3" << quint64(1) << "2-2";
        QTest::newRow("the first") << "1-1" << quint64(1) << "0";
        QTest::newRow("the last") << "10-10" << quint64(1) << "9-9";
        QTest::newRow("to the end") << "3-" << quint64(8) << "2-0";
        QTest::newRow("from the beginning") << "-7" << quint64(7) << "6";
        QTest::newRow("all by number") << "-10" << quint64(10) << "9";
    }

    void someFrames()
    {
        QFETCH(QString, text);
        const auto selection = FrameSelection::fromText(text);
        QVERIFY(selection);
        QVERIFY(!selection->isWhole());
        QCOMPARE(selection->text(), text);
        QTEST(selection->countOf(10), "count");
        QTEST(selection->range(), "range");
        QCOMPARE(selection->error(10), QString());
    }

    void sameFramesInOtherWords()
    {
        QCOMPARE(FrameSelection::fromText(QStringLiteral("1-7")).value().text(),
                 QStringLiteral("-7"));
        QVERIFY(FrameSelection::fromText(QStringLiteral("1-")).value().isWhole());
    }

    void framesOutsideAreToldWithBothNumbers_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("end") << "3-11";
        QTest::newRow("both") << "11-12";
        QTest::newRow("beginning") << "11-";
        QTest::newRow("end alone") << "-11";
    }

    void framesOutsideAreToldWithBothNumbers()
    {
        QFETCH(QString, text);
        QCOMPARE(FrameSelection::fromText(text).value().error(10),
                 QStringLiteral("the frames %1 are asked for, but it has only 10").arg(text));
    }

    void whatIsNoSelection_data()
    {
        QTest::addColumn<QString>("text");
        for (const char *text : {"", "-", "5", "0-", "0-5", "-0", "5-4", "a-b", "1-2-3", "1,5",
                                 "+1-5", " 1-5", "1-5 ", "1234567890-"})
            QTest::newRow(text) << QString::fromLatin1(text);
    }

    void whatIsNoSelection()
    {
        QFETCH(QString, text);
        QVERIFY(!FrameSelection::fromText(text));
    }
};

FILMWRIGHT_TEST(TestFrameSelection, QCoreApplication)
#include "tst_frameselection.moc"
