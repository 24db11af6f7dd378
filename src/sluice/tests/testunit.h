// SPDX-License-Identifier: MIT
#pragma once

#include "sluice/slpipeline.h"
#include "sluice/slunitprocess.h"

#include <QList>
#include <QObject>
#include <QThread>

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <numeric>
#include <thread>
#include <utility>
#include <vector>

/// Milliseconds in which a worker that didn't wait would go on; nothing tells that it waits.
constexpr int shortWhile = 20;

/// Keeps what an outlet delivers.
class Receiver : public QObject
{
    Q_OBJECT

public:
    void receive(int value)
    {
        values.append(value);
        threads.append(QThread::currentThread());
        if (whenReceived)
            whenReceived();
    }

    QList<int> values;
    QList<QThread *> threads;
    std::function<void()> whenReceived;
};

/// Hands each number from "In" to "Out", and writes down what happens. A closed gate holds
/// process() between its entry and its output until the gate is opened, or the unit stopped and
/// interrupted.
class TestUnit : public SLUnitProcess
{
public:
    TestUnit()
    {
        const auto in = SLOutlet::outlet();
        in->setName(QStringLiteral("In"));
        in->setMode(SLOutletModeInput);
        in->setDataType(QMetaType::fromType<int>());
        setInputs({in});
        const auto out = SLOutlet::outlet();
        out->setName(QStringLiteral("Out"));
        out->setMode(SLOutletModeOutput);
        out->setDataType(QMetaType::fromType<int>());
        setOutputs({out});
        pipeline.setOutput(in);
        setThreadMode(SLThreadModeWorker);
    }

    void deliverTo(Receiver *receiver)
    {
        SLOutlet *out = outputForKey(QStringLiteral("Out"));
        out->setTarget(receiver);
        out->setSelector(&Receiver::receive);
    }

    void append(const QList<int> &values)
    {
        for (const int value : values)
            pipeline.setValue(value);
    }

    bool process() override
    {
        {
            std::unique_lock lock(m_mutex);
            overlapped = overlapped || inside;
            inside = true;
            entered.push_back(inputValueForKey(QStringLiteral("In")).toInt());
            threads.push_back(std::this_thread::get_id());
            m_changed.notify_all();
            m_changed.wait(lock, [this] { return m_open || (m_interrupted && isStopped()); });
            m_interrupted = false;
            stoppedAtGate.push_back(isStopped());
        }
        // Read again, as a callback from within process() would.
        setOutputValue(inputValueForKey(QStringLiteral("In")), QStringLiteral("Out"));
        const std::lock_guard lock(m_mutex);
        inside = false;
        left.push_back(inputValueForKey(QStringLiteral("In")).toInt());
        m_changed.notify_all();
        return true;
    }

    void interrupt() override
    {
        const std::lock_guard lock(m_mutex);
        ++interrupts;
        m_interrupted = true;
        m_changed.notify_all();
    }

    void setGate(bool open)
    {
        const std::lock_guard lock(m_mutex);
        m_open = open;
        m_changed.notify_all();
    }

    /// Blocks the calling thread, and so the deliveries, until process() has been entered so often.
    void waitEntered(std::size_t count)
    {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [&] { return entered.size() >= count; });
    }

    /// The same for the end of process().
    void waitLeft(std::size_t count)
    {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [&] { return left.size() >= count; });
    }

    /// A copy of one of the lists below, taken under the lock.
    template <typename T>
    T seen(T TestUnit::*member)
    {
        const std::lock_guard lock(m_mutex);
        return this->*member;
    }

    SLPipeline pipeline;
    std::vector<int> entered;
    std::vector<int> left;
    std::vector<std::thread::id> threads;
    std::vector<bool> stoppedAtGate;
    bool inside = false;
    bool overlapped = false;
    int interrupts = 0;

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_open = true;
    bool m_interrupted = false;
};

/// 0 to count - 1.
inline std::vector<int> numbers(int count)
{
    std::vector<int> result(static_cast<std::size_t>(count));
    std::iota(result.begin(), result.end(), 0);
    return result;
}
