// SPDX-License-Identifier: MIT
#include "app/messageboxpresenter.h"

#include "app/plaintext.h"

#include <QGridLayout>
#include <QMessageBox>
#include <QPushButton>

namespace filmwright {

namespace {

/// A box is as wide as its short title asks, which breaks a sentence into a column of words.
void widen(QMessageBox &box)
{
    constexpr int letters = 60;
    auto *grid = qobject_cast<QGridLayout *>(box.layout());
    if (grid)
        grid->addItem(new QSpacerItem(letters * box.fontMetrics().averageCharWidth(), 0),
                      grid->rowCount(), 0, 1, grid->columnCount());
}

} // namespace

int MessageBoxPresenter::runAlert(const QString &title, const QString &message,
                                  const QString &defaultButton, const QString &alternateButton,
                                  const QString &otherButton)
{
    QMessageBox box(m_window);
    box.setWindowTitle(title);
    // Not Qt::PlainText: whether that holds for the informative text differs between Qt's versions.
    box.setText(shownAsItStands(title));
    box.setInformativeText(shownAsItStands(message));
    box.setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    const bool question = !alternateButton.isEmpty();
    box.setIcon(question ? QMessageBox::Question : QMessageBox::Warning);

    widen(box);

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
