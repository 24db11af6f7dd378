// SPDX-License-Identifier: MIT
#pragma once

#include "app/alertpresenter.h"

class QWidget;

namespace filmwright {

/// Alerts as message boxes in front of a window.
class MessageBoxPresenter : public AlertPresenter
{
public:
    /// The window that the boxes belong to; not owned, may be null.
    void setWindow(QWidget *window) { m_window = window; }

    /// The escape key never stands for the alternate button, the one that discards something.
    int runAlert(const QString &title, const QString &message, const QString &defaultButton,
                 const QString &alternateButton, const QString &otherButton) override;

private:
    QWidget *m_window = nullptr;
};

} // namespace filmwright
