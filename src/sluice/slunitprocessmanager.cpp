// SPDX-License-Identifier: MIT
#include "sluice/slunitprocessmanager.h"

#include "sluice/slunitrunner.h"

#include <utility>

SLUnitProcessManager::SLUnitProcessManager()
    : m_state(std::make_shared<SLRunState>())
{
}

SLUnitProcessManager::~SLUnitProcessManager()
{
    stop();
    // All of them first, so that the waits for them run side by side.
    for (const auto &runner : m_runners)
        runner->interrupt();
    m_runners.clear();
}

void SLUnitProcessManager::addUnitProcess(std::shared_ptr<SLUnitProcess> unit)
{
    m_runners.push_back(std::make_unique<SLUnitRunner>(std::move(unit), m_state));
}

void SLUnitProcessManager::execute()
{
    {
        const std::lock_guard lock(m_state->mutex);
        m_state->running = true;
    }
    m_state->changed.notify_all();
    for (const auto &runner : m_runners)
        runner->startWorker();
}

void SLUnitProcessManager::stop()
{
    std::vector<SLUnitRunner::Deliveries> dropped; // destroyed without the lock
    {
        const std::lock_guard lock(m_state->mutex);
        if (!m_state->running)
            return;
        m_state->running = false;
        ++m_state->run;
        m_state->overdue += std::exchange(m_state->processing, 0);
        // Left over, values would come as extra ones of the next run.
        for (const auto &runner : m_runners)
            dropped.push_back(runner->discard());
    }
    m_state->changed.notify_all();
}
