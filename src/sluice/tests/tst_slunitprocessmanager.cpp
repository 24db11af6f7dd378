// SPDX-License-Identifier: MIT
#include "sluice/slunitprocessmanager.h"
#include "testunit.h"

#include "support/testprogram.h"

#include <QCoreApplication>
#include <QTest>

#include <set>

using Ints = QList<int>;

class tst_SLUnitProcessManager : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyValueIsProcessedAndDeliveredInOrder();
    void processRunsInOneWorkerThread();
    void deliveryIsMadeOnTheMainThread();
    void valuesWaitForExecute();
    void executeTwiceIsExecuteOnce();
    void valuesAppendedWhileRunning();
    void valuesAppendedAfterTheQueueRanDry();
    void clearedTargetDeliversNothing();
    void deadTargetDeliversNothing();
    void missingSelectorDeliversNothing();
    void selectorIsNotCalledOnAnotherClass();
    void unknownOutputIsIgnored();
    void inputIsInvalidOutsideProcess();
    void unitOfSeveralInputsWaitsForEach();
    void unitWithoutManagerDeliversAtOnce();
    void unitsRunBesideEachOther();

    void stopNeverExecutedDoesNothing();
    void stopWithoutUnitsDoesNothing();
    void stopDropsQueuedDeliveries();
    void stopDiscardsQueuedValues();
    void valueAfterStopWaitsForExecute();
    void stopDoesNotWaitForProcess();
    void stopTellsTheRunningProcess();
    void workerWaitsWithTheThirdValue();
    void stopReleasesTheWaitingWorker();
    void executeAgainAfterStop();
    void executeNeverOverlapsAnOldProcess();
    void stopWithinADelivery();
    void managerDestroyedWithinADelivery();
    void destructorInterruptsAndWaits();
};

namespace {

/// A unit in a manager, and who receives what it delivers.
struct OneUnit
{
    OneUnit()
    {
        manager.addUnitProcess(unit);
        unit->deliverTo(&receiver);
    }

    Receiver receiver;
    const std::shared_ptr<TestUnit> unit = std::make_shared<TestUnit>();
    SLUnitProcessManager manager; // ends before the unit
};

} // namespace

void tst_SLUnitProcessManager::everyValueIsProcessedAndDeliveredInOrder()
{
    OneUnit run;
    run.unit->append({0, 1, 2});
    run.manager.execute();
    QTRY_COMPARE(run.receiver.values, Ints({0, 1, 2}));
    run.unit->waitLeft(3);
    QCOMPARE(run.unit->seen(&TestUnit::entered), numbers(3));
    QCOMPARE(run.unit->seen(&TestUnit::left), numbers(3));
}

void tst_SLUnitProcessManager::processRunsInOneWorkerThread()
{
    const auto unit = std::make_shared<TestUnit>();
    SLUnitProcessManager manager;
    manager.addUnitProcess(unit);
    unit->append({0, 1, 2});
    manager.execute();
    QTRY_COMPARE(unit->seen(&TestUnit::left).size(), std::size_t(3));
    manager.stop();
    unit->append({3});
    manager.execute();
    QTRY_COMPARE(unit->seen(&TestUnit::left).size(), std::size_t(4));
    const auto threads = unit->seen(&TestUnit::threads);
    QCOMPARE(std::set(threads.begin(), threads.end()).size(), std::size_t(1));
    QVERIFY(threads.front() != std::this_thread::get_id());
}

void tst_SLUnitProcessManager::deliveryIsMadeOnTheMainThread()
{
    OneUnit run;
    run.unit->append({0, 1});
    run.manager.execute();
    QTRY_COMPARE(run.receiver.threads.size(), 2);
    for (const QThread *thread : std::as_const(run.receiver.threads))
        QCOMPARE(thread, QCoreApplication::instance()->thread());
}

void tst_SLUnitProcessManager::valuesWaitForExecute()
{
    OneUnit run;
    run.unit->append({0, 1});
    QTest::qSleep(shortWhile);
    QVERIFY(run.unit->seen(&TestUnit::entered).empty());
    run.manager.execute();
    QTRY_COMPARE(run.receiver.values, Ints({0, 1}));
}

