// SPDX-License-Identifier: MIT
#include "project/batchprogress.h"

#include "runner/fixedtext.h"
#include "runner/readabletext.h"

#include <QList>
#include <QStringList>

#include <algorithm>
#include <utility>

namespace filmwright {

namespace {

/// What a recording counts in the batch; one that isn't known yet counts for next to nothing.
double weightOf(const RecordingWork &work)
{
    return static_cast<double>(std::max<quint64>(work.frames, 1)) * work.megapixels;
}

/// Frames that flow are through all of them when they are encoded.
QList<WorkStage> stagesOf(const ConversionSettings &settings)
{
    if (settings.flows())
        return {WorkStage::Encoding};
    QList<WorkStage> stages{WorkStage::Extracting, WorkStage::Converting, WorkStage::Encoding};
    if (settings.blendsAlternatingRows)
        stages.insert(1, WorkStage::Blending);
    if (settings.mergesNeighbours)
        stages.insert(stages.size() - 1, WorkStage::Merging);
    return stages;
}

/// Stages count alike, as in the recording's own bar.
double partOf(const RecordingWork &work, const StagePosition &position)
{
    if (position.stage == WorkStage::Finished)
        return 1;
    const QList<WorkStage> stages = stagesOf(work.settings);
    const auto index = stages.indexOf(position.stage);
    if (index < 0)
        return 0;
    const double within = position.frames > 0
                              ? std::min(1.0, static_cast<double>(position.done) /
                                                  static_cast<double>(position.frames))
                              : 0;
    return (static_cast<double>(index) + within) / static_cast<double>(stages.size());
}

} // namespace

BatchProgress::BatchProgress(Clock clock)
    : m_clock(std::move(clock))
{
}

void BatchProgress::setProject(const MLVProjectController *project)
{
    if (m_project && project)
        m_weightDone += weightOf(workOf(*m_project));
    else
        m_weightDone = m_part = 0;
    m_project = project;
    m_counter.reset();
    if (project)
        m_counter.emplace(*project);
    m_estimate.update({}, {}, m_clock());
}

Progress BatchProgress::update()
{
    if (!m_project)
        return {};
    const StagePosition position = m_counter->position();
    m_estimate.update(workOf(*m_project), position, m_clock());
    return {position.stage,        position.done,   position.frames,   m_estimate.framesPerSecond(),
            m_estimate.timeLeft(), batchTimeLeft(), partDone(position)};
}

double BatchProgress::partDone(const StagePosition &position)
{
    const RecordingWork work = workOf(*m_project);
    const double done = m_weightDone + weightOf(work) * partOf(work, position);
    double all = m_weightDone + weightOf(work);
    for (const RecordingWork &upcoming : m_upcoming)
        all += weightOf(upcoming);
    m_part = std::max(m_part, done / all);
    return m_part;
}

std::optional<TimeEstimate::Seconds> BatchProgress::batchTimeLeft() const
{
    auto sum = m_estimate.timeLeft();
    for (const RecordingWork &work : m_upcoming) {
        const auto time = m_estimate.timeFor(work);
        if (!sum || !time)
            return std::nullopt;
        *sum += *time;
    }
    return sum;
}

QString progressText(const Progress &progress)
{
    QStringList parts{
        QStringLiteral("%1 of %2 frames").arg(progress.framesDone).arg(progress.frames)};
    if (progress.framesPerSecond > 0)
        parts << QStringLiteral("%1 frames/s").arg(fixedText(progress.framesPerSecond, 1));
    if (progress.timeLeft)
        parts << QStringLiteral("%1 left").arg(timeText(*progress.timeLeft));
    if (progress.batchTimeLeft && progress.batchTimeLeft != progress.timeLeft)
        parts << QStringLiteral("%1 in all").arg(timeText(*progress.batchTimeLeft));
    return parts.join(QStringLiteral(", "));
}

} // namespace filmwright
