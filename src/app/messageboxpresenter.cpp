// SPDX-License-Identifier: MIT
#include "app/messageboxpresenter.h"

#include <QMessageBox>
#include <QPushButton>

namespace filmwright {

int MessageBoxPresenter::runAlert(const QString &title, const QString &message,
                                  const QString &defaultButton, const QString &alternateButton,
                                  const QString &otherButton)
{
    QMessageBox box(m_window);
    box.setWindowTitle(title);
    box.setTextFormat(Qt::PlainText);
    box.setText(title);
    box.setInformativeText(message);
    box.setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    const bool question = !alternateButton.isEmpty();
    box.setIcon(question ? QMessageBox::Question : QMessageBox::Warning);

    QPushButton *accepting = box.addButton(defaultButton, QMessageBox::AcceptRole);
    QPushButton *alternate =
        question ? box.addButton(alternateButton, QMessageBox::DestructiveRole) : nullptr;
    QPushButton *other =
        otherButton.isEmpty() ? nullptr : box.addButton(otherButton, QMessageBox::RejectRole);
    box.setDefaultButton(accepting);
    box.setEscapeButton(other ? other : accepting);
    box.exec();
    if (alternate && box.clickedButton() == alternate)
        return 0;
    return other && box.clickedButton() == other ? -1 : 1;
}

} // namespace filmwright