void tst_SLUnitProcessManager::executeTwiceIsExecuteOnce()
{
    OneUnit run;
    run.unit->append({0, 1, 2, 3});
    run.manager.execute();
    run.manager.execute();
    QTRY_COMPARE(run.receiver.values, Ints({0, 1, 2, 3}));
    QVERIFY(!run.unit->seen(&TestUnit::overlapped));
}

void tst_SLUnitProcessManager::valuesAppendedWhileRunning()
{
    OneUnit run;
    run.unit->setGate(false);
    run.unit->append({0});
    run.manager.execute();
    run.unit->waitEntered(1);
    run.unit->append({1, 2});
    run.unit->setGate(true);
    QTRY_COMPARE(run.receiver.values, Ints({0, 1, 2}));
}

void tst_SLUnitProcessManager::valuesAppendedAfterTheQueueRanDry()
{
    OneUnit run;
    run.manager.execute();
    for (int i = 0; i < 3; ++i) {
        run.unit->append({i});
        QTRY_COMPARE(run.receiver.values.size(), i + 1);
    }
    QCOMPARE(run.receiver.values, Ints({0, 1, 2}));
}

void tst_SLUnitProcessManager::clearedTargetDeliversNothing()
{
    OneUnit run;
    run.unit->append({0, 1});
    run.manager.execute();
    run.unit->waitLeft(2);
    run.unit->outputForKey(QStringLiteral("Out"))->setTarget(nullptr);
    run.unit->append({2, 3, 4});
    QTRY_COMPARE(run.unit->seen(&TestUnit::left).size(), std::size_t(5));
    QVERIFY(run.receiver.values.isEmpty());
}

void tst_SLUnitProcessManager::deadTargetDeliversNothing()
{
    auto receiver = std::make_unique<Receiver>();
    const auto unit = std::make_shared<TestUnit>();
    SLUnitProcessManager manager;
    manager.addUnitProcess(unit);
    unit->deliverTo(receiver.get());
    unit->append({0, 1, 2, 3});
    manager.execute();
    unit->waitLeft(2);
    receiver.reset();
    QTRY_COMPARE(unit->seen(&TestUnit::left).size(), std::size_t(4));
    QCOMPARE(unit->outputForKey(QStringLiteral("Out"))->target(), nullptr);
}

void tst_SLUnitProcessManager::missingSelectorDeliversNothing()
{
    Receiver receiver;
    const auto unit = std::make_shared<TestUnit>();
    SLUnitProcessManager manager;
    manager.addUnitProcess(unit);
    unit->outputForKey(QStringLiteral("Out"))->setTarget(&receiver);
    unit->append({0, 1, 2});
    manager.execute();
    QTRY_COMPARE(unit->seen(&TestUnit::left).size(), std::size_t(3));
    QVERIFY(receiver.values.isEmpty());
}

void tst_SLUnitProcessManager::selectorIsNotCalledOnAnotherClass()
{
    QObject other;
    SLOutlet outlet;
    outlet.setSelector(&Receiver::receive);
    outlet.setTarget(&other);
    outlet.deliver(1);
    Receiver receiver;
    outlet.setTarget(&receiver);
    outlet.deliver(2);
    QCOMPARE(receiver.values, Ints({2}));
}

void tst_SLUnitProcessManager::unknownOutputIsIgnored()
{
    TestUnit unit;
    QCOMPARE(unit.outputForKey(QStringLiteral("In")), nullptr);
    QVERIFY(!unit.inputValueForKey(QStringLiteral("Out")).isValid());
    unit.setOutputValue(1, QStringLiteral("Nowhere"));
}

void tst_SLUnitProcessManager::inputIsInvalidOutsideProcess()
{
    const auto unit = std::make_shared<TestUnit>();
    {
        SLUnitProcessManager manager;
        manager.addUnitProcess(unit);
        unit->append({7});
        manager.execute();
        QTRY_COMPARE(unit->seen(&TestUnit::left), std::vector<int>{7});
    }
    QVERIFY(!unit->inputValueForKey(QStringLiteral("In")).isValid());
}

void tst_SLUnitProcessManager::unitOfSeveralInputsWaitsForEach()
{
    const auto unit = std::make_shared<TestUnit>();
    const auto second = SLOutlet::outlet();
    SLPipeline secondPipeline;
    secondPipeline.setOutput(second);
    unit->setInputs({unit->inputs().front(), second});
    SLUnitProcessManager manager;
    manager.addUnitProcess(unit);
    unit->append({0, 1});
    manager.execute();
    QTest::qSleep(shortWhile);
    QVERIFY(unit->seen(&TestUnit::entered).empty());
    secondPipeline.setValue(10);
    QTRY_COMPARE(unit->seen(&TestUnit::left), std::vector<int>{0});
    QVERIFY(secondPipeline.isEmpty());
    QVERIFY(!unit->pipeline.isEmpty());
    manager.stop();
}

