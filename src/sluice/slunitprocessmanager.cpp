// SPDX-License-Identifier: MIT
#include "sluice/slunitprocessmanager.h"

#include "sluice/slunitrunner.h"

#include <utility>

SLUnitProcessManager::SLUnitProcessManager() = default;

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
    m_runners.push_back(std::make_unique<SLUnitRunner>(std::move(unit)));
}

void SLUnitProcessManager::execute()
{
    for (const auto &runner : m_runners)
        runner->execute();
}

void SLUnitProcessManager::stop()
{
    for (const auto &runner : m_runners)
        runner->stop();
}
