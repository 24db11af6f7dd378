// SPDX-License-Identifier: MIT
#include "project/projectmonitor.h"

#include "conversion/tiffbitmap.h"
#include "encoding/finishedmovie.h"
#include "project/mlvprojectcontroller.h"
#include "project/moviemark.h"
#include "project/spacecheck.h"
#include "runner/files.h"
#include "runner/notificationcenter.h"

#include <QFile>
#include <QFileInfo>
#include <QtConcurrent>

#include <algorithm>

namespace filmwright {

namespace {

QString failureOf(const QString &tool, int status, const QStringList &lines)
{
    return ProjectMonitor::tr("%1 ended with status %2: %3")
        .arg(tool)
        .arg(status)
        .arg(lines.isEmpty() ? ProjectMonitor::tr("it said nothing") : lines.constLast());
}

/// The whole TIFF frames of a folder, whose path ends with a separator; a disk that is full leaves
/// short ones.
int countFrames(const QString &folder)
{
    const QStringList entries = folderEntries(folder);
    return static_cast<int>(
        std::count_if(entries.cbegin(), entries.cend(), [&folder](const QString &name) {
            return QFileInfo(name).suffix() == QLatin1String("tiff") &&
                   TiffBitmap::isWhole(folder + name);
        }));
}

} // namespace

QString reasonOf(const QString &errorLine)
{
    return QString(errorLine).remove(QLatin1String("[ERROR]")).trimmed();
}

/// A camera that lost power leaves a recording that is shorter than it says.
QStringList shortcomingsOf(const MLVProjectController &project)
{
    const auto extracted = static_cast<quint64>(project.framesToConvert());
    if (extracted == 0)
        return {};
    QStringList shortcomings = project.warnings();
    if (extracted < project.videoFrames()) {
        shortcomings << ProjectMonitor::tr("only %1 of %2 frames could be read")
                            .arg(extracted)
                            .arg(project.videoFrames());
    }
    return shortcomings;
}

ProjectMonitor::ProjectMonitor(MLVProjectController &project)
    : m_project(project)
{
    // A tool that ended without having said so leaves its stage waiting for ever.
    connect(&NotificationCenter::defaultCenter(), &NotificationCenter::posted, this,
            [this](const QString &, const QObject *sender) {
                if (m_project.isTool(sender))
                    checkLater();
            });
    connect(&m_settling, &QFutureWatcherBase::finished, this,
            [this] { endWithMovie(m_settling.result()); });
    checkLater();
}

void ProjectMonitor::controllerUpdated()
{
    switch (m_project.mlvProjectMode()) {
    case MLVProjectModeRGBConversion:
        checkConversion();
        break;
    case MLVProjectModeBuildingMovie:
        checkFrames();
        break;
    default:
        break;
    }
    checkLater();
}

void ProjectMonitor::imageRGBReceived(const QImage &image)
{
    if (!image.isNull())
        return;
    ++m_missingFrames;
    // The frames that follow would fail, too, each after all its work.
    if (isTemporaryDirectoryFull(m_project))
        fail(tr("dcraw could not write a frame"));
}

void ProjectMonitor::controllerWorkError(const QString &error)
{
    fail(reasonOf(error));
}

void ProjectMonitor::controllerWorkFinished()
{
    checkMovie();
}

/// The project may be in the middle of a step; what it does right after this call counts.
void ProjectMonitor::checkLater()
{
    QMetaObject::invokeMethod(this, &ProjectMonitor::check, Qt::QueuedConnection);
}

void ProjectMonitor::check()
{
    if (m_project.isToolBusy())
        return;
    const bool hindered = !m_project.movieHindrance().isEmpty();
    switch (m_project.mlvProjectMode()) {
    case MLVProjectModeReadingData:
        fail(tr("mlv_dump ended before it had read the recording"));
        break;
    case MLVProjectModeExtracting:
        fail(hindered ? m_project.movieHindrance()
                      : tr("mlv_dump ended before it had extracted the frames"));
        break;
    case MLVProjectModeBuildingMovie:
        fail(hindered ? m_project.movieHindrance() : tr("ffmpeg could not be started"));
        break;
    default:
        break;
    }
}

void ProjectMonitor::checkConversion()
{
    if (m_project.blender().isRunning())
        return;
    const int blendStatus = m_project.blender().terminationStatus();
    if (m_project.blendsAlternatingRows() && blendStatus != 0)
        fail(failureOf(QStringLiteral("cr2hdr"), blendStatus, m_project.blender().logs()));
    if (m_project.framesToConvert() == 0)
        fail(tr("no frame could be extracted"));
    if (m_project.convertedBefore() < m_project.framesToConvert())
        dropEarlierMerges();
}

/// While a frame was missing, those around it were merged as neighbours.
void ProjectMonitor::dropEarlierMerges()
{
    if (m_project.dualISO())
        removeFolder(m_project.tiffsDirectory());
}

void ProjectMonitor::checkFrames()
{
    const int wanted = m_project.framesToConvert();
    const int there =
        std::min(wanted - m_missingFrames, countFrames(m_project.extractionDirectory()));
    if (there < wanted)
        fail(tr("dcraw converted only %1 of %2 frames").arg(there).arg(wanted));
    if (m_project.dualISO())
        checkMergedFrames(wanted - 1);
}

void ProjectMonitor::checkMergedFrames(int pairs)
{
    if (pairs == 0)
        fail(tr("its only frame has no neighbour to be merged with"));
    const int merged = countFrames(m_project.tiffsDirectory());
    if (merged < pairs)
        fail(tr("only %1 of %2 pairs of frames were merged").arg(merged).arg(pairs));
}

void ProjectMonitor::checkMovie()
{
    const QString failure = encodingFailure();
    if (!failure.isEmpty()) {
        endWithMovie(failure);
        return;
    }
    // Not on this thread: a disk may be busy with a movie for seconds.
    m_settling.setFuture(
        QtConcurrent::run([mark = m_project.movieMark()] { return mark->settle(); }));
}

/// A movie that isn't whole must not look like one.
void ProjectMonitor::endWithMovie(const QString &failure)
{
    if (failure.isEmpty()) {
        end({});
        return;
    }
    fail(failure); // sees the disk as ffmpeg left it
    QFile::remove(m_project.moviePath());
    m_project.movieMark()->remove();
}

QString ProjectMonitor::encodingFailure() const
{
    const FFmpegTask &encoder = m_project.encoder();
    if (encoder.terminationStatus() != 0)
        return failureOf(QStringLiteral("ffmpeg"), encoder.terminationStatus(), encoder.logs());
    if (!QFile::exists(encoder.moviePath()))
        return tr("ffmpeg wrote no movie");
    const auto frames = framesOfFinishedMovie(encoder.moviePath());
    if (!frames)
        return tr("ffmpeg left its movie unfinished");
    // Merging neighbours costs a frame.
    const int wanted = m_project.framesToConvert() - (m_project.dualISO() ? 1 : 0);
    if (static_cast<qint64>(*frames) < wanted)
        return tr("ffmpeg encoded only %1 of %2 frames").arg(*frames).arg(wanted);
    return {};
}

void ProjectMonitor::fail(const QString &reason)
{
    if (!m_ended)
        end(withFullDisk(reason, m_project));
}

void ProjectMonitor::end(const QString &reason)
{
    if (m_ended)
        return;
    m_ended = true;
    QMetaObject::invokeMethod(
        this, [this, reason] { Q_EMIT ended(reason); }, Qt::QueuedConnection);
}

} // namespace filmwright
