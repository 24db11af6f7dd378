// SPDX-License-Identifier: MIT
// The roads on which recordings come into the queue.
#include "app/appdelegate.h"
#include "app/progressindicator.h"
#include "app/queuetableview.h"
#include "app/rowpictures.h"
#include "app/statusline.h"
#include "project/recordingfiles.h"
#include "runner/files.h"
#include "runner/resources.h"
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
    for (const QUrl &url : urls)
        if (url.isLocalFile())
            paths << url.toLocalFile();
    return paths;
}

} // namespace

void AppDelegate::addMLVFile(const QString &path)
{
    if (!isRecordingName(path))
        return;
    if (isQueued(path)) {
        ++m_duplicates;
        return;
    }
    auto project = std::make_unique<MLVProjectController>();
    auto run = std::make_unique<RecordingRun>(*project, path, this);
    connect(run.get(), &RecordingRun::ended, this, [this, ended = run.get()] { runEnded(*ended); });
    read(*run);
    m_runs[project.get()] = std::move(run);
    m_projectList->push_back(std::move(project));
    m_recentDocuments.noteNewRecentDocument(path);
}

bool AppDelegate::isQueued(const QString &path) const
{
    return std::any_of(m_projectList->cbegin(), m_projectList->cend(),
                       [&path](const auto &project) { return project->mlvPath() == path; });
}

void AppDelegate::read(RecordingRun &run)
{
    m_readingData = true;
    m_ui->sourceItem->setEnabled(false);
    m_ui->startStopItem->setEnabled(false);
    m_pictures->forget(run.outcome().recording);
    run.read(recordingIdentity(run.outcome().recording, m_listing));
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
    if (!checkTools({mlvDumpName}))
        return;
    int answer = 1;
    if (!m_projectList->empty()) {
        answer = m_alerts.runAlert(QStringLiteral("Queue not empty"),
                                   QStringLiteral("Add to exisiting queue?"), QStringLiteral("Yes"),
                                   QStringLiteral("Replace"), otherButton);
    }
    if (answer == 0)
        replaceQueue();
    const std::size_t before = m_projectList->size();
    m_duplicates = 0;
    for (const QString &path : paths)
        if (QFileInfo(path).isDir())
            scanDirectoryForMLVFiles(path);
        else
            addMLVFile(path);
    m_listing.clear();
    m_recentDocuments.save();
    fillRecentMenu();
    endReadingWhenAllAreRead();
    m_ui->progressIndicator->setDoubleValue(m_ui->progressIndicator->minValue());
    queueChanged();
    tellAdded(m_projectList->size() - before, paths, answer < 0);
}

/// What a person may not expect.
void AppDelegate::tellAdded(std::size_t added, const QStringList &paths, bool cancelled)
{
    StatusLine &line = *m_ui->statusTextField;
    if (m_duplicates > 0) {
        line.tell(m_duplicates == 1
                      ? QStringLiteral("1 recording is in the queue already")
                      : QStringLiteral("%1 recordings are in the queue already").arg(m_duplicates));
    } else if (added == 0) {
        QStringList names;
        for (const QString &path : paths)
            names << QFileInfo(path).fileName();
        line.tell(QStringLiteral("No recordings in %1").arg(names.join(QStringLiteral(", "))));
    } else if (cancelled) {
        line.tell(added == 1 ? QStringLiteral("1 recording was added all the same")
                             : QStringLiteral("%1 recordings were added all the same").arg(added));
    }
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
    QString status = recordings == 1 ? QStringLiteral("1 recording in the queue")
                                     : QStringLiteral("%1 recordings in the queue").arg(recordings);
    status += describeStart();
    if (m_readingData)
        status = QStringLiteral("Reading recordings…");
    else if (recordings == 0)
        status = QStringLiteral("The queue is empty");
    m_ui->statusTextField->setStatus(status);
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
AppDelegate::DragOperation AppDelegate::validateDrop(const QList<QUrl> &urls) const
{
    const QStringList paths = filePaths(urls);
    const bool all = std::all_of(paths.cbegin(), paths.cend(), [](const QString &path) {
        return isRecordingName(path) || QFileInfo(path).isDir();
    });
    return !paths.isEmpty() && all ? DragOperationCopy : DragOperationNone;
}

bool AppDelegate::welcomes(const QList<QUrl> &urls)
{
    if (validateDrop(urls) == DragOperationCopy)
        return true;
    m_ui->statusTextField->tell(
        QStringLiteral("Only MLV recordings and folders can be dropped here"));
    return false;
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
    forgetRemoved();
    updateRecordingMenu();
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

} // namespace filmwright
