// SPDX-License-Identifier: MIT
#pragma once

#include <QLabel>
#include <QWidget>

namespace filmwright {

class MLVProjectController;
class ProgressIndicator;

/// The cell of a project's state: its text over a bar, and a mark when its last run failed.
class ProgressTableCellView : public QWidget
{
    Q_OBJECT

public:
    explicit ProgressTableCellView(QWidget *parent = nullptr);

    QLabel *textField() const { return m_textField; }
    ProgressIndicator *progressIndicator() const { return m_progressIndicator; }

    /// The project shown; not owned.
    MLVProjectController *controller() const { return m_controller; }
    void setController(MLVProjectController *controller) { m_controller = controller; }

    /// What went wrong, as plain text; a null string takes the mark away.
    void setFailure(const QString &failure);
    QString failure() const { return m_failure; }

private:
    QLabel *m_textField;
    QLabel *m_failureMark;
    ProgressIndicator *m_progressIndicator;
    MLVProjectController *m_controller = nullptr;
    QString m_failure;
};

} // namespace filmwright
