// SPDX-License-Identifier: MIT
#include "project/batchprogress.h"

#include <QCoreApplication>
#include <QLatin1Char>
#include <QStringList>

#include <utility>

namespace filmwright {

namespace {

QString text(const char *source)
{
    return QCoreApplication::translate("BatchProgress", source);
}

} // namespace

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

QString progressText(const Progress &progress)
{
    QStringList parts{text("%1 of %2 frames").arg(progress.framesDone).arg(progress.frames)};
    if (progress.framesPerSecond > 0)
        parts << text("%1 frames/s").arg(QString::number(progress.framesPerSecond, 'f', 1));
    if (progress.timeLeft)
        parts << text("%1 left").arg(timeText(*progress.timeLeft));
    if (progress.batchTimeLeft && progress.batchTimeLeft != progress.timeLeft)
        parts << text("%1 in all").arg(timeText(*progress.batchTimeLeft));
    return parts.join(QStringLiteral(", "));
}

} // namespace filmwright
