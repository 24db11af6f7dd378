// SPDX-License-Identifier: MIT
#include "cli/recordingconversion.h"

#include "cli/progressdisplay.h"
#include "project/spacecheck.h"
#include "project/worknote.h"
#include "runner/notificationcenter.h"

#include <QFileInfo>

#include <chrono>

using namespace std::chrono_literals;

namespace filmwright {

void configure(MLVProjectController &project, const ConversionSettings &settings)
{
    project.setMovieFormat(settings.format);
    project.setMovieQuality(settings.quality);
    project.setDualISO(settings.mergesNeighbours);
    project.setBlendsAlternatingRows(settings.blendsAlternatingRows);
    project.setConversionWorkers(settings.workers);
    project.setDarkPath(settings.darkAverage);
    project.setFlatPath(settings.flatAverage);
    project.setKeepsTmpFiles(settings.keepsFinishedWork);
}

RecordingConversion::RecordingConversion(const QString &path, const ConversionSettings &settings,
                                         BatchProgress &progress, ProgressDisplay &display)
    : m_settings(settings)
    , m_progress(progress)
    , m_display(display)
    , m_monitor(m_project)
{
    configure(m_project, settings);
    m_project.setDelegate(this);
    connect(&m_monitor, &ProjectMonitor::ended, this, &RecordingConversion::end);
    connect(&m_progressTimer, &QTimer::timeout, this, &RecordingConversion::showProgress);
    connect(&NotificationCenter::defaultCenter(), &NotificationCenter::posted, this,
            &RecordingConversion::extractWhenIdle, Qt::QueuedConnection);
    m_progressTimer.setInterval(500ms);
    m_time.start();
    m_project.setMlvPath(path);
    m_progress.setProject(&m_project);
    showProgress();
}

RecordingConversion::~RecordingConversion()
{
    m_project.setDelegate(nullptr);
}

RecordingOutcome RecordingConversion::stop()
{
    m_monitor.disconnect(this);
    m_progressTimer.stop();
    m_progress.setProject(nullptr);
    m_project.setDelegate(nullptr);
    m_project.stop();
    tidyUp();
    RecordingOutcome outcome;
    outcome.recording = path();
    outcome.result = RecordingOutcome::Interrupted;
    outcome.duration = std::chrono::milliseconds(m_time.elapsed());
    return outcome;
}

void RecordingConversion::controllerUpdated(MLVProjectController &)
{
    m_monitor.controllerUpdated();
    switch (m_project.mlvProjectMode()) {
    case MLVProjectModeReady:
        m_metadataRead = true;
        break;
    case MLVProjectModeExtracting:
        m_progressTimer.start();
        break;
    case MLVProjectModeRGBConversion:
        tellWhatIsMissing();
        break;
    default:
        break;
    }
    showProgress();
}

/// The tool that printed the report has to be gone before it can be started again.
void RecordingConversion::extractWhenIdle()
{
    if (!m_metadataRead || m_project.isToolBusy())
        return;
    m_metadataRead = false;
    if (m_settings.keepsUnfinishedWork) {
        claimUnfinishedWork(
            {path(), m_settings.calibrationRecordings, m_settings.blendsAlternatingRows},
            m_project.extractionDirectory());
    }
    if (const QString problem = spaceProblem(m_project); !problem.isEmpty()) {
        end(problem);
        return;
    }
    m_project.readyToGo();
    m_project.launchDNGExtraction();
}

void RecordingConversion::imageRGBReceived(const QImage &image, MLVProjectController &)
{
    m_monitor.imageRGBReceived(image);
}

void RecordingConversion::controllerWorkFinished(MLVProjectController &)
{
    m_finished = true;
    m_monitor.controllerWorkFinished();
}

void RecordingConversion::controllerWorkError(const QString &error)
{
    m_monitor.controllerWorkError(error);
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
        m_display.beginStage(path(), stageName(m_stage), progress.frames);
    }
    m_display.show(progress);
}

void RecordingConversion::tellWhatIsMissing()
{
    m_warnings = shortcomingsOf(m_project);
    const QString name = QFileInfo(path()).fileName();
    for (const QString &warning : std::as_const(m_warnings))
        m_display.warn(QStringLiteral("%1: %2").arg(name, warning));
}

void RecordingConversion::end(const QString &reason)
{
    m_monitor.disconnect(this);
    m_progressTimer.stop();
    m_progress.setProject(nullptr);
    m_project.setDelegate(nullptr);
    const RecordingOutcome outcome = outcomeFor(reason);
    if (!m_finished)
        m_project.stop();
    tidyUp();
    Q_EMIT ended(outcome);
}

RecordingOutcome RecordingConversion::outcomeFor(const QString &reason) const
{
    RecordingOutcome outcome;
    outcome.recording = path();
    outcome.duration = std::chrono::milliseconds(m_time.elapsed());
    outcome.warnings = m_warnings;
    if (reason.isEmpty()) {
        outcome.result = RecordingOutcome::Finished;
        outcome.movie = m_project.moviePath();
        // Merging neighbours costs a frame.
        outcome.frames = m_project.framesToConvert() - (m_settings.mergesNeighbours ? 1 : 0);
    } else {
        outcome.result = RecordingOutcome::Failed;
        outcome.reason = reason;
        outcome.toolLines = m_project.lastToolLines();
    }
    return outcome;
}

void RecordingConversion::tidyUp()
{
    if (m_finished)
        forgetUnfinishedWork(m_project.extractionDirectory());
    else if (!m_settings.keepsUnfinishedWork)
        m_project.cleanTmpFiles();
}

} // namespace filmwright
