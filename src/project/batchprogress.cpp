// SPDX-License-Identifier: MIT
#include "project/batchprogress.h"

#include <QLatin1Char>

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

QString timeText(TimeEstimate::Seconds time)
{
    const auto seconds = std::chrono::round<std::chrono::seconds>(time).count();
    const QString minutes = QString::number(seconds / 60 % 60);
    const QString rest = QStringLiteral(":%1").arg(seconds % 60, 2, 10, QLatin1Char('0'));
    if (seconds < 3600)
        return minutes + rest;
    return QStringLiteral("%1:%2").arg(seconds / 3600).arg(minutes, 2, QLatin1Char('0')) + rest;
}

} // namespace filmwright
