// SPDX-License-Identifier: MIT
#pragma once

#include "cli/recordingconversion.h"

#include <QObject>
#include <QSet>

#include <deque>
#include <memory>

namespace filmwright {

/// Converts recordings one after the other; one that fails doesn't hold up the others. Main thread
/// only.
class ConversionQueue : public QObject
{
    Q_OBJECT

public:
    ConversionQueue(const QStringList &recordings, ProgressDisplay &display);
    ~ConversionQueue() override;

    void start(const ConversionSettings &settings);
    /// Stops the running recording; nothing is told any more.
    void stop();

    qsizetype failures() const { return m_failures; }

Q_SIGNALS:
    void movieFinished(const QString &path);
    void finished();

private:
    void next();
    void recordingEnded(const QString &reason);
    QString refusal(const QString &recording);
    void fail(const QString &recording, const QString &reason);

    std::deque<QString> m_recordings;
    BatchProgress m_progress;
    ProgressDisplay &m_display;
    ConversionSettings m_settings;
    std::unique_ptr<RecordingConversion> m_current;
    QSet<QString> m_movies;
    qsizetype m_failures = 0;
};

} // namespace filmwright
