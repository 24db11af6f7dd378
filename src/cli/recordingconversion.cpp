// SPDX-License-Identifier: MIT
#include "cli/recordingconversion.h"

#include "cli/progressdisplay.h"

#include <QFileInfo>

#include <chrono>

using namespace std::chrono_literals;

namespace filmwright {

RecordingConversion::RecordingConversion(const QString &path, const ConversionSettings &settings,
                                         BatchMovies &movies, BatchProgress &progress,
                                         ProgressDisplay &display)
    : m_path(path)
    , m_progress(progress)
    , m_display(display)
    , m_run(m_project, path, this)
{
    configure(m_project, settings);
    connect(&m_run, &RecordingRun::ended, this, [this] {
        leaveDisplay();
        Q_EMIT ended(m_run.outcome());
    });
    connect(&m_progressTimer, &QTimer::timeout, this, &RecordingConversion::showProgress);
    m_progressTimer.setInterval(500ms);
    m_progress.setProject(&m_project);
    m_run.start(settings, movies);
    showProgress();
}

RecordingConversion::~RecordingConversion() = default;

RecordingOutcome RecordingConversion::stop()
{
    leaveDisplay();
    m_run.stop();
    return m_run.outcome();
}

void RecordingConversion::leaveDisplay()
{
    m_progressTimer.stop();
    m_progress.setProject(nullptr);
}

void RecordingConversion::controllerUpdated(MLVProjectController &controller)
{
    if (controller.mlvProjectMode() == MLVProjectModeExtracting)
        m_progressTimer.start();
    if (controller.mlvProjectMode() == MLVProjectModeRGBConversion)
        for (const QString &warning : m_run.outcome().warnings + m_run.outcome().notes)
            m_display.warn(QStringLiteral("%1: %2").arg(QFileInfo(m_path).fileName(), warning));
    showProgress();
}

void RecordingConversion::showProgress()
{
    const Progress progress = m_progress.update();
    switch (progress.stage) {
    case WorkStage::Waiting:
    case WorkStage::Finished:
        return;
    default:
        break;
    }
    if (progress.stage != m_stage) {
        m_stage = progress.stage;
        m_display.beginStage(m_path, stageName(m_stage), progress.frames);
    }
    m_display.show(progress);
}

} // namespace filmwright

#include "moc_recordingconversion.cpp"
