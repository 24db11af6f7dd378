// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>
#include <QSet>

#include <deque>
#include <functional>

namespace filmwright {

/// Lets a few reports run at a time: a folder of thousands of recordings would otherwise start as
/// many processes at once. Main thread only.
class ReportQueue : public QObject
{
    Q_OBJECT

public:
    /// The one that all tasks share: twice as many reports as there are cores, since a report waits
    /// for the disk about as long as it computes.
    static ReportQueue &instance();

    explicit ReportQueue(qsizetype mostAtOnce)
        : m_mostAtOnce(mostAtOnce)
    {
    }

    /// Calls `start` for the task: now when few enough run, else from the event loop when its turn
    /// comes, first come, first served. It counts as running until leave().
    void enter(const QObject *task, std::function<void()> start);

    /// Ends the task's turn or its waiting for it; does nothing for a task that has neither.
    void leave(const QObject *task);

    bool isWaiting(const QObject *task) const;

private:
    void startNext();

    struct Waiting
    {
        const QObject *task;
        std::function<void()> start;
    };

    const qsizetype m_mostAtOnce;
    QSet<const QObject *> m_running;
    std::deque<Waiting> m_waiting;
};

} // namespace filmwright
