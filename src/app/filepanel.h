// SPDX-License-Identifier: MIT
#pragma once

#include "app/openpanel.h"

class QWidget;

namespace filmwright {

/// Choosers in front of a window, starting in the folder of the last choice.
class FilePanel : public OpenPanel
{
public:
    /// The window that the choosers belong to; not owned, may be null.
    void setWindow(QWidget *window) { m_window = window; }

    QStringList recordingsAndFolders() override;
    QString recording(const QString &title) override;
    QString folder(const QString &title) override;

private:
    QWidget *m_window = nullptr;
};

} // namespace filmwright
