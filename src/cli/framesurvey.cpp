// SPDX-License-Identifier: MIT
#include "cli/framesurvey.h"

namespace filmwright {

void FrameSurvey::start(const QStringList &recordings, const ConversionSettings &settings)
{
    m_recordings.assign(recordings.cbegin(), recordings.cend());
    m_settings = settings;
    readNext();
}

void FrameSurvey::stop()
{
    m_recordings.clear();
    if (m_run)
        m_run->detach();
}

std::optional<RecordingWork> FrameSurvey::workOf(const QString &recording) const
{
    return m_works.value(recording, RecordingWork{});
}

void FrameSurvey::readNext()
{
    if (m_run)
        m_run->detach(); // its tool may still run
    if (m_recordings.empty())
        return;
    m_run.reset();
    m_project = std::make_unique<MLVProjectController>();
    configure(*m_project, m_settings);
    m_run = std::make_unique<RecordingRun>(*m_project, m_recordings.front(), nullptr);
    connect(m_run.get(), &RecordingRun::ended, this, &FrameSurvey::settle);
    m_run->read();
}

/// Called by the run, which therefore goes away later.
void FrameSurvey::settle()
{
    const bool readable = m_run->outcome().failure.isEmpty();
    m_works.insert(m_recordings.front(),
                   readable ? std::optional(filmwright::workOf(*m_project)) : std::nullopt);
    m_recordings.pop_front();
    Q_EMIT progressed();
    QMetaObject::invokeMethod(this, &FrameSurvey::readNext, Qt::QueuedConnection);
}

} // namespace filmwright

#include "moc_framesurvey.cpp"
