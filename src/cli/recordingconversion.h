// SPDX-License-Identifier: MIT
#pragma once

#include "project/batchprogress.h"
#include "project/recordingrun.h"

#include <QTimer>

namespace filmwright {

class ProgressDisplay;

/// A recording's conversion with its progress on the display. Main thread only.
class RecordingConversion : public QObject, private MLVProjectControllerProtocol
{
    Q_OBJECT

public:
    /// Begins. `progress` is that of the whole batch, `movies` are.
    RecordingConversion(const QString &path, const ConversionSettings &settings,
                        BatchMovies &movies, BatchProgress &progress, ProgressDisplay &display);
    ~RecordingConversion() override;

    /// Ends whatever runs, removes the partial movie; `ended` is not sent any more. Returns what
    /// became of the recording.
    RecordingOutcome stop();

Q_SIGNALS:
    /// Once, after the current event. Nothing of this recording runs any more.
    void ended(const filmwright::RecordingOutcome &outcome);

private:
    void controllerUpdated(MLVProjectController &controller) override;
    void imageRGBReceived(const QImage &, MLVProjectController &) override {}
    void controllerWorkFinished(MLVProjectController &) override {}
    void controllerWorkError(const QString &) override {}

    void showProgress();
    void leaveDisplay();

    const QString m_path;
    BatchProgress &m_progress;
    ProgressDisplay &m_display;
    MLVProjectController m_project;
    RecordingRun m_run;
    QTimer m_progressTimer;
    WorkStage m_stage = WorkStage::Waiting;
};

} // namespace filmwright
