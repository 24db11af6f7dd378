// SPDX-License-Identifier: MIT
#pragma once

#include "cli/recordingconversion.h"

#include <QObject>
#include <QSet>

#include <memory>

namespace filmwright {

/// Converts recordings one after the other; one that fails doesn't hold up the others. Main thread
/// only.
class ConversionQueue : public QObject
{
    Q_OBJECT

public:
    ConversionQueue(const QStringList &recordings, ProgressDisplay &display);
    ~ConversionQueue() override;

    void start(const ConversionSettings &settings);
    /// Stops the running recording; nothing is told any more.
    void stop();
    /// Gives up all recordings for one reason, instead of starting.
    void giveUp(const QString &reason);

    /// What became of each recording so far, in their order.
    const QList<RecordingOutcome> &outcomes() const { return m_outcomes; }
    bool hasFailures() const;

Q_SIGNALS:
    void movieFinished(const QString &path);
    void finished();

private:
    void next();
    void recordingEnded(const RecordingOutcome &outcome);
    QString refusal(const QString &recording);
    void settle(const RecordingOutcome &outcome);

    QList<RecordingOutcome> m_outcomes;
    qsizetype m_next = 0; ///< the first whose turn hasn't come
    BatchProgress m_progress;
    ProgressDisplay &m_display;
    ConversionSettings m_settings;
    std::unique_ptr<RecordingConversion> m_current;
    QSet<QString> m_movies;
};

} // namespace filmwright
