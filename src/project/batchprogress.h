// SPDX-License-Identifier: MIT
#pragma once

#include "project/timeestimate.h"

#include <functional>
#include <optional>
#include <vector>

namespace filmwright {

/// How far a batch is.
struct Progress
{
    WorkStage stage = WorkStage::Waiting;
    quint64 framesDone = 0;
    quint64 frames = 0;         ///< of the stage; 0: it isn't counted in frames
    double framesPerSecond = 0; ///< over the last ten seconds; 0: not known
    /// Of the recording. Known once a frame was converted, in a later recording at once; steady
    /// from about a tenth of it on.
    std::optional<TimeEstimate::Seconds> timeLeft;
    /// Of the recording and all upcoming ones; none while the frames of one of them aren't known.
    std::optional<TimeEstimate::Seconds> batchTimeLeft;
    /// Of the batch's work that is done, 0 to 1, counted in frames and stages; never falls.
    double part = 0;
};

/// Watches the recordings of a batch, one after the other, for whoever shows how far they are. One
/// object serves the whole batch: what it learns from a recording makes it know better of the next.
/// Main thread only.
class BatchProgress
{
public:
    using Clock = std::function<TimeEstimate::TimePoint()>;

    explicit BatchProgress(Clock clock = std::chrono::steady_clock::now);

    /// The project whose turn it is, from before its launch; not owned. Until the next one, which
    /// takes it for done, or until nullptr, the end of the batch: to be set before it goes away.
    void setProject(const MLVProjectController *project);

    /// The recordings after the current one. A work without frames is one that isn't known yet.
    void setUpcoming(std::vector<RecordingWork> upcoming) { m_upcoming = std::move(upcoming); }

    /// Looks at the project. Called about twice a second and at each change of its mode, so that
    /// the rate of the last seconds is known.
    Progress update();

private:
    std::optional<TimeEstimate::Seconds> batchTimeLeft() const;
    double partDone(const StagePosition &position);

    Clock m_clock;
    TimeEstimate m_estimate;
    std::optional<StageCounter> m_counter;
    const MLVProjectController *m_project = nullptr;
    std::vector<RecordingWork> m_upcoming;
    double m_weightDone = 0; // of the recordings before the current one
    double m_part = 0;
};

/// "12 of 48 frames, 3.1 frames/s, 0:40 left, 5:20 in all"; the rate and the times only once they
/// are known, that of the batch only where it is another than the recording's.
QString progressText(const Progress &progress);

} // namespace filmwright
