// SPDX-License-Identifier: MIT
#include "mlvdump/reportqueue.h"

#include <QThread>

#include <algorithm>

namespace filmwright {

ReportQueue &ReportQueue::instance()
{
    static ReportQueue queue(qsizetype{2} * std::max(1, QThread::idealThreadCount()));
    return queue;
}

void ReportQueue::enter(const QObject *task, std::function<void()> start)
{
    m_waiting.push_back({task, std::move(start)});
    if (m_waiting.size() == 1)
        startNext();
}

void ReportQueue::leave(const QObject *task)
{
    std::erase_if(m_waiting, [task](const Waiting &waiting) { return waiting.task == task; });
    if (m_running.remove(task) && !m_waiting.empty())
        QMetaObject::invokeMethod(this, &ReportQueue::startNext, Qt::QueuedConnection);
}

bool ReportQueue::isWaiting(const QObject *task) const
{
    return std::any_of(m_waiting.cbegin(), m_waiting.cend(),
                       [task](const Waiting &waiting) { return waiting.task == task; });
}

void ReportQueue::startNext()
{
    if (m_waiting.empty() || m_running.size() >= m_mostAtOnce)
        return;
    const Waiting next = std::move(m_waiting.front());
    m_waiting.pop_front();
    m_running << next.task;
    next.start();
}

} // namespace filmwright

#include "moc_reportqueue.cpp"
