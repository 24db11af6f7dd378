// SPDX-License-Identifier: MIT
#pragma once

#include <QToolButton>
#include <QWidget>

namespace filmwright {

class MLVProjectController;

/// The cell with the button that shows a recording in the file browser.
class ShowInFinderTableCellView : public QWidget
{
    Q_OBJECT

public:
    explicit ShowInFinderTableCellView(QWidget *parent = nullptr);

    QToolButton *openButton() const { return m_openButton; }

    /// The project shown; not owned.
    MLVProjectController *controller() const { return m_controller; }
    void setController(MLVProjectController *controller) { m_controller = controller; }

    /// Selects the recording in the file browser; the movie is beside it.
    void openFile();

Q_SIGNALS:
    void notShown(const QString &error);

private:
    QToolButton *m_openButton;
    MLVProjectController *m_controller = nullptr;
};

} // namespace filmwright
