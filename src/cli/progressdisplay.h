// SPDX-License-Identifier: MIT
#pragma once

#include <QElapsedTimer>
#include <QString>

namespace filmwright {

/// Tells on standard error how far a recording is: on a terminal by one line that is rewritten in
/// place, elsewhere by one line a stage. Main thread only.
class ProgressDisplay
{
public:
    explicit ProgressDisplay(bool quiet);
    ~ProgressDisplay();
    ProgressDisplay(const ProgressDisplay &) = delete;
    ProgressDisplay &operator=(const ProgressDisplay &) = delete;

    /// `name` is the recording's; `frames` is 0 for a stage that isn't counted in frames.
    void beginStage(const QString &name, const QString &stage, quint64 frames);
    /// How many of the stage's frames are done. Ignored where only stages are told.
    void setFramesDone(quint64 done);
    /// A line that stays, in place of the live one.
    void tell(const QString &line);
    /// Like tell(), also when progress isn't wanted.
    void warn(const QString &line);

private:
    void clearLiveLine();
    void showLiveLine(const QString &text);

    const bool m_quiet;
    const bool m_terminal;
    bool m_liveLineShown = false;
    QString m_label;
    quint64 m_frames = 0;
    quint64 m_framesAtStart = 0;
    bool m_counting = false;
    QElapsedTimer m_stageTime;
};

/// "12 of 48 frames, 3.1 frames/s, 0:12 left"; the rate and the time only once they are known.
/// `rate` is in frames a second.
QString progressText(quint64 done, quint64 frames, double rate);

} // namespace filmwright
