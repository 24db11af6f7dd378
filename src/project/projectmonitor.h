// SPDX-License-Identifier: MIT
#pragma once

#include "project/mlvprojectcontrollerprotocol.h"
#include "project/recordingoutcome.h"

#include <QFutureWatcher>
#include <QObject>
#include <QTimer>

namespace filmwright {

class FrameFlow;

/// The sentence in an error line of mlv_dump.
QString errorOf(const QString &errorLine);

/// What a movie lacks that is made all the same, as sentences: frames and sound that couldn't be
/// read. Known once the frames are extracted.
QStringList shortcomingsOf(const MLVProjectController &project);

/// Finds out what becomes of one reading of a recording, or of one conversion: the stages
/// themselves judge nothing but mlv_dump's error lines. Made before the work begins; from then on
/// it is the project's delegate and hands on what the project tells, after having looked at it.
///
/// Main thread only; project and listener outlive it.
class ProjectMonitor : public QObject, private MLVProjectControllerProtocol
{
    Q_OBJECT

public:
    enum Work { Reading, Conversion };

    /// The listener may be null.
    ProjectMonitor(MLVProjectController &project, Work work,
                   MLVProjectControllerProtocol *listener);
    ~ProjectMonitor() override;

    /// Whether a finished movie is being judged: `ended` comes by itself.
    bool isSettling() const { return m_settling.isRunning(); }

Q_SIGNALS:
    /// The reading or the conversion ends here, once, after the current event. Without a failure
    /// the metadata is there, or the movie is whole and on the disk; with one, the project still
    /// has to be stopped. A full disk behind a failure is named.
    void ended(const filmwright::Failure &failure);

private:
    void controllerUpdated(MLVProjectController &controller) override;
    void imageRGBReceived(const QImage &image, MLVProjectController &forController) override;
    void controllerWorkFinished(MLVProjectController &controller) override;
    void controllerWorkError(const QString &error) override;

    void checkLater();
    void check();
    void checkFlow(const FrameFlow &flow);
    void checkReport();
    void checkConversion();
    void dropEarlierMerges();
    void checkImage(const QImage &image);
    void checkFrames();
    void checkMergedFrames(int pairs);
    void checkRoom();
    void checkMovie();
    Failure encodingFailure() const;
    void endWithMovie(const Failure &failure);
    Failure failureOf(const QString &tool, const QString &error) const;
    Failure endOf(const QString &tool, int status, const QStringList &lines) const;
    void fail(Failure failure);
    void end(const Failure &failure);

    MLVProjectController &m_project;
    const Work m_work;
    MLVProjectControllerProtocol *const m_listener;
    QFutureWatcher<QString> m_settling;
    QTimer m_roomTimer;
    Failure m_errorInReport;
    int m_missingFrames = 0;
    bool m_ended = false;
};

} // namespace filmwright
