// SPDX-License-Identifier: MIT
#include "app/failurewatch.h"

#include "project/mlvprojectcontroller.h"
#include "project/projectmonitor.h"

namespace filmwright {

namespace {

/// A run that no tool and no frame in work will carry on.
bool isStuck(const MLVProjectController &project)
{
    switch (project.mlvProjectMode()) {
    case MLVProjectModeReadingData:
    case MLVProjectModeExtracting:
    case MLVProjectModeBuildingMovie:
        return !project.isToolBusy();
    case MLVProjectModeRGBConversion:
        return !project.isToolBusy() && project.framesToConvert() == 0;
    default:
        return false;
    }
}

/// What the tool that the reason names has printed last.
QString lastLines(const MLVProjectController &project, const QString &reason)
{
    const QMap<QString, QStringList> printed = project.lastToolLines();
    for (auto tool = printed.cbegin(); tool != printed.cend(); ++tool) {
        if (reason.contains(tool.key()))
            return tool->join(QLatin1Char('\n'));
    }
    return {};
}

} // namespace

FailureWatch::FailureWatch() = default;
FailureWatch::~FailureWatch() = default;

void FailureWatch::watch(MLVProjectController &project)
{
    m_failures.remove(&project);
    auto monitor = std::make_unique<ProjectMonitor>(project);
    connect(monitor.get(), &ProjectMonitor::ended, this,
            [this, &project](const QString &reason) { end(project, reason); });
    m_monitors[&project] = std::move(monitor);
}

void FailureWatch::forget(MLVProjectController &project)
{
    m_monitors.erase(&project);
    m_failures.remove(&project);
}

void FailureWatch::forgetAll()
{
    m_monitors.clear();
    m_failures.clear();
}

void FailureWatch::controllerUpdated(MLVProjectController &project)
{
    const auto found = m_monitors.find(&project);
    if (found == m_monitors.end())
        return;
    found->second->controllerUpdated();
    if (project.mlvProjectMode() != MLVProjectModeRGBConversion)
        return;
    for (const QString &shortcoming : shortcomingsOf(project))
        note(project, shortcoming);
}

void FailureWatch::imageRGBReceived(const QImage &image, MLVProjectController &project)
{
    const auto found = m_monitors.find(&project);
    if (found != m_monitors.end())
        found->second->imageRGBReceived(image);
}

void FailureWatch::controllerWorkFinished(MLVProjectController &project)
{
    const auto found = m_monitors.find(&project);
    if (found != m_monitors.end())
        found->second->controllerWorkFinished();
}

void FailureWatch::note(MLVProjectController &project, const QString &failure)
{
    QString &known = m_failures[&project];
    if (!known.contains(failure))
        known = known.isEmpty() ? failure : known + QLatin1Char('\n') + failure;
}

QString FailureWatch::failure(const MLVProjectController &project) const
{
    return m_failures.value(&project);
}

bool FailureWatch::isPending(const MLVProjectController &project) const
{
    return m_monitors.contains(&project);
}

/// The monitor is in the middle of its signal.
void FailureWatch::end(MLVProjectController &project, const QString &reason)
{
    const auto found = m_monitors.find(&project);
    if (found == m_monitors.end())
        return;
    found->second.release()->deleteLater();
    m_monitors.erase(found);
    if (!reason.isEmpty()) {
        note(project, reason);
        const QString lines = lastLines(project, reason);
        if (!lines.isEmpty())
            note(project, lines);
    }
    Q_EMIT judged(&project, isStuck(project));
}

} // namespace filmwright
