// SPDX-License-Identifier: MIT
#include "cli/framesurvey.h"

namespace filmwright {

FrameSurvey::FrameSurvey() = default;

FrameSurvey::~FrameSurvey()
{
    stop();
}

void FrameSurvey::start(const QStringList &recordings, const ConversionSettings &settings)
{
    m_recordings.assign(recordings.cbegin(), recordings.cend());
    m_settings = settings;
    readNext();
}

void FrameSurvey::stop()
{
    m_recordings.clear();
    if (m_project) {
        m_monitor->disconnect(this);
        m_project->setDelegate(nullptr);
        m_project->stop();
        release();
    }
}

std::optional<RecordingWork> FrameSurvey::workOf(const QString &recording) const
{
    return m_works.value(recording, RecordingWork{});
}

void FrameSurvey::readNext()
{
    if (m_recordings.empty())
        return;
    m_project = std::make_unique<MLVProjectController>();
    configure(*m_project, m_settings);
    m_project->setDelegate(this);
    m_monitor = std::make_unique<ProjectMonitor>(*m_project);
    connect(m_monitor.get(), &ProjectMonitor::ended, this, [this] { settle(std::nullopt); });
    m_project->setMlvPath(m_recordings.front());
}

void FrameSurvey::controllerUpdated(MLVProjectController &controller)
{
    if (controller.mlvProjectMode() == MLVProjectModeReady)
        settle(filmwright::workOf(controller));
}

void FrameSurvey::controllerWorkError(const QString &)
{
    settle(std::nullopt);
}

/// Called in the middle of the project's own work, which therefore goes away later.
void FrameSurvey::settle(const std::optional<RecordingWork> &work)
{
    m_works.insert(m_recordings.front(), work);
    m_recordings.pop_front();
    m_monitor->disconnect(this);
    m_project->setDelegate(nullptr);
    QMetaObject::invokeMethod(
        this,
        [this] {
            if (!m_project)
                return;
            m_project->stop(); // a tool that has printed its report may still run
            release();
            Q_EMIT progressed();
            readNext();
        },
        Qt::QueuedConnection);
}

void FrameSurvey::release()
{
    m_monitor.reset();
    m_project.reset();
}

} // namespace filmwright
