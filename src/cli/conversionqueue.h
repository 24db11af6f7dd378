// SPDX-License-Identifier: MIT
#pragma once

#include "cli/framesurvey.h"
#include "cli/recordingconversion.h"
#include "cli/recordingsearch.h"

#include <QObject>

#include <memory>

namespace filmwright {

/// Converts recordings one after the other; one that fails doesn't hold up the others. Main thread
/// only.
class ConversionQueue : public QObject
{
    Q_OBJECT

public:
    /// What can't be reached fails before the recordings' turn.
    ConversionQueue(const QStringList &recordings, const QList<Unreachable> &unreachable,
                    ProgressDisplay &display);
    ~ConversionQueue() override;

    void start(const ConversionSettings &settings);
    /// Stops the running recording; nothing is told any more.
    void stop();
    /// Gives up all recordings for one error, instead of starting.
    void giveUp(const QString &error);

    /// What became of each recording so far, in their order.
    const QList<RecordingOutcome> &outcomes() const { return m_outcomes; }
    bool hasFailures() const;

Q_SIGNALS:
    void movieFinished(const QString &path);
    void finished();

private:
    void next();
    void tellUpcoming();
    void recordingEnded(const RecordingOutcome &outcome);
    void refuse(const QString &recording, const QString &error);
    void settle(const RecordingOutcome &outcome);

    QList<Unreachable> m_unreachable;
    QList<RecordingOutcome> m_outcomes;
    qsizetype m_next = 0; ///< the first whose turn hasn't come
    BatchProgress m_progress;
    FrameSurvey m_survey; ///< of the recordings after the current one
    ProgressDisplay &m_display;
    ConversionSettings m_settings;
    std::unique_ptr<RecordingConversion> m_current;
    BatchMovies m_movies;
};

} // namespace filmwright
