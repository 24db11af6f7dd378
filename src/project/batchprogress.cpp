// SPDX-License-Identifier: MIT
#include "project/batchprogress.h"

#include "runner/fixedtext.h"
#include "runner/readabletext.h"

#include <QStringList>

#include <utility>

namespace filmwright {

BatchProgress::BatchProgress(Clock clock)
    : m_clock(std::move(clock))
{
}

void BatchProgress::setProject(const MLVProjectController *project)
{
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
    return {position.stage,        position.done,  position.frames, m_estimate.framesPerSecond(),
            m_estimate.timeLeft(), batchTimeLeft()};
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
