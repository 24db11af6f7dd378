// SPDX-License-Identifier: MIT
#pragma once

#include <QLineEdit>
#include <QToolButton>

namespace filmwright {

class CustomTextField;

/// Who is told that a field was emptied by its delete button.
class CustomTextFieldProtocol
{
public:
    virtual ~CustomTextFieldProtocol() = default;

    /// The field is empty already.
    virtual void fieldDeleted(CustomTextField &field) = 0;
};

/// A text field with a button inside that empties it; the button shows while there is text.
class CustomTextField : public QLineEdit
{
    Q_OBJECT

public:
    explicit CustomTextField(QWidget *parent = nullptr);

    QToolButton *deleteButton() const { return m_deleteButton; }

    /// Not owned; cleared by its owner before it goes away.
    CustomTextFieldProtocol *deleteDelegate() const { return m_deleteDelegate; }
    void setDeleteDelegate(CustomTextFieldProtocol *delegate) { m_deleteDelegate = delegate; }

    QString stringValue() const { return text(); }
    void setStringValue(const QString &value) { setText(value); }

    /// Empties the field and tells the delegate.
    void deleteClicked();

protected:
    bool event(QEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    bool deletes(const QKeyEvent &event) const;

    QToolButton *m_deleteButton;
    CustomTextFieldProtocol *m_deleteDelegate = nullptr;
};

} // namespace filmwright
