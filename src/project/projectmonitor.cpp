// SPDX-License-Identifier: MIT
#include "project/projectmonitor.h"

#include "conversion/tiffbitmap.h"
#include "project/mlvprojectcontroller.h"
#include "runner/files.h"
#include "runner/notificationcenter.h"

#include <QFile>
#include <QFileInfo>

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

ProjectMonitor::ProjectMonitor(MLVProjectController &project)
    : m_project(project)
{
    // A tool that ended without having said so leaves its stage waiting for ever.
    connect(&NotificationCenter::defaultCenter(), &NotificationCenter::posted, this,
            &ProjectMonitor::checkLater);
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
    if (image.isNull())
        ++m_missingFrames;
}

void ProjectMonitor::controllerWorkError(const QString &error)
{
    end(reasonOf(error));
}

void ProjectMonitor::controllerWorkFinished()
{
    end(encodingFailure());
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
    switch (m_project.mlvProjectMode()) {
    case MLVProjectModeReadingData:
        end(tr("mlv_dump ended before it had read the recording"));
        break;
    case MLVProjectModeExtracting:
        end(tr("mlv_dump ended before it had extracted the frames"));
        break;
    case MLVProjectModeBuildingMovie:
        end(tr("ffmpeg could not be started"));
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
        end(failureOf(QStringLiteral("cr2hdr"), blendStatus, m_project.blender().logs()));
    if (m_project.framesToConvert() == 0)
        end(tr("no frame could be extracted"));
}

void ProjectMonitor::checkFrames()
{
    const int wanted = m_project.framesToConvert();
    const int there =
        std::min(wanted - m_missingFrames, countFrames(m_project.extractionDirectory()));
    if (there < wanted)
        end(tr("dcraw converted only %1 of %2 frames").arg(there).arg(wanted));
    if (m_project.dualISO())
        checkMergedFrames(wanted - 1);
}

void ProjectMonitor::checkMergedFrames(int pairs)
{
    const int merged = countFrames(m_project.tiffsDirectory());
    if (merged < pairs)
        end(tr("only %1 of %2 pairs of frames were merged").arg(merged).arg(pairs));
}

QString ProjectMonitor::encodingFailure() const
{
    const FFmpegTask &encoder = m_project.encoder();
    if (encoder.terminationStatus() != 0) {
        QFile::remove(encoder.moviePath()); // a partial movie must not look like a whole one
        return failureOf(QStringLiteral("ffmpeg"), encoder.terminationStatus(), encoder.logs());
    }
    return QFile::exists(encoder.moviePath()) ? QString() : tr("ffmpeg wrote no movie");
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