void tst_SLUnitProcessManager::unitWithoutManagerDeliversAtOnce()
{
    Receiver receiver;
    TestUnit unit;
    unit.deliverTo(&receiver);
    unit.setOutputValue(5, QStringLiteral("Out"));
    QCOMPARE(receiver.values, Ints({5}));
}

void tst_SLUnitProcessManager::unitsRunBesideEachOther()
{
    Receiver receivers[3];
    std::shared_ptr<TestUnit> units[3];
    SLUnitProcessManager manager;
    for (int i = 0; i < 3; ++i) {
        units[i] = std::make_shared<TestUnit>();
        units[i]->deliverTo(&receivers[i]);
        units[i]->setGate(false);
        units[i]->append({i, i + 10});
        manager.addUnitProcess(units[i]);
    }
    manager.execute();
    for (const auto &unit : units)
        unit->waitEntered(1); // all three stand in process() at once
    for (const auto &unit : units)
        unit->setGate(true);
    for (int i = 0; i < 3; ++i)
        QTRY_COMPARE(receivers[i].values, Ints({i, i + 10}));
    std::set<std::thread::id> threads;
    for (const auto &unit : units)
        threads.insert(unit->seen(&TestUnit::threads).front());
    QCOMPARE(threads.size(), std::size_t(3));
}

void tst_SLUnitProcessManager::stopNeverExecutedDoesNothing()
{
    OneUnit run;
    run.unit->append({0, 1});
    run.manager.stop();
    run.manager.execute();
    QTRY_COMPARE(run.receiver.values, Ints({0, 1}));
}

void tst_SLUnitProcessManager::stopWithoutUnitsDoesNothing()
{
    SLUnitProcessManager manager;
    manager.stop();
    manager.execute();
    manager.stop();
}

void tst_SLUnitProcessManager::stopDropsQueuedDeliveries()
{
    OneUnit run;
    run.unit->append({0, 1});
    run.manager.execute();
    run.unit->waitLeft(2);
    run.manager.stop();
    QCoreApplication::processEvents();
    QVERIFY(run.receiver.values.isEmpty());
}

void tst_SLUnitProcessManager::stopDiscardsQueuedValues()
{
    OneUnit run;
    run.unit->setGate(false);
    run.unit->append({0, 1, 2});
    run.manager.execute();
    run.unit->waitEntered(1);
    run.manager.stop();
    QVERIFY(run.unit->pipeline.isEmpty());
    run.unit->setGate(true);
    run.unit->append({9});
    run.manager.execute();
    QTRY_COMPARE(run.receiver.values, Ints({9}));
    QCOMPARE(run.unit->seen(&TestUnit::entered), std::vector<int>({0, 9}));
}

void tst_SLUnitProcessManager::valueAfterStopWaitsForExecute()
{
    OneUnit run;
    run.manager.execute();
    run.unit->append({0});
    QTRY_COMPARE(run.receiver.values, Ints({0})); // the worker is there, and waits
    run.manager.stop();
    run.unit->append({1});
    QTest::qSleep(shortWhile);
    QCOMPARE(run.unit->seen(&TestUnit::entered), numbers(1));
    run.manager.execute();
    QTRY_COMPARE(run.receiver.values, Ints({0, 1}));
}

void tst_SLUnitProcessManager::stopDoesNotWaitForProcess()
{
    const auto unit = std::make_shared<TestUnit>();
    SLUnitProcessManager manager;
    manager.addUnitProcess(unit);
    unit->setGate(false);
    unit->append({0});
    manager.execute();
    unit->waitEntered(1);
    manager.stop(); // would never return if it waited: nobody opens the gate
    QVERIFY(unit->seen(&TestUnit::inside));
    QCOMPARE(unit->seen(&TestUnit::interrupts), 0);
}

