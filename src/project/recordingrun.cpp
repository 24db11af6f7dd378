// SPDX-License-Identifier: MIT
#include "project/recordingrun.h"

#include "project/framesize.h"
#include "project/movieorigin.h"
#include "project/moviespace.h"
#include "project/recordingfiles.h"
#include "project/spacecheck.h"
#include "project/worknote.h"
#include "runner/notificationcenter.h"

#include <utility>

namespace filmwright {

RecordingRun::RecordingRun(MLVProjectController &project, const QString &recording,
                           MLVProjectControllerProtocol *shell)
    : m_project(project)
    , m_recording(recording)
    , m_shell(shell)
{
    m_outcome.recording = recording;
}

RecordingRun::~RecordingRun() = default;

void RecordingRun::reset()
{
    ++m_beginnings;
    m_outcome = {};
    m_outcome.recording = m_recording;
    m_time.start();
}

void RecordingRun::read()
{
    read(recordingIdentity(m_recording));
}

void RecordingRun::read(const QByteArray &identity)
{
    reset();
    m_forMovie = false;
    readMetadata(identity);
}

void RecordingRun::start(const ConversionSettings &settings, BatchMovies &movies)
{
    reset();
    m_settings = settings;
    m_movies = &movies;
    m_startError = settingsError(settings);
    if (m_startError.isEmpty()) {
        m_startError =
            settings.calibration.isReady()
                ? movies.claim(m_recording, settings)
                : QStringLiteral("the average of its calibration recordings isn't there");
    }
    m_forMovie = true;
    m_launchAhead = true;
    if (m_phase == Idle)
        proceed();
}

void RecordingRun::proceed()
{
    configure(m_project, m_settings);
    if (!m_startError.isEmpty())
        endLater(m_startError);
    else if (needsReading())
        readMetadata(recordingIdentity(m_recording));
    else
        launch();
}

/// A report with an error line in it may be whole all the same.
bool RecordingRun::needsReading() const
{
    const bool failed = !m_readFailure.isEmpty() && !m_readFailure.concernsBatch;
    return failed || m_project.videoFrames() == 0 ||
           recordingIdentity(m_recording) != m_readIdentity;
}

void RecordingRun::readMetadata(const QByteArray &identity)
{
    m_phase = Reading;
    m_readFailure = {};
    m_readIdentity = identity;
    watch(ProjectMonitor::Reading);
    m_project.setMlvPath(m_recording);
}

void RecordingRun::watch(ProjectMonitor::Work work)
{
    m_monitor.reset();
    MLVProjectControllerProtocol *const listener = this;
    m_monitor = std::make_unique<ProjectMonitor>(m_project, work, listener);
    connect(m_monitor.get(), &ProjectMonitor::ended, this, &RecordingRun::judged);
}

void RecordingRun::judged(const Failure &failure)
{
    if (m_phase == Reading)
        m_readFailure = failure;
    if (m_phase == Settling && m_launchAhead)
        proceed();
    else if (m_phase == Reading && m_launchAhead && failure.isEmpty())
        launchWhenIdle();
    else
        end(failure);
}

/// The tool that printed the report has to be gone before it can be started again.
void RecordingRun::launchWhenIdle()
{
    m_phase = Waiting;
    connect(&NotificationCenter::defaultCenter(), &NotificationCenter::posted, this,
            &RecordingRun::launchWaiting,
            static_cast<Qt::ConnectionType>(int(Qt::QueuedConnection) | int(Qt::UniqueConnection)));
    launchWaiting();
}

void RecordingRun::launchWaiting()
{
    if (m_phase != Waiting || !m_launchAhead || m_project.isToolBusy())
        return;
    NotificationCenter::defaultCenter().disconnect(this);
    launch();
}

void RecordingRun::launch()
{
    m_launchAhead = false;
    configure(m_project, m_settings);
    if (const QString error = m_settings.frames.error(m_project.metadata().movieFrames());
        !error.isEmpty()) {
        endLater(error);
        return;
    }
    if (const QString error = chooseMovie(); !error.isEmpty()) {
        endLater(error);
        return;
    }
    if (isMade()) {
        skip();
        return;
    }
    const QSize size = developedSize(m_project.metadata());
    if (const QString error = sizeError(size, m_settings.format, m_settings.recipe);
        !error.isEmpty()) {
        endLater(error);
        return;
    }
    m_hasWork = true;
    if (keepsUnfinishedWork() && movieKindOf(m_settings.recipe) == MovieKind::File)
        claimUnfinishedWork(m_recording, m_settings, m_project.workingFolder());
    if (const QString error = spaceError(m_project); !error.isEmpty()) {
        endLater(error);
        return;
    }
    const double movie = movieBytes(m_project.metadata(), m_settings);
    if (const QString error =
            movieSpaceError({{m_project.moviePath(), movie, m_settings.recipe.has_value()}});
        !error.isEmpty()) {
        endLater(error);
        return;
    }
    m_phase = Converting;
    watch(ProjectMonitor::Conversion);
    if (m_project.mlvProjectMode() != MLVProjectModePending)
        m_project.readyToGo();
    m_project.launchDNGExtraction();
}

/// Frames that flow are gone when they are encoded, and what was encoded can't be gone on with.
bool RecordingRun::keepsUnfinishedWork() const
{
    return m_settings.keepsUnfinishedWork && !m_settings.flows();
}

/// Returns why its path can't be this recording's.
QString RecordingRun::chooseMovie()
{
    const MovieDestination &destination = m_settings.destination;
    QString movie = moviePathFor(m_recording, m_settings, m_project.metadata());
    if (destination.existing == ExistingMovie::Keep)
        movie = freeMoviePath(movie, movieKindOf(m_settings.recipe));
    m_project.setMoviePath(movie);
    m_origin = movieOrigin(m_recording, m_settings);
    return destination.isKnownBeforeReading() ? QString() : m_movies->claimMovie(movie);
}

/// Whether there is nothing to be done, as the person wants it.
bool RecordingRun::isMade() const
{
    std::optional<quint64> frames;
    // A movie of which nothing is noted doesn't tell how it was developed.
    if (m_settings.isUsualDevelopment())
        frames = m_project.videoFrames() - (m_settings.mergesNeighbours ? 1 : 0);
    return m_settings.destination.existing == ExistingMovie::Skip &&
           isFinishedMovie(m_project.moviePath(), m_origin, frames);
}

void RecordingRun::skip()
{
    m_outcome.result = RecordingOutcome::Skipped;
    m_outcome.movie = m_project.moviePath();
    endLater({});
}

void RecordingRun::controllerUpdated(MLVProjectController &controller)
{
    if (m_phase == Converting && controller.mlvProjectMode() == MLVProjectModeRGBConversion) {
        m_outcome.warnings = shortcomingsOf(controller);
        m_outcome.notes = controller.notes();
    }
    if (m_shell)
        m_shell->controllerUpdated(controller);
}

void RecordingRun::imageRGBReceived(const QImage &image, MLVProjectController &forController)
{
    if (m_shell)
        m_shell->imageRGBReceived(image, forController);
}

/// The note goes with the work, before another recording of that name makes its own.
void RecordingRun::controllerWorkFinished(MLVProjectController &controller)
{
    m_phase = Settling;
    if (movieKindOf(m_settings.recipe) == MovieKind::File)
        forgetUnfinishedWork(controller.workingFolder());
    if (m_shell)
        m_shell->controllerWorkFinished(controller);
}

/// Noted at once: the shell may stop everything before the run is judged.
void RecordingRun::controllerWorkError(const QString &error)
{
    m_outcome.failure.error = errorOf(error);
    if (m_shell)
        m_shell->controllerWorkError(error);
}

void RecordingRun::endLater(const QString &error)
{
    m_phase = Waiting;
    m_launchAhead = false;
    QMetaObject::invokeMethod(
        this,
        [this, error, beginning = m_beginnings] {
            if (beginning == m_beginnings)
                end({error});
        },
        Qt::QueuedConnection);
}

void RecordingRun::end(const Failure &failure)
{
    const Phase phase = std::exchange(m_phase, Idle);
    m_launchAhead = false;
    noteOutcome(failure);
    // A report that failed in its own way has ended by itself.
    const bool stuck = m_forMovie || m_project.mlvProjectMode() == MLVProjectModeReadingData;
    if (!failure.isEmpty() && stuck && phase != Settling)
        m_project.stop();
    if (phase == Converting && !keepsUnfinishedWork())
        discardWork();
    Q_EMIT ended();
}

void RecordingRun::noteOutcome(const Failure &failure)
{
    m_outcome.failure = failure;
    m_outcome.duration = std::chrono::milliseconds(m_time.elapsed());
    if (!failure.isEmpty())
        m_outcome.toolLines = m_project.lastToolLines();
    if (!m_forMovie || m_outcome.result == RecordingOutcome::Skipped)
        return;
    m_outcome.result = failure.isEmpty() ? RecordingOutcome::Finished : RecordingOutcome::Failed;
    if (!failure.isEmpty())
        return;
    m_outcome.movie = m_project.moviePath();
    m_outcome.frames = m_project.framesOfMovie();
    noteOrigin(m_outcome.movie, m_origin);
}

void RecordingRun::stop()
{
    ++m_beginnings;
    m_launchAhead = false;
    const Phase phase = m_phase;
    if (phase != Idle && m_forMovie) {
        m_outcome.result = RecordingOutcome::Interrupted;
        m_outcome.duration = std::chrono::milliseconds(m_time.elapsed());
    }
    if (phase != Settling) {
        m_phase = Idle;
        if (m_monitor)
            m_monitor->disconnect(this);
    }
    m_project.stop();
    if (phase == Converting && !keepsUnfinishedWork())
        discardWork();
}

void RecordingRun::detach()
{
    m_shell = nullptr;
    m_phase = Idle;
    m_launchAhead = false;
    ++m_beginnings;
    m_monitor.reset();
    m_project.stop();
}

void RecordingRun::discardWork()
{
    if (!std::exchange(m_hasWork, false))
        return;
    m_project.endConversions();
    m_project.cleanTmpFiles();
    forgetUnfinishedWork(m_project.workingFolder());
}

} // namespace filmwright

#include "moc_recordingrun.cpp"
