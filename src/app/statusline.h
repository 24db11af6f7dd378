// SPDX-License-Identifier: MIT
#pragma once

#include <QLabel>
#include <QTimer>

#include <chrono>

namespace filmwright {

/// The line that tells what goes on. Where it is too short, what is said stays whole and the name
/// behind it is cut in its middle; text() and a screen reader have all of it. Main thread only.
class StatusLine : public QLabel
{
    Q_OBJECT

public:
    explicit StatusLine(QWidget *parent = nullptr);

    /// What is so until the next status: a sentence, and the name of what it is about.
    void setStatus(const QString &sentence, const QString &name = {});
    /// Says something once: it stands in the status's place for some seconds.
    void tell(const QString &note);
    void setNoteTime(std::chrono::milliseconds time) { m_noteTime.setInterval(time); }

    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void show(const QString &sentence, const QString &name);

    QString m_sentence;
    QString m_name;
    QString m_shownName; // the end of text()
    QTimer m_noteTime;
};

} // namespace filmwright
