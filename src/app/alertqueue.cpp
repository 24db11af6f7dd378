// SPDX-License-Identifier: MIT
#include "app/alertqueue.h"

#include <utility>

namespace filmwright {

int AlertQueue::runAlert(const QString &title, const QString &message, const QString &defaultButton,
                         const QString &alternateButton, const QString &otherButton)
{
    ++m_open;
    const int answer =
        m_presenter.runAlert(title, message, defaultButton, alternateButton, otherButton);
    --m_open;
    QMetaObject::invokeMethod(this, &AlertQueue::runNext, Qt::QueuedConnection);
    return answer;
}

void AlertQueue::runNext()
{
    if (m_open > 0 || m_waiting.empty())
        return;
    const std::function<void()> call = std::move(m_waiting.front());
    m_waiting.pop_front();
    call();
    QMetaObject::invokeMethod(this, &AlertQueue::runNext, Qt::QueuedConnection);
}

void AlertQueue::whenNoneIsOpen(std::function<void()> call)
{
    if (m_open == 0)
        call();
    else
        m_waiting.push_back(std::move(call));
}

} // namespace filmwright
