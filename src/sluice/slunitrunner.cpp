// SPDX-License-Identifier: MIT
#include "sluice/slunitrunner.h"

#include "sluice/slpipeline.h"

#include <algorithm>
#include <utility>

namespace {

// A main thread that is slow to take frames must not let them pile up: two are enough to keep the
// worker busy while one is being shown.
constexpr std::size_t maxUndelivered = 2;

} // namespace

SLUnitRunner::SLUnitRunner(std::shared_ptr<SLUnitProcess> unit)
    : m_unit(std::move(unit))
{
    Q_ASSERT(!m_unit->m_runner);
    m_unit->m_runner = this;
}

SLUnitRunner::~SLUnitRunner()
{
    stop();
    {
        const std::lock_guard lock(m_mutex);
        m_ending = true;
    }
    m_changed.notify_all();
    if (m_worker.joinable())
        m_worker.join();
    m_unit->m_runner = nullptr;
}

void SLUnitRunner::execute()
{
    {
        const std::lock_guard lock(m_mutex);
        m_running = true;
    }
    m_changed.notify_all();
    if (!m_worker.joinable())
        m_worker = std::thread(&SLUnitRunner::work, this);
}

void SLUnitRunner::stop()
{
    std::deque<Delivery> dropped;
    {
        const std::lock_guard lock(m_mutex);
        if (!m_running)
            return;
        m_running = false;
        ++m_run;
        // Left over, they would come as extra values of the next run.
        dropped.swap(m_deliveries);
        discardInputs();
    }
    m_changed.notify_all();
}

void SLUnitRunner::interrupt()
{
    m_unit->interrupt();
}

void SLUnitRunner::inputArrived()
{
    // The lock keeps the wake-up from falling between the worker's look and its sleep.
    {
        const std::lock_guard lock(m_mutex);
    }
    m_changed.notify_all();
}

void SLUnitRunner::deliverLater(const SLOutlet *output, const QVariant &value)
{
    {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] {
            return m_processedRun != m_run || m_deliveries.size() < maxUndelivered;
        });
        if (m_processedRun != m_run)
            return;
        m_deliveries.push_back({output, value});
    }
    QMetaObject::invokeMethod(this, "deliverOldest", Qt::QueuedConnection);
}

bool SLUnitRunner::isStopped() const
{
    const std::lock_guard lock(m_mutex);
    return m_processedRun != m_run;
}

// Called once for every delivery, in the order of the main thread's events, so that its other
// events get their turn in between. A call whose delivery a stop has dropped may find none, or a
// later one.
void SLUnitRunner::deliverOldest()
{
    Delivery delivery;
    {
        const std::lock_guard lock(m_mutex);
        if (m_deliveries.empty())
            return;
        delivery = std::move(m_deliveries.front());
        m_deliveries.pop_front();
    }
    m_changed.notify_all();
    // The receiver may let go of the manager, and with it of this object: the unit, and so the
    // outlet, lives on until the call is over.
    const auto unit = m_unit;
    delivery.output->deliver(delivery.value);
}

void SLUnitRunner::work()
{
    while (takeInputs()) {
        m_unit->process();
        for (const auto &input : m_unit->inputs())
            input->setValue({});
    }
}

// Waits for a value at every input. false: the runner is ending.
bool SLUnitRunner::takeInputs()
{
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return m_ending || (m_running && inputsWait()); });
    if (m_ending)
        return false;
    for (const auto &input : m_unit->inputs())
        input->setValue(input->pipeline()->value());
    m_processedRun = m_run;
    return true;
}

bool SLUnitRunner::inputsWait() const
{
    const auto &inputs = m_unit->inputs();
    return !inputs.empty() && std::all_of(inputs.begin(), inputs.end(), [](const auto &input) {
        return input->pipeline() && !input->pipeline()->isEmpty();
    });
}

void SLUnitRunner::discardInputs()
{
    for (const auto &input : m_unit->inputs()) {
        while (input->pipeline() && input->pipeline()->value().isValid()) {
        }
    }
}
