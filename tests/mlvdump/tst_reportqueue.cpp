// SPDX-License-Identifier: MIT
#include "mlvdump/reportqueue.h"

#include "support/testprogram.h"

#include <QTest>

using namespace filmwright;

/// Three tasks, two of which may run at a time.
class TestReportQueue : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void startsAtOnceWhileFewEnoughRun();
    void nextStartsAfterTheEventInWhichOneEnds();
    void startsInTheOrderOfEntering();
    void waitingTaskThatLeavesIsNotStarted();
    void taskThatCouldNotStartLetsTheNextOneIn();
    void leavingTwiceLetsOneIn();

private:
    void enter(const QObject &task, const QString &name)
    {
        m_queue.enter(&task, [this, name] { m_started << name; });
    }
    void enterAll()
    {
        enter(m_first, QStringLiteral("first"));
        enter(m_second, QStringLiteral("second"));
        enter(m_third, QStringLiteral("third"));
    }

    ReportQueue m_queue{2};
    QObject m_first;
    QObject m_second;
    QObject m_third;
    QStringList m_started;

private Q_SLOTS:
    void init() { m_started.clear(); }
    void cleanup()
    {
        for (const QObject *task : {&m_third, &m_second, &m_first})
            m_queue.leave(task);
        QCoreApplication::processEvents();
    }
};

void TestReportQueue::startsAtOnceWhileFewEnoughRun()
{
    enterAll();
    QCOMPARE(m_started, (QStringList{QStringLiteral("first"), QStringLiteral("second")}));
    QVERIFY(!m_queue.isWaiting(&m_first));
    QVERIFY(m_queue.isWaiting(&m_third));
}

void TestReportQueue::nextStartsAfterTheEventInWhichOneEnds()
{
    enterAll();
    m_queue.leave(&m_second);
    QCOMPARE(m_started.size(), 2);
    QCoreApplication::processEvents();
    QCOMPARE(m_started.mid(2), QStringList{QStringLiteral("third")});
    QVERIFY(!m_queue.isWaiting(&m_third));
}

void TestReportQueue::startsInTheOrderOfEntering()
{
    enterAll();
    const QObject fourth;
    enter(fourth, QStringLiteral("fourth"));
    m_queue.leave(&m_first);
    m_queue.leave(&m_second);
    QCoreApplication::processEvents();
    QCOMPARE(m_started.mid(2), (QStringList{QStringLiteral("third"), QStringLiteral("fourth")}));
    m_queue.leave(&fourth);
}

void TestReportQueue::waitingTaskThatLeavesIsNotStarted()
{
    enterAll();
    m_queue.leave(&m_third);
    QVERIFY(!m_queue.isWaiting(&m_third));
    m_queue.leave(&m_first);
    QCoreApplication::processEvents();
    QCOMPARE(m_started.size(), 2);
}

void TestReportQueue::taskThatCouldNotStartLetsTheNextOneIn()
{
    enter(m_first, QStringLiteral("first"));
    const QObject broken;
    m_queue.enter(&broken, [&] { m_queue.leave(&broken); });
    enter(m_second, QStringLiteral("second"));
    QCOMPARE(m_started, (QStringList{QStringLiteral("first"), QStringLiteral("second")}));
}

void TestReportQueue::leavingTwiceLetsOneIn()
{
    enterAll();
    const QObject fourth;
    enter(fourth, QStringLiteral("fourth"));
    m_queue.leave(&m_first);
    m_queue.leave(&m_first);
    QCoreApplication::processEvents();
    QCOMPARE(m_started.size(), 3);
    QVERIFY(m_queue.isWaiting(&fourth));
    m_queue.leave(&fourth);
}

FILMWRIGHT_TEST(TestReportQueue, QCoreApplication)
#include "tst_reportqueue.moc"
