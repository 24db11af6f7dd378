// SPDX-License-Identifier: MIT
#pragma once

#include "project/recordingrun.h"
#include "project/workstage.h"

#include <QHash>

#include <deque>
#include <memory>
#include <optional>

namespace filmwright {

/// Reads the metadata of recordings whose turn hasn't come yet, one after the other and beside the
/// work, so that the time left of a batch can be told. Main thread only.
class FrameSurvey : public QObject
{
    Q_OBJECT

public:
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
    void readNext();
    void settle();

    std::deque<QString> m_recordings;
    ConversionSettings m_settings;
    std::unique_ptr<MLVProjectController> m_project;
    std::unique_ptr<RecordingRun> m_run;
    QHash<QString, std::optional<RecordingWork>> m_works;
};

} // namespace filmwright
