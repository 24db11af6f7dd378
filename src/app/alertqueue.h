// SPDX-License-Identifier: MIT
#pragma once

#include "app/alertpresenter.h"

#include <QObject>

#include <deque>
#include <functional>

namespace filmwright {

/// One alert at a time: what arrives while a person reads one waits for its answer, as if the alert
/// had stopped the application. Main thread only.
class AlertQueue : public QObject
{
public:
    /// The presenter outlives it.
    explicit AlertQueue(AlertPresenter &presenter)
        : m_presenter(presenter)
    {
    }

    /// Shows an alert at once and answers as the presenter does.
    int runAlert(const QString &title, const QString &message, const QString &defaultButton,
                 const QString &alternateButton = {}, const QString &otherButton = {});

    /// Calls now, or in the order of these calls once no alert is open any more.
    void whenNoneIsOpen(std::function<void()> call);

private:
    void runNext();

    AlertPresenter &m_presenter;
    int m_open = 0;
    std::deque<std::function<void()>> m_waiting;
};

} // namespace filmwright
