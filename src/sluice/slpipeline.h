// SPDX-License-Identifier: MIT
#pragma once

#include "sluice/sloutlet.h"

#include <deque>
#include <memory>
#include <mutex>
#include <vector>

/// A typed first-in-first-out queue of values, alone or as the feed of the input outlets of one or
/// more units. With several, a value goes to the unit that is free first, and to no other.
///
/// setValue(), value() and isEmpty() are safe for one producer and any number of consumers in
/// different threads. The rest belongs to the main thread and doesn't change while a connected unit
/// is executed; with an output, setValue() belongs to the main thread too.
class SLUICE_EXPORT SLPipeline
{
public:
    /// A new empty pipeline.
    static std::unique_ptr<SLPipeline> pipeline();

    SLPipeline();
    ~SLPipeline();
    SLPipeline(const SLPipeline &) = delete;
    SLPipeline &operator=(const SLPipeline &) = delete;

    /// The type of every queued value. It describes; values are not converted to it.
    QMetaType dataType() const;
    void setDataType(QMetaType dataType);

    SLOutletMode mode() const;
    void setMode(SLOutletMode mode);

    /// The input outlet that the queue feeds, the first of several; not owned.
    std::shared_ptr<SLOutlet> output() const;
    /// In place of all that it has fed so far. nullptr disconnects.
    void setOutput(const std::shared_ptr<SLOutlet> &output);
    /// Feeds this input too. The units of all outputs belong to one manager.
    void addOutput(const std::shared_ptr<SLOutlet> &output);

    /// Appends a valid value; never replaces a queued one.
    void setValue(const QVariant &value);

    /// Takes the oldest value out; an invalid QVariant when the queue is empty.
    QVariant value();

    bool isEmpty() const;

private:
    QMetaType m_dataType;
    SLOutletMode m_mode = SLOutletModeInput;
    std::vector<std::weak_ptr<SLOutlet>> m_outputs;

    mutable std::mutex m_mutex;
    std::deque<QVariant> m_values; // guarded by m_mutex
};
