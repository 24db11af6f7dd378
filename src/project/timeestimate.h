// SPDX-License-Identifier: MIT
#pragma once

#include "project/workstage.h"

#include <array>
#include <chrono>
#include <deque>
#include <optional>

namespace filmwright {

/// Tells from what was done how long the rest takes.
///
/// A stage that is running goes on as fast as it went lately; one that is still to come takes as
/// long as it took in earlier recordings of the batch, or else its usual share of the time. Nothing
/// is foretold from the extraction alone, which depends on the disk, unless the frames stay raw;
/// the estimate is steady from the moment on at which some frames are converted.
class TimeEstimate
{
public:
    using TimePoint = std::chrono::steady_clock::time_point;
    using Seconds = std::chrono::duration<double>;

    /// How far the current recording is. Called about twice a second, times never going back.
    void update(const RecordingWork &work, const StagePosition &position, TimePoint now);

    /// Of the current stage, over the last ten seconds (over the time since the last frame but some
    /// where frames are rarer than that); 0 while it isn't known.
    double framesPerSecond() const;

    /// For the rest of the current recording; none while nothing but extraction was measured.
    std::optional<Seconds> timeLeft() const;

    /// For a whole recording; none while nothing but extraction was measured or its frames aren't
    /// known.
    std::optional<Seconds> timeFor(const RecordingWork &work) const;

private:
    struct Sample
    {
        TimePoint time;
        quint64 done = 0;
    };
    /// How much slower or faster than usual: seconds that were measured and those that are usual.
    struct Experience
    {
        double measured = 0;
        double usual = 0;
    };

    void beginStage(const RecordingWork &work, const StagePosition &position);
    void keepSample(const Sample &sample);
    Experience lately() const;
    Experience wholeStage() const;
    Experience computing() const;
    double slowness(WorkStage stage) const;
    bool isInformed() const;

    static constexpr std::size_t stages = static_cast<std::size_t>(WorkStage::Finished) + 1;
    std::array<Experience, stages> m_earlier;
    RecordingWork m_work;
    StagePosition m_position;
    Sample m_begin;               // where the measuring of the current stage began
    std::deque<Sample> m_samples; // the last of the current stage
};

} // namespace filmwright
