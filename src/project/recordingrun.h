// SPDX-License-Identifier: MIT
#pragma once

#include "project/batchmovies.h"
#include "project/mlvprojectcontroller.h"
#include "project/projectmonitor.h"

#include <QElapsedTimer>

namespace filmwright {

/// One recording's way from the queue to its outcome, the same in the window and on the command
/// line: what is refused, the reading where it is missing, the room, the note of what the frames
/// are made of, the conversion and its judgement, what is tidied up. It can be gone again and
/// again.
///
/// Main thread only. The project outlives it; the shell is told all that the project tells.
class RecordingRun : public QObject, private MLVProjectControllerProtocol
{
    Q_OBJECT

public:
    /// The shell may be null.
    RecordingRun(MLVProjectController &project, const QString &recording,
                 MLVProjectControllerProtocol *shell);
    ~RecordingRun() override;

    /// Reads the metadata of the files that recordingIdentity() has told.
    void read(const QByteArray &identity);
    void read();

    /// Makes the movie. Metadata that is missing, or of files that have changed since, is read
    /// before that; a finished movie that is still being judged is waited for.
    void start(const ConversionSettings &settings, BatchMovies &movies);

    /// Ends whatever runs and removes a partial movie; `ended` isn't sent. A movie that is finished
    /// is judged all the same.
    void stop();

    /// Stops, and tells nobody anything any more.
    void detach();
    /// Removes what a stopped conversion has left for the next one; waits for frames in work.
    void discardWork();

    /// Whether the end of what was begun is still to come.
    bool isPending() const { return m_phase != Idle; }

    MLVProjectController &project() const { return m_project; }
    /// Of the last start(); after a mere reading, its failure.
    const RecordingOutcome &outcome() const { return m_outcome; }
    /// What the last start() asked for.
    const ConversionSettings &settings() const { return m_settings; }

Q_SIGNALS:
    /// Once for each read() and start(), after the current event: the outcome is known, and nothing
    /// of this recording runs any more.
    void ended();

private:
    enum Phase { Idle, Reading, Waiting, Converting, Settling };

    void controllerUpdated(MLVProjectController &controller) override;
    void imageRGBReceived(const QImage &image, MLVProjectController &forController) override;
    void controllerWorkFinished(MLVProjectController &controller) override;
    void controllerWorkError(const QString &error) override;

    void reset();
    void proceed();
    bool needsReading() const;
    void readMetadata(const QByteArray &identity);
    void watch(ProjectMonitor::Work work);
    void judged(const Failure &failure);
    void launchWhenIdle();
    void launchWaiting();
    void launch();
    bool keepsUnfinishedWork() const;
    [[nodiscard]] QString chooseMovie();
    bool isMade() const;
    void skip();
    void endLater(const QString &error);
    void end(const Failure &failure);
    void noteOutcome(const Failure &failure);

    MLVProjectController &m_project;
    const QString m_recording;
    MLVProjectControllerProtocol *m_shell;
    std::unique_ptr<ProjectMonitor> m_monitor;
    ConversionSettings m_settings;
    QString m_startError;
    BatchMovies *m_movies = nullptr;
    RecordingOutcome m_outcome;
    Failure m_readFailure;
    QByteArray m_origin;       ///< of the movie that is launched
    QByteArray m_readIdentity; ///< of the files whose metadata the project has
    QElapsedTimer m_time;
    Phase m_phase = Idle;
    bool m_forMovie = false;
    bool m_launchAhead = false; ///< the conversion that was asked for isn't launched yet
    bool m_hasWork = false;     ///< there may be frames
    quint64 m_beginnings = 0;
};

} // namespace filmwright
