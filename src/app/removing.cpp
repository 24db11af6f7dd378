// SPDX-License-Identifier: MIT
// How recordings leave the queue, and how those that left last come back.
#include "app/appdelegate.h"
#include "app/queuetableview.h"
#include "ui_mainwindow.h"

#include <QItemSelectionModel>

#include <algorithm>

namespace filmwright {

void AppDelegate::removeSelectedProjects()
{
    remove(selectedProjects());
}

void AppDelegate::removeFinishedProjects()
{
    remove(finishedProjects());
}

std::vector<MLVProjectController *> AppDelegate::finishedProjects() const
{
    std::vector<MLVProjectController *> finished;
    for (const auto &project : *m_projectList) {
        const RecordingOutcome::Result result = runOf(*project).outcome().result;
        if (result == RecordingOutcome::Finished || result == RecordingOutcome::Skipped)
            finished.push_back(project.get());
    }
    return finished;
}

/// Nothing stays of their work, but they themselves are kept, with all that was chosen for them,
/// until the next ones are removed.
void AppDelegate::remove(const std::vector<MLVProjectController *> &projects)
{
    if (m_working || projects.empty())
        return;
    forgetRemoved();
    for (std::size_t place = 0; place < m_projectList->size(); ++place) {
        auto &project = m_projectList->at(place);
        if (std::find(projects.cbegin(), projects.cend(), project.get()) == projects.cend())
            continue;
        auto run = std::move(m_runs.at(project.get()));
        m_runs.erase(project.get());
        std::erase(m_batch, run.get());
        m_removed.push_back({place, std::move(project), std::move(run)});
    }
    std::erase(*m_projectList, nullptr);
    for (const RemovedRecording &removed : m_removed) {
        if (removed.run->isPending())
            removed.run->stop();
        removed.run->discardWork();
    }
    endReadingWhenAllAreRead();
    queueChanged();
    updateRecordingMenu();
    tellResult(); // the rest of a batch may have waited for what was removed
}

/// Each at its old place. One that was added anew meanwhile stays as it is now.
void AppDelegate::undoRemoval()
{
    if (m_working)
        return;
    std::vector<MLVProjectController *> restored;
    for (RemovedRecording &removed : m_removed) {
        MLVProjectController &project = *removed.project;
        if (isQueued(project.mlvPath()))
            continue;
        const auto place = std::min(removed.place, m_projectList->size());
        m_runs[&project] = std::move(removed.run);
        m_projectList->insert(m_projectList->begin() + static_cast<std::ptrdiff_t>(place),
                              std::move(removed.project));
        restored.push_back(&project);
        if (project.videoFrames() == 0 && runOf(project).outcome().failure.isEmpty())
            read(*m_runs.at(&project));
    }
    std::erase_if(m_removed, [](const RemovedRecording &removed) { return !removed.project; });
    forgetRemoved();
    queueChanged();
    select(restored);
}

void AppDelegate::select(const std::vector<MLVProjectController *> &projects)
{
    QItemSelectionModel &selection = *m_ui->queueTableView->selectionModel();
    selection.clear();
    for (std::size_t place = 0; place < m_projectList->size(); ++place) {
        const auto &project = m_projectList->at(place);
        if (std::find(projects.cbegin(), projects.cend(), project.get()) != projects.cend()) {
            selection.select(m_ui->queueTableView->model()->index(rowOf(place), 0),
                             QItemSelectionModel::Select | QItemSelectionModel::Rows);
        }
    }
}

/// A project may be in the middle of a call that led here.
void AppDelegate::forgetRemoved()
{
    for (RemovedRecording &removed : m_removed) {
        removed.run->detach();
        removed.run.release()->deleteLater(); // before its project
        removed.project.release()->deleteLater();
    }
    m_removed.clear();
}

} // namespace filmwright
