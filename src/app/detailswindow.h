// SPDX-License-Identifier: MIT
#pragma once

#include "project/recordingfacts.h"

#include <QDialog>
#include <QStringList>

class QPlainTextEdit;
class QScrollArea;

namespace filmwright {

/// What is known of one recording: its facts, and what the tools said of it, which can be copied.
/// Main thread only.
class DetailsWindow : public QDialog
{
    Q_OBJECT

public:
    explicit DetailsWindow(QWidget *parent);

    /// Shows another recording, or news of the same one; what hasn't changed stays as it is, with
    /// what is selected in it.
    void showRecording(const QString &name, const QList<RecordingFact> &facts,
                       const QStringList &log);

    /// Facts and log as one plain text.
    QString wholeText() const;

private:
    void copy() const;

    QString m_name;
    QList<RecordingFact> m_facts;
    QScrollArea *m_factsArea;
    QPlainTextEdit *m_log;
};

} // namespace filmwright
