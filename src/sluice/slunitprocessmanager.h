// SPDX-License-Identifier: MIT
#pragma once

#include "sluice/slunitprocess.h"

#include <memory>
#include <vector>

class SLUnitRunner;
struct SLRunState;

/// Runs unit processes: calls a unit's process() once for every value that arrives at its input,
/// oldest first and one after the other, each unit in its thread mode and beside the others. A
/// unit with several inputs is called when a value waits at each. Units that are fed by one
/// pipeline share its values: whichever is free takes the next, so that none idles while one waits.
///
/// All of it is used on the main thread, which must run an event loop for outputs to be delivered.
class SLUICE_EXPORT SLUnitProcessManager
{
public:
    SLUnitProcessManager();

    /// Stops, interrupts every unit and waits until no process() runs any more.
    ~SLUnitProcessManager();
    SLUnitProcessManager(const SLUnitProcessManager &) = delete;
    SLUnitProcessManager &operator=(const SLUnitProcessManager &) = delete;

    /// Keeps the unit and runs it from the next execute() on. A unit belongs to one manager.
    void addUnitProcess(std::shared_ptr<SLUnitProcess> unit);

    /// Processes the values queued so far and those that are queued until stop(). Returns at once.
    void execute();

    /// No further process() call starts, queued values are discarded and nothing is delivered any
    /// more, deliveries under way included. It doesn't wait for a running process(); a later
    /// execute() lets all of them return before it calls any unit, without blocking its caller.
    /// Does nothing when nothing is executed.
    void stop();

private:
    std::shared_ptr<SLRunState> m_state;
    std::vector<std::unique_ptr<SLUnitRunner>> m_runners;
};
