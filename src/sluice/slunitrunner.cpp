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

SLUnitRunner::SLUnitRunner(std::shared_ptr<SLUnitProcess> unit, std::shared_ptr<SLRunState> state)
    : m_unit(std::move(unit))
    , m_state(std::move(state))
{
    Q_ASSERT(!m_unit->m_host);
    m_unit->m_host = this;
}

SLUnitRunner::~SLUnitRunner()
{
    {
        const std::lock_guard lock(m_state->mutex);
        Q_ASSERT(!m_state->running);
        m_ending = true;
    }
    m_state->changed.notify_all();
    if (m_worker.joinable())
        m_worker.join();
    m_unit->m_host = nullptr;
}

void SLUnitRunner::startWorker()
{
    if (!m_worker.joinable())
        m_worker = std::thread(&SLUnitRunner::work, this);
}

void SLUnitRunner::interrupt()
{
    m_unit->interrupt();
}

void SLUnitRunner::inputArrived()
{
    // The lock keeps the wake-up from falling between the worker's look and its sleep.
    {
        const std::lock_guard lock(m_state->mutex);
    }
    m_state->changed.notify_all();
}

SLUnitRunner::Deliveries SLUnitRunner::discard()
{
    for (const auto &input : m_unit->inputs()) {
        while (input->pipeline() && input->pipeline()->value().isValid()) {
        }
    }
    return std::exchange(m_deliveries, {});
}

void SLUnitRunner::deliverLater(const SLOutlet *output, const QVariant &value)
{
    {
        std::unique_lock lock(m_state->mutex);
        m_state->changed.wait(lock, [this] {
            return m_processedRun != m_state->run || m_deliveries.size() < maxUndelivered;
        });
        if (m_processedRun != m_state->run)
            return;
        m_deliveries.push_back({output, value});
    }
    QMetaObject::invokeMethod(this, "deliverOldest", Qt::QueuedConnection);
}

bool SLUnitRunner::isStopped() const
{
    const std::lock_guard lock(m_state->mutex);
    return m_processedRun != m_state->run;
}

// Called once for every delivery, in the order of the main thread's events, so that its other
// events get their turn in between. A call whose delivery a stop has dropped may find none, or a
// later one.
void SLUnitRunner::deliverOldest()
{
    Delivery delivery;
    {
        const std::lock_guard lock(m_state->mutex);
        if (m_deliveries.empty())
            return;
        delivery = std::move(m_deliveries.front());
        m_deliveries.pop_front();
    }
    m_state->changed.notify_all();
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
        processReturned();
    }
}

// Waits for a value at every input. false: the runner is ending.
bool SLUnitRunner::takeInputs()
{
    std::unique_lock lock(m_state->mutex);
    m_state->changed.wait(lock, [this] {
        return m_ending || (m_state->running && m_state->overdue == 0 && inputsWait());
    });
    if (m_ending)
        return false;
    for (const auto &input : m_unit->inputs())
        input->setValue(input->pipeline()->value());
    m_processedRun = m_state->run;
    ++m_state->processing;
    return true;
}

void SLUnitRunner::processReturned()
{
    {
        const std::lock_guard lock(m_state->mutex);
        --(m_processedRun == m_state->run ? m_state->processing : m_state->overdue);
    }
    m_state->changed.notify_all();
}

bool SLUnitRunner::inputsWait() const
{
    const auto &inputs = m_unit->inputs();
    return !inputs.empty() && std::all_of(inputs.begin(), inputs.end(), [](const auto &input) {
        return input->pipeline() && !input->pipeline()->isEmpty();
    });
}

#include "moc_slunitrunner.cpp"
