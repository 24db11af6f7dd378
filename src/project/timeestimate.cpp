// SPDX-License-Identifier: MIT
#include "project/timeestimate.h"

#include "encoding/encodercost.h"
#include "encoding/ffmpegarguments.h"

#include <QThread>

#include <algorithm>
#include <initializer_list>
#include <iterator>

using namespace std::chrono_literals;

namespace filmwright {

namespace {

using Seconds = TimeEstimate::Seconds;

/// Long enough that one slow frame doesn't shake the estimate, short enough that it follows a
/// machine that gets other work.
constexpr auto memory = 60s;
constexpr quint64 framesToRemember = 10;
constexpr auto rateWindow = 10s;

/// Positions come twice a second; in less time than this a frame more or less makes a difference.
constexpr double enoughSeconds = 2;

constexpr std::initializer_list<WorkStage> countedStages{WorkStage::Extracting, WorkStage::Blending,
                                                         WorkStage::Converting, WorkStage::Merging,
                                                         WorkStage::Encoding};

/// What counts is the ratio of the stages.
double encodingSeconds(const ConversionSettings &settings)
{
    if (!settings.recipe)
        return encodingSecondsOfMegapixel(settings.format, settings.quality);
    return settings.recipe->keepsRawFrames() ? 0 : encoderCost(*settings.recipe).secondsOfMegapixel;
}

bool developsFrames(const RecordingWork &work)
{
    return movieKindOf(work.settings.recipe) == MovieKind::File;
}

/// What a frame usually takes in a stage where all frames go through it before the next.
double usualSecondsAlone(WorkStage stage, const RecordingWork &work)
{
    const int cores = std::max(1, QThread::idealThreadCount());
    switch (stage) {
    case WorkStage::Extracting:
        return work.megapixels * 0.004;
    case WorkStage::Blending:
        return work.settings.blendsAlternatingRows ? work.megapixels * 0.1 / cores : 0;
    case WorkStage::Converting:
        return developsFrames(work) ? work.megapixels * 0.012 / cores : 0; // each uses all of them
    case WorkStage::Merging:
        return work.settings.mergesNeighbours ? work.megapixels * 0.005 : 0;
    case WorkStage::Encoding:
        return work.megapixels * encodingSeconds(work.settings) / cores;
    default:
        return 0;
    }
}

/// What a frame usually takes in a stage. Where frames flow, the stages share the cores, and the
/// last one tells what came through all of them.
double usualSeconds(WorkStage stage, const RecordingWork &work)
{
    if (!work.settings.flows())
        return usualSecondsAlone(stage, work);
    double seconds = 0;
    if (stage == WorkStage::Encoding)
        for (const WorkStage part : countedStages)
            seconds += usualSecondsAlone(part, work);
    return seconds;
}

} // namespace

void TimeEstimate::update(const RecordingWork &work, const StagePosition &position, TimePoint now)
{
    const bool sameStage = position.stage == m_position.stage && position.done >= m_position.done;
    if (!sameStage)
        beginStage(work, position);
    m_work = work;
    m_position = position;
    if (!m_samples.empty() && m_samples.back().done < position.reused)
        m_samples.clear(); // those frames cost nothing
    keepSample({now, position.done});
}

/// The measured part of the stage that ends here counts from now on as experience.
void TimeEstimate::beginStage(const RecordingWork &work, const StagePosition &position)
{
    const Experience last = wholeStage();
    Experience &earlier = m_earlier.at(static_cast<std::size_t>(m_position.stage));
    earlier.measured += last.measured;
    earlier.usual += last.usual;
    m_work = work;
    m_position = position;
    m_samples.clear();
}

void TimeEstimate::keepSample(const Sample &sample)
{
    if (m_samples.empty())
        m_begin = sample;
    m_samples.push_back(sample);
    // The oldest goes when the next one reaches back far enough, too.
    while (m_samples.size() > 2 && sample.time - m_samples.at(1).time >= memory &&
           sample.done - m_samples.at(1).done >= framesToRemember)
        m_samples.pop_front();
}

double TimeEstimate::framesPerSecond() const
{
    if (m_samples.empty())
        return 0;
    const Sample &last = m_samples.back();
    for (auto sample = m_samples.rbegin(); sample != m_samples.rend(); ++sample) {
        const bool isOldest = std::next(sample) == m_samples.rend();
        const bool farEnough = last.time - sample->time >= rateWindow && last.done > sample->done;
        const Seconds span = last.time - sample->time;
        if ((farEnough || isOldest) && span > Seconds::zero())
            return static_cast<double>(last.done - sample->done) / span.count();
    }
    return 0;
}

TimeEstimate::Experience TimeEstimate::lately() const
{
    if (m_samples.empty())
        return {};
    const Sample &first = m_samples.front();
    const Sample &last = m_samples.back();
    return {Seconds(last.time - first.time).count(),
            static_cast<double>(last.done - first.done) * usualSeconds(m_position.stage, m_work)};
}

TimeEstimate::Experience TimeEstimate::wholeStage() const
{
    if (m_samples.empty())
        return {};
    const Sample &last = m_samples.back();
    return {Seconds(last.time - m_begin.time).count(),
            static_cast<double>(last.done - m_begin.done) * usualSeconds(m_position.stage, m_work)};
}

double TimeEstimate::slowness(WorkStage stage) const
{
    if (stage == m_position.stage) {
        if (const Experience last = lately(); last.usual > 0 && last.measured >= enoughSeconds)
            return last.measured / last.usual;
    }
    if (const Experience &earlier = m_earlier.at(static_cast<std::size_t>(stage));
        earlier.usual > 0)
        return earlier.measured / earlier.usual;
    // Not met yet: as slow as everything else on this machine.
    const Experience all = computing();
    return all.measured / all.usual;
}

/// All that was measured but the extraction: a slow disk says nothing of the processor. Frames that
/// stay raw have nothing else.
TimeEstimate::Experience TimeEstimate::computing() const
{
    const auto counts = [this](WorkStage stage) {
        return stage != WorkStage::Extracting || !developsFrames(m_work);
    };
    Experience all;
    if (counts(m_position.stage))
        all = wholeStage();
    for (const WorkStage stage : countedStages) {
        if (!counts(stage))
            continue;
        all.measured += m_earlier.at(static_cast<std::size_t>(stage)).measured;
        all.usual += m_earlier.at(static_cast<std::size_t>(stage)).usual;
    }
    return all;
}

bool TimeEstimate::isInformed() const
{
    const Experience all = computing();
    return all.usual > 0 && all.measured >= enoughSeconds;
}

std::optional<Seconds> TimeEstimate::timeLeft() const
{
    if (!isInformed() || m_work.frames == 0 || m_position.stage == WorkStage::Waiting)
        return std::nullopt;
    if (m_position.stage == WorkStage::Finished)
        return Seconds(0);
    double seconds = 0;
    for (const WorkStage stage : countedStages) {
        if (stage < m_position.stage)
            continue;
        const quint64 frames =
            stage == m_position.stage
                ? m_position.frames - std::min(m_position.frames, m_position.done)
                : m_work.frames;
        seconds += static_cast<double>(frames) * usualSeconds(stage, m_work) * slowness(stage);
    }
    return Seconds(seconds);
}

std::optional<Seconds> TimeEstimate::timeFor(const RecordingWork &work) const
{
    if (!isInformed() || work.frames == 0)
        return std::nullopt;
    double seconds = 0;
    for (const WorkStage stage : countedStages)
        seconds += static_cast<double>(work.frames) * usualSeconds(stage, work) * slowness(stage);
    return Seconds(seconds);
}

} // namespace filmwright
