// SPDX-License-Identifier: MIT
#include "cli/conversionqueue.h"

#include "cli/progressdisplay.h"

#include <algorithm>

namespace filmwright {

ConversionQueue::ConversionQueue(const QStringList &recordings,
                                 const QList<Unreachable> &unreachable, ProgressDisplay &display)
    : m_unreachable(unreachable)
    , m_display(display)
{
    for (const Unreachable &item : unreachable) {
        RecordingOutcome outcome;
        outcome.recording = item.path;
        m_outcomes << outcome;
    }
    for (const QString &recording : recordings) {
        RecordingOutcome outcome;
        outcome.recording = recording;
        m_outcomes << outcome;
    }
}

ConversionQueue::~ConversionQueue() = default;

/// The recordings after the current one, as far as they are known.
void ConversionQueue::tellUpcoming()
{
    std::vector<RecordingWork> upcoming;
    for (qsizetype i = m_next + 1; i < m_outcomes.size(); ++i)
        if (const auto work = m_survey.workOf(m_outcomes.at(i).recording))
            upcoming.push_back(*work);
    m_progress.setUpcoming(std::move(upcoming));
}

void ConversionQueue::start(const ConversionSettings &settings)
{
    m_settings = settings;
    for (const Unreachable &item : std::as_const(m_unreachable))
        refuse(item.path, item.error);
    if (m_display.showsFrames()) {
        QStringList later;
        for (qsizetype i = m_next + 1; i < m_outcomes.size(); ++i)
            later << m_outcomes.at(i).recording;
        connect(&m_survey, &FrameSurvey::progressed, this, &ConversionQueue::tellUpcoming);
        m_survey.start(later, settings);
    }
    next();
}

void ConversionQueue::stop()
{
    m_survey.stop();
    if (m_current)
        m_outcomes[m_next] = m_current->stop();
    m_current.reset();
    m_next = m_outcomes.size();
}

void ConversionQueue::giveUp(const QString &error)
{
    m_next = m_outcomes.size();
    for (RecordingOutcome &outcome : m_outcomes)
        outcome.failure.error = error;
}

bool ConversionQueue::hasFailures() const
{
    return std::ranges::any_of(m_outcomes, [](const RecordingOutcome &outcome) {
        return outcome.result == RecordingOutcome::Failed;
    });
}

void ConversionQueue::next()
{
    if (m_next == m_outcomes.size()) {
        m_survey.stop();
        Q_EMIT finished();
        return;
    }
    tellUpcoming();
    m_current = std::make_unique<RecordingConversion>(m_outcomes.at(m_next).recording, m_settings,
                                                      m_movies, m_progress, m_display);
    connect(m_current.get(), &RecordingConversion::ended, this, &ConversionQueue::recordingEnded);
}

void ConversionQueue::refuse(const QString &recording, const QString &error)
{
    RecordingOutcome refused;
    refused.recording = recording;
    refused.result = RecordingOutcome::Failed;
    refused.failure.error = error;
    settle(refused);
}

void ConversionQueue::recordingEnded(const RecordingOutcome &outcome)
{
    m_current.release()->deleteLater(); // its signal is being handled
    settle(outcome);
    next();
}

/// The recording whose turn it is has come to its end.
void ConversionQueue::settle(const RecordingOutcome &outcome)
{
    m_outcomes[m_next++] = outcome;
    if (outcome.result == RecordingOutcome::Finished) {
        m_display.finished(outcome.recording, outcome.movie);
        Q_EMIT movieFinished(outcome.movie);
        return;
    }
    if (outcome.result == RecordingOutcome::Skipped)
        m_display.skipped(outcome.recording, outcome.movie);
    else
        m_display.failed(outcome.recording, outcome.failure.error);
}

} // namespace filmwright

#include "moc_conversionqueue.cpp"
