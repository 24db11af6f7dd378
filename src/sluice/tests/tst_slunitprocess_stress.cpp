// SPDX-License-Identifier: MIT
// Starts, stops and destroys running managers at arbitrary moments. Run under the thread sanitizer
// it looks for races, elsewhere for hangs and for values that come after a stop.
#include "sluice/slunitprocessmanager.h"
#include "testunit.h"

#include "support/testprogram.h"

#include <QTest>

#include <chrono>
#include <random>

class tst_SLUnitProcessStress : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void stopAndExecuteAtAnyMoment();
    void destroyAtAnyMoment();
};

namespace {

std::mt19937 generator(20240611); // fixed, so that a failing order of actions comes again

int random(int bound)
{
    return std::uniform_int_distribution(0, bound - 1)(generator);
}

// Lets some time pass on the main thread, with or without its events.
void pass()
{
    switch (random(4)) {
    case 0:
        break;
    case 1:
        std::this_thread::yield();
        break;
    case 2:
        std::this_thread::sleep_for(std::chrono::microseconds(random(200)));
        break;
    default:
        QCoreApplication::processEvents();
    }
}

} // namespace

void tst_SLUnitProcessStress::stopAndExecuteAtAnyMoment()
{
    Receiver receiver;
    SLUnitProcessManager manager;
    std::vector<std::shared_ptr<TestUnit>> units;
    for (int i = 0; i < 3; ++i) {
        units.push_back(std::make_shared<TestUnit>());
        units.back()->deliverTo(&receiver);
        manager.addUnitProcess(units.back());
    }
    for (int round = 0; round < 1500; ++round) {
        receiver.values.clear();
        for (const auto &unit : units)
            unit->append(QList<int>(random(5), round));
        manager.execute();
        for (int i = random(6); i > 0; --i)
            pass();
        if (random(3) == 0)
            units[static_cast<std::size_t>(random(3))]->append({round});
        pass();
        manager.stop();
        for (const int value : std::as_const(receiver.values))
            QCOMPARE(value, round); // nothing of an earlier run
        const auto received = receiver.values.size();
        QCoreApplication::processEvents();
        QCOMPARE(receiver.values.size(), received);
    }
    for (const auto &unit : units)
        QVERIFY(!unit->seen(&TestUnit::overlapped));
}

void tst_SLUnitProcessStress::destroyAtAnyMoment()
{
    for (int round = 0; round < 400; ++round) {
        Receiver receiver;
        auto manager = std::make_unique<SLUnitProcessManager>();
        std::vector<std::shared_ptr<TestUnit>> units;
        for (int i = 0; i < 2; ++i) {
            units.push_back(std::make_shared<TestUnit>());
            units.back()->deliverTo(&receiver);
            manager->addUnitProcess(units.back());
            units.back()->setGate(random(2) == 0);
            units.back()->append({0, 1, 2, 3});
        }
        if (random(2) == 0)
            receiver.whenReceived = [&] { manager.reset(); };
        manager->execute();
        for (int i = random(6); i > 0 && manager; --i) {
            pass();
            if (manager && random(4) == 0) {
                manager->stop();
                for (const auto &unit : units)
                    unit->interrupt();
                manager->execute();
            }
        }
        manager.reset();
        const auto received = receiver.values.size();
        QCoreApplication::processEvents();
        QCOMPARE(receiver.values.size(), received);
        for (const auto &unit : units)
            QCOMPARE(unit.use_count(), 1L);
    }
}

FILMWRIGHT_TEST(tst_SLUnitProcessStress, QCoreApplication)
#include "tst_slunitprocess_stress.moc"
