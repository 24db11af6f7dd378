// SPDX-License-Identifier: MIT
#pragma once

#include "project/batchprogress.h"
#include "project/mlvprojectcontroller.h"
#include "project/projectmonitor.h"

#include <QObject>
#include <QTimer>

namespace filmwright {

class ProgressDisplay;

/// What all recordings of a run have in common.
struct ConversionSettings
{
    qint32 format = MovieFormatMOV;
    qint32 quality = MovieQualityHigh;
    bool mergesNeighbours = false;
    bool blendsAlternatingRows = false;
    QString darkAverage;               ///< empty: none
    QString flatAverage;               ///< empty: none
    QStringList calibrationRecordings; ///< what the averages were made of
    bool keepsFinishedWork = false;
    bool keepsUnfinishedWork = false;
};

/// One recording on its way to its movie, from its metadata to the end or to the reason why there
/// is no movie. Main thread only.
class RecordingConversion : public QObject, private MLVProjectControllerProtocol
{
    Q_OBJECT

public:
    /// `progress` is that of the whole batch.
    RecordingConversion(const QString &path, const ConversionSettings &settings,
                        BatchProgress &progress, ProgressDisplay &display);
    ~RecordingConversion() override;

    /// Ends whatever runs, removes the partial movie; `ended` is not sent any more.
    void stop();

    QString path() const { return m_project.mlvPath(); }
    QString moviePath() const { return m_project.moviePath(); }

Q_SIGNALS:
    /// Once, after the current event: with no reason the movie is there. Nothing of this recording
    /// runs any more.
    void ended(const QString &reason);

private:
    void controllerUpdated(MLVProjectController &controller) override;
    void imageRGBReceived(const QImage &image, MLVProjectController &forController) override;
    void controllerWorkFinished(MLVProjectController &controller) override;
    void controllerWorkError(const QString &error) override;

    void extractWhenIdle();
    void showProgress();
    void tellFrameCount();
    void end(const QString &reason);
    void tidyUp();

    const ConversionSettings m_settings;
    BatchProgress &m_progress;
    ProgressDisplay &m_display;
    MLVProjectController m_project;
    ProjectMonitor m_monitor;
    QTimer m_progressTimer;
    WorkStage m_stage = WorkStage::Waiting;
    bool m_metadataRead = false;
    bool m_finished = false;
};

} // namespace filmwright
