// SPDX-License-Identifier: MIT
#pragma once

#include "mlvdump/rawcorrections.h"

#include <QDialog>

class QComboBox;
class QDialogButtonBox;
class QDoubleSpinBox;
class QLineEdit;
class QSpinBox;

namespace filmwright {

/// Asks how recordings are developed: their exposure and white balance. Main thread only.
class DevelopmentDialog : public QDialog
{
    Q_OBJECT

public:
    explicit DevelopmentDialog(QWidget *parent);

    /// Shows what is chosen in the corrections.
    void setChoices(const RawCorrections &corrections);
    /// The corrections with what is chosen here. A white balance that isn't whole yet leaves
    /// theirs.
    RawCorrections appliedTo(RawCorrections corrections) const;

Q_SIGNALS:
    /// The person has changed a choice.
    void changed();

private:
    QString whiteBalance() const;
    bool isWhole() const;
    void showWhatIsChosen();

    QDoubleSpinBox *m_exposureField;
    QComboBox *m_whiteBalancePopUpButton;
    QSpinBox *m_temperatureField;
    QLineEdit *m_multipliersField;
    QDialogButtonBox *m_developmentButtons;
};

} // namespace filmwright
