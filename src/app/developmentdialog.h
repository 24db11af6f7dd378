// SPDX-License-Identifier: MIT
#pragma once

#include "mlvdump/rawcorrections.h"

#include <QDialog>

#include <memory>

namespace filmwright {

/// Asks how recordings are developed: their exposure and white balance. Main thread only.
class DevelopmentDialog : public QDialog
{
    Q_OBJECT

public:
    explicit DevelopmentDialog(QWidget *parent);
    ~DevelopmentDialog() override;

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

    struct Form;
    std::unique_ptr<Form> m_form;
};

} // namespace filmwright
