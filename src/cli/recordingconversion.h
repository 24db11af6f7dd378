// SPDX-License-Identifier: MIT
#pragma once

#include "cli/conversionreport.h"
#include "project/batchprogress.h"
#include "project/mlvprojectcontroller.h"
#include "project/projectmonitor.h"

#include <QElapsedTimer>
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
    int workers = 1;                   ///< frames converted at once
    QString darkAverage;               ///< empty: none
    QString flatAverage;               ///< empty: none
    QStringList calibrationRecordings; ///< what the averages were made of
    bool keepsFinishedWork = false;
    bool keepsUnfinishedWork = false;
};

/// Hands a project all of the settings that are its own.
void configure(MLVProjectController &project, const ConversionSettings &settings);

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

    /// Ends whatever runs, removes the partial movie; `ended` is not sent any more. Returns what
    /// became of the recording.
    RecordingOutcome stop();

    QString path() const { return m_project.mlvPath(); }

Q_SIGNALS:
    /// Once, after the current event. Nothing of this recording runs any more.
    void ended(const filmwright::RecordingOutcome &outcome);

private:
    void controllerUpdated(MLVProjectController &controller) override;
    void imageRGBReceived(const QImage &image, MLVProjectController &forController) override;
    void controllerWorkFinished(MLVProjectController &controller) override;
    void controllerWorkError(const QString &error) override;

    void extractWhenIdle();
    void showProgress();
    void tellWhatIsMissing();
    void end(const QString &reason);
    RecordingOutcome outcomeFor(const QString &reason) const;
    void tidyUp();

    const ConversionSettings m_settings;
    BatchProgress &m_progress;
    ProgressDisplay &m_display;
    MLVProjectController m_project;
    ProjectMonitor m_monitor;
    QTimer m_progressTimer;
    QElapsedTimer m_time;
    QStringList m_warnings;
    WorkStage m_stage = WorkStage::Waiting;
    bool m_metadataRead = false;
    bool m_finished = false;
};

} // namespace filmwright
