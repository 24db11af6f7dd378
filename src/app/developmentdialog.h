// SPDX-License-Identifier: MIT
#pragma once

#include <QDialog>

#include <memory>

namespace Ui {
class Development;
} // namespace Ui

namespace filmwright {

/// Asks for the exposure and the white balance of recordings. Main thread only.
class DevelopmentDialog : public QDialog
{
    Q_OBJECT

public:
    explicit DevelopmentDialog(QWidget *parent);
    ~DevelopmentDialog() override;

    /// EV, and a white balance as RawCorrections has it, empty for the camera's.
    void setChoices(double exposure, const QString &whiteBalance);
    double exposure() const;
    QString whiteBalance() const;

Q_SIGNALS:
    /// The person has changed a choice.
    void changed();

private:
    void showWhatIsChosen();

    std::unique_ptr<Ui::Development> m_ui;
};

} // namespace filmwright
