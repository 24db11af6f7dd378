// SPDX-License-Identifier: MIT
// Units that work off one pipeline.
#include "sluice/slunitprocessmanager.h"
#include "testunit.h"

#include "support/testprogram.h"

#include <QCoreApplication>
#include <QTest>

#include <algorithm>

class tst_SLSharedPipeline : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyValueIsProcessedOnce();
    void freeUnitTakesTheNextValue();
    void eachUnitHoldsAtMostTwoUndeliveredValues();
    void stopDiscardsWhatIsShared();
    void nextRunWaitsForTheOldProcessOfAnotherUnit();
    void executeDoesNotBlockForAnOldProcess();
};

namespace {

/// Units that share the pipeline of the first, in a manager.
class Units
{
public:
    explicit Units(int count)
    {
        for (int i = 0; i < count; ++i) {
            m_units.push_back(std::make_shared<TestUnit>());
            m_units.back()->deliverTo(&receiver);
            if (i > 0)
                m_units.front()->pipeline.addOutput(m_units.back()->inputs().front());
            manager.addUnitProcess(m_units.back());
        }
    }

    TestUnit &operator[](std::size_t index) { return *m_units[index]; }

    void setGates(bool open)
    {
        for (const auto &unit : m_units)
            unit->setGate(open);
    }

    void append(int count)
    {
        for (int value = 0; value < count; ++value)
            m_units.front()->pipeline.setValue(value);
    }

    std::vector<int> entered() const
    {
        std::vector<int> all;
        for (const auto &unit : m_units) {
            const auto values = unit->seen(&TestUnit::entered);
            all.insert(all.end(), values.begin(), values.end());
        }
        std::sort(all.begin(), all.end());
        return all;
    }

    Receiver receiver;

private:
    std::vector<std::shared_ptr<TestUnit>> m_units;

public:
    SLUnitProcessManager manager; // ends before the units
};

} // namespace

void tst_SLSharedPipeline::everyValueIsProcessedOnce()
{
    Units units(4);
    units.append(100);
    units.manager.execute();
    QTRY_COMPARE(units.receiver.values.size(), 100);
    QCOMPARE(units.entered(), numbers(100));
    auto received = units.receiver.values;
    std::sort(received.begin(), received.end());
    QCOMPARE(std::vector<int>(received.begin(), received.end()), numbers(100));
}

void tst_SLSharedPipeline::freeUnitTakesTheNextValue()
{
    Units units(2);
    units.setGates(false);
    units.append(10);
    units.manager.execute();
    units[0].waitEntered(1);
    units[1].waitEntered(1);
    units[1].setGate(true);
    // The busy one gets nothing more; no value waits for it.
    QTRY_COMPARE(units.receiver.values.size(), 9);
    QCOMPARE(units[0].seen(&TestUnit::entered).size(), std::size_t(1));
    units[0].setGate(true);
    QTRY_COMPARE(units.receiver.values.size(), 10);
}

void tst_SLSharedPipeline::eachUnitHoldsAtMostTwoUndeliveredValues()
{
    Units units(2);
    units.append(20);
    units.manager.execute();
    units[0].waitEntered(3); // two undelivered, with the third it waits
    units[1].waitEntered(3);
    QTest::qSleep(shortWhile);
    QCOMPARE(units.entered(), numbers(6));
    QTRY_COMPARE(units.receiver.values.size(), 20);
}

void tst_SLSharedPipeline::stopDiscardsWhatIsShared()
{
    Units units(2);
    units.setGates(false);
    units.append(10);
    units.manager.execute();
    units[0].waitEntered(1);
    units[1].waitEntered(1);
    units.manager.stop();
    units.setGates(true);
    units[0].waitLeft(1);
    units[1].waitLeft(1);
    units.append(1);
    units.manager.execute();
    QTRY_COMPARE(units.receiver.values.size(), 1);
    QCOMPARE(units.entered().size(), std::size_t(3));
}

void tst_SLSharedPipeline::nextRunWaitsForTheOldProcessOfAnotherUnit()
{
    Units units(2);
    units.setGates(false);
    units.append(1);
    units.manager.execute();
    QTRY_COMPARE(units.entered().size(), std::size_t(1));
    const std::size_t busy = units[0].seen(&TestUnit::entered).empty() ? 1 : 0;
    units.manager.stop();
    units[1 - busy].setGate(true);
    units.append(3);
    units.manager.execute();
    QTest::qSleep(shortWhile);
    QCOMPARE(units.entered().size(), std::size_t(1));
    units[busy].setGate(true);
    QTRY_COMPARE(units.receiver.values.size(), 3);
}

void tst_SLSharedPipeline::executeDoesNotBlockForAnOldProcess()
{
    Units units(2);
    units.setGates(false);
    units.append(2);
    units.manager.execute();
    units[0].waitEntered(1);
    units[1].waitEntered(1);
    units.manager.stop();
    units.append(1);
    units.manager.execute(); // would hang here
    units.manager.stop();
    units.setGates(true);
    units[0].waitLeft(1);
    units[1].waitLeft(1);
    units.append(1);
    units.manager.execute();
    QTRY_COMPARE(units.receiver.values.size(), 1);
}

FILMWRIGHT_TEST(tst_SLSharedPipeline, QCoreApplication)
#include "tst_slsharedpipeline.moc"
