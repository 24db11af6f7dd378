// SPDX-License-Identifier: MIT
#pragma once

#include <QLabel>
#include <QStringList>
#include <QStyle>
#include <QWidget>

#include <optional>

namespace filmwright {

class MLVProjectController;
class ProgressIndicator;

/// The cell of a project's state: its text over a bar, and a mark for the outcome of its last run.
class ProgressTableCellView : public QWidget
{
    Q_OBJECT

public:
    explicit ProgressTableCellView(QWidget *parent = nullptr);

    QLabel *textField() const { return m_textField; }
    /// What was chosen for this recording alone, under its state; hidden while it is empty.
    QLabel *choices() const { return m_choices; }
    void setChoices(const QStringList &choices);
    ProgressIndicator *progressIndicator() const { return m_progressIndicator; }

    /// The project shown; not owned.
    MLVProjectController *controller() const { return m_controller; }
    void setController(MLVProjectController *controller) { m_controller = controller; }

    /// Whether the movie of the last run is there, whatever the bar shows, and what went wrong, as
    /// plain text; without either there is no mark. Notes are told beside them.
    void setOutcome(bool movieWritten, const QString &error, const QString &notes = {});
    QString error() const { return m_error; }
    bool isMovieWritten() const { return m_movieWritten; }

private:
    QLabel *m_textField;
    QLabel *m_mark;
    QLabel *m_choices;
    ProgressIndicator *m_progressIndicator;
    MLVProjectController *m_controller = nullptr;
    QString m_error;
    bool m_movieWritten = false;
    std::optional<QStyle::StandardPixmap> m_shownMark;
};

} // namespace filmwright
