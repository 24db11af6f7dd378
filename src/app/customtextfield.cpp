// SPDX-License-Identifier: MIT
#include "app/customtextfield.h"

#include <QKeyEvent>

#include <algorithm>

namespace filmwright {

namespace {

constexpr int buttonSize = 14;
constexpr int buttonTop = 5;    // at least, above the button
constexpr int buttonMargin = 2; // right of the button
constexpr int textMargin = 4;   // between the text and the button

} // namespace

CustomTextField::CustomTextField(QWidget *parent)
    : QLineEdit(parent)
    , m_deleteButton(new QToolButton(this))
{
    m_deleteButton->setIcon(QIcon(QStringLiteral(":/images/Delete.png")));
    m_deleteButton->setIconSize({buttonSize, buttonSize});
    m_deleteButton->setAutoRaise(true);
    m_deleteButton->setGeometry(width() - buttonSize - buttonMargin, buttonTop, buttonSize,
                                buttonSize);
    m_deleteButton->setCursor(Qt::ArrowCursor);
    m_deleteButton->setFocusPolicy(Qt::NoFocus); // the Delete key does the same
    m_deleteButton->setToolTip(QStringLiteral("Remove"));
    m_deleteButton->setAccessibleName(QStringLiteral("Remove"));
    m_deleteButton->hide();
    setTextMargins(0, 0, buttonSize + textMargin, 0);
    connect(m_deleteButton, &QToolButton::clicked, this, &CustomTextField::deleteClicked);
    connect(this, &QLineEdit::textChanged, this,
            [this](const QString &value) { m_deleteButton->setVisible(!value.isEmpty()); });
}

void CustomTextField::deleteClicked()
{
    setStringValue(QString());
    if (m_deleteDelegate)
        m_deleteDelegate->fieldDeleted(*this);
}

void CustomTextField::resizeEvent(QResizeEvent *event)
{
    QLineEdit::resizeEvent(event);
    m_deleteButton->move(width() - buttonSize - buttonMargin,
                         std::max(buttonTop, (height() - buttonSize) / 2));
}

/// A field that isn't typed into is emptied as a whole.
bool CustomTextField::deletes(const QKeyEvent &event) const
{
    return isReadOnly() && (event.key() == Qt::Key_Delete || event.key() == Qt::Key_Backspace);
}

/// These keys are the field's also where a menu has them for a command.
bool CustomTextField::event(QEvent *event)
{
    if (event->type() == QEvent::ShortcutOverride && deletes(static_cast<QKeyEvent &>(*event))) {
        event->accept();
        return true;
    }
    return QLineEdit::event(event);
}

void CustomTextField::keyPressEvent(QKeyEvent *event)
{
    if (deletes(*event) && !text().isEmpty())
        deleteClicked();
    else
        QLineEdit::keyPressEvent(event);
}

} // namespace filmwright

#include "moc_customtextfield.cpp"
