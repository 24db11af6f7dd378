// SPDX-License-Identifier: MIT
#pragma once

#include "project/batchprogress.h"

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
    /// How far the stage is that was begun last. Ignored where only stages are told.
    void show(const Progress &progress);
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
};

} // namespace filmwright
