// SPDX-License-Identifier: MIT
#pragma once

#include "sluice/sloutlet.h"

#include <memory>
#include <vector>

class SLUnitHost;

/// Where a unit's process() runs.
enum SLThreadMode {
    /// In one worker thread of the unit's own, never on the main thread.
    SLThreadModeWorker = 3,
};

/// Base class of a processing unit: it reads its inputs, does its work and sets its outputs, once
/// for every value that arrives.
///
/// A unit is made, wired and destroyed on the main thread. Inputs, outputs and thread mode don't
/// change while it is executed.
class SLUICE_EXPORT SLUnitProcess
{
public:
    using Outlets = std::vector<std::shared_ptr<SLOutlet>>;

    SLUnitProcess();
    virtual ~SLUnitProcess();
    SLUnitProcess(const SLUnitProcess &) = delete;
    SLUnitProcess &operator=(const SLUnitProcess &) = delete;

    const Outlets &inputs() const;
    void setInputs(const Outlets &inputs);

    const Outlets &outputs() const;
    void setOutputs(const Outlets &outputs);

    SLThreadMode threadMode() const;
    void setThreadMode(SLThreadMode threadMode);

    /// The output of that name, or nullptr; the unit keeps it.
    SLOutlet *outputForKey(const QString &name) const;

    /// The value being processed at the input of that name, until process() returns; invalid
    /// outside process() or without such an input. On the thread that runs process().
    QVariant inputValueForKey(const QString &name) const;

    /// Delivers `value` to the target of the output of that name, on the main thread and after
    /// what was set before. Called from process(), on its thread. Returns at once unless two
    /// earlier values are undelivered; then it waits for the main thread to take one. After a
    /// stop, what the interrupted process() still sets is dropped. A unit that no manager runs
    /// delivers immediately.
    void setOutputValue(const QVariant &value, const QString &forKey);

    /// One piece of work. The result tells whether it succeeded; nothing depends on it.
    virtual bool process() = 0;

    /// Makes a process() that blocks return soon. Called on the main thread, while process() may
    /// be running, and only after the manager was stopped (its destructor does so by itself).
    virtual void interrupt();

protected:
    /// Whether the manager was stopped since the running process() was called. On its thread.
    bool isStopped() const;

private:
    friend class SLUnitRunner;

    Outlets m_inputs;
    Outlets m_outputs;
    SLThreadMode m_threadMode = SLThreadModeWorker;
    SLUnitHost *m_host = nullptr; ///< sets and clears itself here
};
