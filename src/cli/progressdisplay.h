// SPDX-License-Identifier: MIT
#pragma once

#include "project/batchprogress.h"

#include <QString>

namespace filmwright {

enum class ProgressStyle {
    ForPeople, ///< on a terminal one line that is rewritten in place, elsewhere one line a stage
    Json,      ///< one object a line, twice a second
};

/// Tells on standard error how far a recording is. Main thread only.
class ProgressDisplay
{
public:
    explicit ProgressDisplay(bool quiet, ProgressStyle style = ProgressStyle::ForPeople);
    ~ProgressDisplay();
    ProgressDisplay(const ProgressDisplay &) = delete;
    ProgressDisplay &operator=(const ProgressDisplay &) = delete;

    /// Whether anybody sees more of show() than nothing.
    bool showsFrames() const { return !m_quiet && (m_terminal || m_style == ProgressStyle::Json); }

    /// `frames` is 0 for a stage that isn't counted in frames.
    void beginStage(const QString &recording, const QString &stage, quint64 frames);
    /// How far the stage is that was begun last. Ignored where only stages are told.
    void show(const Progress &progress);
    /// The same in words; only on a terminal.
    void showText(const QString &text);
    /// Takes the live line away.
    void clear() { clearLiveLine(); }
    void finished(const QString &recording, const QString &movie);
    void skipped(const QString &recording, const QString &movie);
    /// Also when progress isn't wanted.
    void failed(const QString &recording, const QString &error);
    /// A line that stays, in place of the live one.
    void tell(const QString &line);
    /// Like tell(), also when progress isn't wanted.
    void warn(const QString &line);

private:
    void clearLiveLine();
    void showLiveLine(const QString &text);

    const bool m_quiet;
    const ProgressStyle m_style;
    const bool m_terminal;
    bool m_liveLineShown = false;
    QString m_recording;
    QString m_stage;
    QString m_label;
};

} // namespace filmwright
