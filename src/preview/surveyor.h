// SPDX-License-Identifier: MIT
#pragma once

#include "preview/framerequest.h"
#include "preview/toolrun.h"

#include <deque>

namespace filmwright {

/// The files of a survey in its folder, which ends with a path separator.
QString surveyIn(const QString &folder);
QString blendSurveyIn(const QString &folder);

/// Has the tools measure once what they would measure in the whole recording for each of its
/// frames. One survey at a time; main thread only.
class Surveyor : public QObject
{
    Q_OBJECT

public:
    Surveyor();
    /// Stops.
    ~Surveyor() override;

    /// Starts, in this folder, which is there and empty and ends with a path separator. Ends with
    /// ended(), unless it is stopped. Not while it is busy.
    void survey(const FrameRequest &request, const QString &folder);
    /// Ends what runs; the folder is left to itself then.
    void stop();
    bool isBusy() const { return m_isBusy; }

Q_SIGNALS:
    /// With the error for which there is no survey, a sentence; empty: it is there. It isn't busy
    /// any more.
    void ended(const QString &error);

private:
    void callEnded();
    void end(const QString &error);

    ToolRun m_tool;
    std::deque<ToolCall> m_calls; // the one that runs is in front
    QString m_folder;
    bool m_isBusy = false;
};

} // namespace filmwright