void tst_SLUnitProcessManager::stopTellsTheRunningProcess()
{
    const auto unit = std::make_shared<TestUnit>();
    SLUnitProcessManager manager;
    manager.addUnitProcess(unit);
    unit->setGate(false);
    unit->append({0});
    manager.execute();
    unit->waitEntered(1);
    manager.stop();
    manager.execute();
    unit->append({1});
    unit->setGate(true);
    unit->waitLeft(2);
    QCOMPARE(unit->seen(&TestUnit::stoppedAtGate), std::vector<bool>({true, false}));
}

void tst_SLUnitProcessManager::workerWaitsWithTheThirdValue()
{
    OneUnit run;
    run.unit->append({0, 1, 2, 3});
    run.manager.execute();
    run.unit->waitEntered(3); // without a turn of the event loop
    QTest::qSleep(shortWhile);
    QCOMPARE(run.unit->seen(&TestUnit::left), numbers(2));
    QCOMPARE(run.unit->seen(&TestUnit::entered), numbers(3));
    QTRY_COMPARE(run.receiver.values, Ints({0, 1, 2, 3}));
}

void tst_SLUnitProcessManager::stopReleasesTheWaitingWorker()
{
    OneUnit run;
    run.unit->append({0, 1, 2, 3});
    run.manager.execute();
    run.unit->waitEntered(3);
    run.manager.stop();
    run.unit->waitLeft(3);
    run.unit->append({9});
    run.manager.execute();
    QTRY_COMPARE(run.receiver.values, Ints({9}));
    QCOMPARE(run.unit->seen(&TestUnit::entered), std::vector<int>({0, 1, 2, 9}));
}

void tst_SLUnitProcessManager::executeAgainAfterStop()
{
    OneUnit run;
    for (int round = 0; round < 5; ++round) {
        run.unit->append({round, round + 100});
        run.manager.execute();
        QTRY_COMPARE(run.receiver.values, Ints({round, round + 100}));
        run.receiver.values.clear();
        run.manager.stop();
    }
}

void tst_SLUnitProcessManager::executeNeverOverlapsAnOldProcess()
{
    OneUnit run;
    run.unit->setGate(false);
    run.unit->append({0});
    run.manager.execute();
    run.unit->waitEntered(1);
    run.manager.stop();
    run.unit->append({1, 2});
    run.manager.execute();
    QTest::qSleep(shortWhile);
    QCOMPARE(run.unit->seen(&TestUnit::entered), std::vector<int>{0});
    run.unit->setGate(true);
    QTRY_COMPARE(run.receiver.values, Ints({1, 2})); // 0 came after the stop and is dropped
    QVERIFY(!run.unit->seen(&TestUnit::overlapped));
}

void tst_SLUnitProcessManager::stopWithinADelivery()
{
    OneUnit run;
    run.receiver.whenReceived = [&] { run.manager.stop(); };
    run.unit->append({0, 1, 2, 3});
    run.manager.execute();
    QTRY_COMPARE(run.receiver.values, Ints({0}));
    run.unit->append({9});
    run.manager.execute();
    QTRY_COMPARE(run.receiver.values, Ints({0, 9}));
}

void tst_SLUnitProcessManager::managerDestroyedWithinADelivery()
{
    Receiver receiver;
    auto unit = std::make_shared<TestUnit>();
    auto manager = std::make_unique<SLUnitProcessManager>();
    manager->addUnitProcess(unit);
    unit->deliverTo(&receiver);
    receiver.whenReceived = [&] {
        unit.reset();
        manager.reset();
    };
    unit->append({0, 1, 2, 3});
    manager->execute();
    QTRY_COMPARE(receiver.values, Ints({0}));
    QCoreApplication::processEvents();
    QCOMPARE(receiver.values, Ints({0}));
}

void tst_SLUnitProcessManager::destructorInterruptsAndWaits()
{
    const auto unit = std::make_shared<TestUnit>();
    auto manager = std::make_unique<SLUnitProcessManager>();
    manager->addUnitProcess(unit);
    unit->setGate(false);
    unit->append({0, 1});
    manager->execute();
    unit->waitEntered(1);
    manager.reset();
    QCOMPARE(unit->seen(&TestUnit::left), std::vector<int>{0});
    QCOMPARE(unit->seen(&TestUnit::interrupts), 1);
    QCOMPARE(unit.use_count(), 1L);
}

FILMWRIGHT_TEST(tst_SLUnitProcessManager, QCoreApplication)
#include "tst_slunitprocessmanager.moc"
