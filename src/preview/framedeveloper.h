// SPDX-License-Identifier: MIT
#pragma once

#include "preview/framerequest.h"
#include "preview/histogram.h"
#include "preview/toolrun.h"

#include <QFutureWatcher>
#include <QImage>

#include <deque>

namespace filmwright {

/// A frame that has been developed, or why it could not be.
struct DevelopedFrame
{
    QImage image;        ///< 8 bits a sample, Format_RGB32; null with an error
    Histogram histogram; ///< of all bits that were developed
    QString error{};     ///< a sentence; empty: none
};

/// Develops one frame at a time by the tools that make the movie, called as for the movie: the
/// frame is extracted and corrected, blended where that is asked for, developed, merged with its
/// neighbour where that is asked for. Main thread only; nothing of it blocks but the end of a tool
/// that is stopped.
class FrameDeveloper : public QObject
{
    Q_OBJECT

public:
    FrameDeveloper();
    /// Stops.
    ~FrameDeveloper() override;

    /// Starts, in this folder, which is there and empty and ends with a path separator. A request
    /// for which the recording has to be measured needs the folder of its survey, see Surveyor.
    /// Ends with ended(), unless it is stopped. Not while it is busy.
    void develop(const FrameRequest &request, const QString &folder, const QString &surveyFolder);
    /// Ends what runs; the folder is left to itself then.
    void stop();
    bool isBusy() const { return m_isBusy; }

Q_SIGNALS:
    /// It isn't busy any more.
    void ended(const filmwright::DevelopedFrame &frame);

private:
    void next();
    void callEnded();
    void readFrame();
    void frameRead();
    void end(const DevelopedFrame &frame);

    ToolRun m_tool;
    QFutureWatcher<DevelopedFrame> m_reading;
    std::deque<ToolCall> m_calls; // the one that runs is in front
    QStringList m_tiffs;
    bool m_mergesSixteenBits = false;
    bool m_isBusy = false;
};

} // namespace filmwright
