// SPDX-License-Identifier: MIT
// The roads on which recordings come into the queue, and the one on which they leave it.
#include "app/appdelegate.h"
#include "app/queuetableview.h"
#include "project/recordingfiles.h"
#include "runner/files.h"
#include "runner/temporarydirectory.h"
#include "ui_mainwindow.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>

namespace filmwright {

namespace {

QStringList filePaths(const QList<QUrl> &urls)
{
    QStringList paths;
    for (const QUrl &url : urls) {
        if (url.isLocalFile())
            paths << url.toLocalFile();
    }
    return paths;
}

} // namespace

void AppDelegate::addMLVFile(const QString &path)
{
    if (!isRecordingName(path))
        return;
    if (std::any_of(m_projectList->cbegin(), m_projectList->cend(),
                    [&path](const auto &project) { return project->mlvPath() == path; }))
        return;
    m_readingData = true;
    m_ui->sourceItem->setEnabled(false);
    m_ui->startStopItem->setEnabled(false);
    auto project = std::make_unique<MLVProjectController>();
    auto run = std::make_unique<RecordingRun>(*project, path, this);
    connect(run.get(), &RecordingRun::ended, this, [this, ended = run.get()] { runEnded(*ended); });
    run->read();
    m_runs[project.get()] = std::move(run);
    m_projectList->push_back(std::move(project));
    m_recentDocuments.noteNewRecentDocument(path);
}

/// A link that leads back to a folder above is followed like any other; the file system ends that
/// after 40 links. What is in the temporary directory are no recordings, but averages and frames.
void AppDelegate::scanDirectoryForMLVFiles(const QString &folder)
{
    if (QFileInfo(folder).canonicalFilePath() ==
        QFileInfo(temporaryDirectory()).canonicalFilePath())
        return;
    for (const QString &name : folderEntries(folder)) {
        const QString path = QDir(folder).filePath(name);
        if (QFileInfo(path).isDir())
            scanDirectoryForMLVFiles(path);
        else if (isRecordingName(path))
            addMLVFile(path);
    }
}

/// Any answer but "Replace" keeps the queue; so does the "Cancel" of a drop, which adds as well.
void AppDelegate::addFiles(const QStringList &paths, const QString &otherButton)
{
    if (!checkTools({QStringLiteral("mlv_dump")}))
        return;
    if (!m_projectList->empty() &&
        m_alerts.runAlert(QStringLiteral("Queue not empty"),
                          QStringLiteral("Add to exisiting queue?"), QStringLiteral("Yes"),
                          QStringLiteral("Replace"), otherButton) == 0)
        replaceQueue();
    for (const QString &path : paths) {
        if (QFileInfo(path).isDir())
            scanDirectoryForMLVFiles(path);
        else
            addMLVFile(path);
    }
    m_recentDocuments.save();
    fillRecentMenu();
    endReadingWhenAllAreRead();
    queueChanged();
}

/// The table, the status line and Start tell the truth after every change of the queue.
void AppDelegate::queueChanged()
{
    m_ui->queueTableView->reloadData();
    if (m_working)
        return;
    m_stopped = false;
    const auto recordings = m_projectList->size();
    m_ui->startStopItem->setEnabled(!m_readingData && recordings > 0);
    QString status = QStringLiteral("%1 recordings in the queue").arg(recordings);
    if (m_readingData)
        status = QStringLiteral("Reading recordings…");
    else if (recordings == 0)
        status = QStringLiteral("The queue is empty");
    else if (recordings == 1)
        status = QStringLiteral("1 recording in the queue");
    m_ui->statusTextField->setText(status);
}

void AppDelegate::openFile()
{
    if (m_working) {
        refuseWhileWorking();
        return;
    }
    const QStringList paths = m_panel.recordingsAndFolders();
    if (!paths.isEmpty())
        addFiles(paths, QString());
}

void AppDelegate::application(const QStringList &openFiles)
{
    appInitialization();
    m_alerts.whenNoneIsOpen([this, openFiles] {
        if (m_working)
            refuseWhileWorking();
        else
            addFiles(openFiles, QString());
    });
}

void AppDelegate::applicationOpenFiles(const QStringList &paths)
{
    application(paths);
}

/// Whether a batch runs isn't looked at here; the drop tells.
QueueTableDataSource::DragOperation AppDelegate::validateDrop(const QList<QUrl> &urls) const
{
    const QStringList paths = filePaths(urls);
    const bool all = std::all_of(paths.cbegin(), paths.cend(), [](const QString &path) {
        return isRecordingName(path) || QFileInfo(path).isDir();
    });
    return !paths.isEmpty() && all ? DragOperationCopy : DragOperationNone;
}

bool AppDelegate::acceptDrop(const QList<QUrl> &urls)
{
    if (m_working) {
        refuseWhileWorking();
        return false;
    }
    addFiles(filePaths(urls), QStringLiteral("Cancel"));
    return true;
}

void AppDelegate::refuseWhileWorking()
{
    m_alerts.runAlert(QStringLiteral("Please wait"),
                      QStringLiteral("Operation not allowed while working."), QStringLiteral("Ok"));
}

void AppDelegate::replaceQueue()
{
    discard(*m_projectList);
    m_ui->queueTableView->reloadData();
}

/// Their last reports go to nobody, and nothing stays of their work. A project may be in the middle
/// of a call that led here.
void AppDelegate::discard(ProjectList &projects)
{
    for (auto &project : projects) {
        RecordingRun *run = m_runs.at(project.get()).release();
        m_runs.erase(project.get());
        std::erase(m_batch, run);
        run->detach();
        run->discardWork();
        run->deleteLater(); // before its project
        project.release()->deleteLater();
    }
    projects.clear();
}

void AppDelegate::removeSelectedProjects()
{
    if (m_working)
        return;
    const std::vector<MLVProjectController *> selected = selectedProjects();
    const auto kept = std::stable_partition(
        m_projectList->begin(), m_projectList->end(), [&selected](const auto &project) {
            return std::find(selected.cbegin(), selected.cend(), project.get()) == selected.cend();
        });
    ProjectList removed(std::make_move_iterator(kept),
                        std::make_move_iterator(m_projectList->end()));
    m_projectList->erase(kept, m_projectList->end());
    discard(removed);
    endReadingWhenAllAreRead();
    queueChanged();
    tellResult(); // the rest of a batch may have waited for what was removed
}

} // namespace filmwright
