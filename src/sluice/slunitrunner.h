// SPDX-License-Identifier: MIT
#pragma once

#include "sluice/slunitprocess.h"

#include <QObject>

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>

/// Runs one unit for a manager: its worker thread, and the way of its outputs to the main thread.
/// An internal of the library.
///
/// It lives on the main thread. Every stop ends a run; a process() call belongs to the run in
/// which it took its inputs, and what it delivers after that run's end is dropped.
class SLUnitRunner : public QObject
{
    Q_OBJECT

public:
    explicit SLUnitRunner(std::shared_ptr<SLUnitProcess> unit);

    /// Waits for a running process() to return.
    ~SLUnitRunner() override;

    // On the main thread.
    void execute();
    void stop();
    void interrupt();
    void inputArrived();

    // On the worker thread, inside process().
    void deliverLater(const SLOutlet *output, const QVariant &value);
    bool isStopped() const;

private:
    struct Delivery
    {
        const SLOutlet *output;
        QVariant value;
    };

    Q_SLOT void deliverOldest();

    void work();
    bool takeInputs();
    bool inputsWait() const;
    void discardInputs();

    const std::shared_ptr<SLUnitProcess> m_unit;
    std::thread m_worker; // started by the first execute()

    // Guards what follows, and the taking of input values. Taken before a pipeline's own lock.
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_running = false;
    bool m_ending = false;
    std::uint64_t m_run = 0;
    std::uint64_t m_processedRun = 0; // the run of the current process() call
    std::deque<Delivery> m_deliveries;
};
