// SPDX-License-Identifier: MIT
#include "cli/conversionqueue.h"

#include "cli/progressdisplay.h"
#include "cli/recordingsearch.h"

#include <QFileInfo>

namespace filmwright {

ConversionQueue::ConversionQueue(const QStringList &recordings, ProgressDisplay &display)
    : m_recordings(recordings.cbegin(), recordings.cend())
    , m_display(display)
{
}

ConversionQueue::~ConversionQueue() = default;

void ConversionQueue::start(const ConversionSettings &settings)
{
    m_settings = settings;
    next();
}

void ConversionQueue::stop()
{
    m_recordings.clear();
    if (m_current)
        m_current->stop();
    m_current.reset();
}

void ConversionQueue::next()
{
    while (!m_recordings.empty()) {
        const QString recording = m_recordings.front();
        m_recordings.pop_front();
        const QString reason = refusal(recording);
        if (reason.isEmpty()) {
            m_current =
                std::make_unique<RecordingConversion>(recording, m_settings, m_progress, m_display);
            connect(m_current.get(), &RecordingConversion::ended, this,
                    &ConversionQueue::recordingEnded);
            return;
        }
        fail(recording, reason);
    }
    Q_EMIT finished();
}

/// Why a recording isn't even tried.
QString ConversionQueue::refusal(const QString &recording)
{
    if (!isRecordingName(recording))
        return tr("its name doesn't end in .mlv");
    const QString movie = moviePathFor(recording, m_settings.format);
    if (m_movies.contains(movie))
        return tr("its movie would replace that of another recording, %1").arg(movie);
    m_movies << movie;
    return {};
}

void ConversionQueue::recordingEnded(const QString &reason)
{
    const QString recording = m_current->path();
    const QString movie = m_current->moviePath();
    m_current.release()->deleteLater(); // its signal is being handled
    if (reason.isEmpty())
        Q_EMIT movieFinished(movie);
    else
        fail(recording, reason);
    next();
}

void ConversionQueue::fail(const QString &recording, const QString &reason)
{
    ++m_failures;
    m_display.warn(tr("%1: failed: %2").arg(QFileInfo(recording).fileName(), reason));
}

} // namespace filmwright
