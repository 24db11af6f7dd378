// SPDX-License-Identifier: MIT
#pragma once

#include "cli/recordingconversion.h"

#include <QHash>
#include <QStringList>

#include <deque>
#include <memory>

namespace filmwright {

/// Reads the metadata of recordings whose turn hasn't come yet, one after the other and beside the
/// work, so that the time left of a batch can be told. Main thread only.
class FrameSurvey : public QObject, private MLVProjectControllerProtocol
{
    Q_OBJECT

public:
    FrameSurvey();
    ~FrameSurvey() override;

    void start(const QStringList &recordings, const ConversionSettings &settings);
    /// Nothing runs any more and nothing is told.
    void stop();

    /// What a recording takes: without frames while it isn't read, none when it can't be read,
    /// since such a recording takes no time.
    std::optional<RecordingWork> workOf(const QString &recording) const;

Q_SIGNALS:
    /// Another recording has been read.
    void progressed();

private:
    void controllerUpdated(MLVProjectController &controller) override;
    void imageRGBReceived(const QImage &, MLVProjectController &) override {}
    void controllerWorkFinished(MLVProjectController &) override {}
    void controllerWorkError(const QString &) override;

    void readNext();
    void settle(const std::optional<RecordingWork> &work);
    void release();

    std::deque<QString> m_recordings;
    ConversionSettings m_settings;
    std::unique_ptr<MLVProjectController> m_project;
    std::unique_ptr<ProjectMonitor> m_monitor;
    QHash<QString, std::optional<RecordingWork>> m_works;
};

} // namespace filmwright
