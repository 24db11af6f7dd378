// SPDX-License-Identifier: MIT
#pragma once

#include "sluice/slunithost.h"
#include "sluice/slunitprocess.h"

#include <QObject>

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>

/// What the runners of one manager share. An internal of the library.
///
/// Every stop ends a run. A process() call belongs to the run in which it took its inputs; what it
/// delivers after that run's end is dropped, and no call of a later run starts before it has
/// returned, in whichever unit: what it leaves unfinished could be taken for finished there.
struct SLRunState
{
    // Guards what follows, the runners' deliveries and the taking of input values: units that share
    // a pipeline look and take in one step. Taken before a pipeline's own lock.
    std::mutex mutex;
    std::condition_variable changed;
    bool running = false;
    std::uint64_t run = 0;
    int processing = 0; // process() calls of this run
    int overdue = 0;    // process() calls of runs that have ended
};

/// Runs one unit for a manager: its worker thread, and the way of its outputs to the main thread.
/// An internal of the library. It lives on the main thread.
class SLUnitRunner : public QObject, public SLUnitHost
{
    Q_OBJECT

public:
    struct Delivery
    {
        const SLOutlet *output;
        QVariant value;
    };
    using Deliveries = std::deque<Delivery>;

    SLUnitRunner(std::shared_ptr<SLUnitProcess> unit, std::shared_ptr<SLRunState> state);

    /// Waits for a running process() to return. The state doesn't run any more.
    ~SLUnitRunner() override;

    // On the main thread.
    void startWorker();
    void interrupt();
    void inputArrived() override;
    /// Discards what waits at the inputs and returns what waits to be delivered. Under the lock.
    Deliveries discard();

    // On the worker thread, inside process().
    void deliverLater(const SLOutlet *output, const QVariant &value) override;
    bool isStopped() const override;

private:
    Q_SLOT void deliverOldest();

    void work();
    bool takeInputs();
    bool inputsWait() const;
    void processReturned();

    const std::shared_ptr<SLUnitProcess> m_unit;
    const std::shared_ptr<SLRunState> m_state;
    std::thread m_worker;

    // Guarded by the state's mutex.
    bool m_ending = false;
    std::uint64_t m_processedRun = 0; // the run of the current process() call
    Deliveries m_deliveries;
};
