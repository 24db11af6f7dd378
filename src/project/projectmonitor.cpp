// SPDX-License-Identifier: MIT
#include "project/projectmonitor.h"

#include "conversion/tiffbitmap.h"
#include "encoding/finishedmovie.h"
#include "project/framefolder.h"
#include "project/framesize.h"
#include "project/mlvprojectcontroller.h"
#include "project/moviemark.h"
#include "project/moviespace.h"
#include "project/spacecheck.h"
#include "runner/files.h"
#include "runner/notificationcenter.h"
#include "runner/resources.h"

#include <QFile>
#include <QFileInfo>
#include <QtConcurrent>

#include <algorithm>
#include <chrono>

using namespace std::chrono_literals;

namespace filmwright {

namespace {

const QString withoutNeighbour =
    QStringLiteral("its only frame has no neighbour to be merged with");

/// The rate that ffmpeg would be given has two decimals.
constexpr float leastRate = 0.005F;

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

QString errorOf(const QString &errorLine)
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
    if (extracted < project.framesToExtract()) {
        shortcomings << QStringLiteral("only %1 of %2 frames could be read")
                            .arg(extracted)
                            .arg(project.framesToExtract());
    }
    return shortcomings;
}

ProjectMonitor::ProjectMonitor(MLVProjectController &project, Work work,
                               MLVProjectControllerProtocol *listener)
    : m_project(project)
    , m_work(work)
    , m_listener(listener)
{
    project.setDelegate(this);
    // A tool that ended without having said so leaves its stage waiting for ever.
    connect(&NotificationCenter::defaultCenter(), &NotificationCenter::posted, this,
            [this](const QString &, const QObject *sender) {
                if (m_project.isTool(sender))
                    checkLater();
            });
    connect(&m_settling, &QFutureWatcherBase::finished, this,
            [this] { endWithMovie({m_settling.result()}); });
    connect(&m_roomTimer, &QTimer::timeout, this, &ProjectMonitor::checkRoom);
    if (work == Conversion)
        m_roomTimer.start(1s);
    checkLater();
}

ProjectMonitor::~ProjectMonitor()
{
    m_project.setDelegate(nullptr);
}

void ProjectMonitor::controllerUpdated(MLVProjectController &controller)
{
    switch (m_project.mlvProjectMode()) {
    case MLVProjectModeReady:
        checkReport();
        break;
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
    if (m_listener)
        m_listener->controllerUpdated(controller);
}

void ProjectMonitor::imageRGBReceived(const QImage &image, MLVProjectController &forController)
{
    checkImage(image);
    if (m_listener)
        m_listener->imageRGBReceived(image, forController);
}

/// A report that has told of an error may go on as if nothing had happened.
void ProjectMonitor::controllerWorkError(const QString &error)
{
    Failure failure{errorOf(error), mlvDumpName, {}, true};
    if (m_work == Reading)
        m_errorInReport = std::move(failure);
    else
        fail(failure);
    if (m_listener)
        m_listener->controllerWorkError(error);
}

void ProjectMonitor::controllerWorkFinished(MLVProjectController &controller)
{
    checkMovie();
    if (m_listener)
        m_listener->controllerWorkFinished(controller);
}

/// The project may be in the middle of a step; what it does right after this call counts.
void ProjectMonitor::checkLater()
{
    QMetaObject::invokeMethod(this, &ProjectMonitor::check, Qt::QueuedConnection);
}

void ProjectMonitor::check()
{
    if (m_ended)
        return;
    if (m_project.flow()) {
        checkFlow(*m_project.flow());
        return;
    }
    if (m_project.isToolBusy())
        return;
    if (m_work == Reading) {
        if (m_project.mlvProjectMode() == MLVProjectModeIdle)
            return; // stopped
        fail(m_errorInReport.isEmpty()
                 ? failureOf(mlvDumpName,
                             QStringLiteral("mlv_dump ended before it had read the recording"))
                 : m_errorInReport);
        return;
    }
    const QString movieError = m_project.movieError();
    switch (m_project.mlvProjectMode()) {
    case MLVProjectModeExtracting:
        if (!movieError.isEmpty())
            fail({movieError});
        else if (const QString error = m_project.unusableError(); !error.isEmpty())
            fail({error, mlvDumpName});
        else
            fail(failureOf(mlvDumpName,
                           QStringLiteral("mlv_dump ended before it had extracted the frames")));
        break;
    case MLVProjectModeBuildingMovie:
        fail(movieError.isEmpty()
                 ? failureOf(ffmpegName, QStringLiteral("ffmpeg could not be started"))
                 : Failure{movieError});
        break;
    default:
        break;
    }
}

/// Its tools wait for each other, so that one that isn't there any more is seen beside the others.
void ProjectMonitor::checkFlow(const FrameFlow &flow)
{
    if (const QString movieError = m_project.movieError(); !movieError.isEmpty())
        fail({movieError});
    else if (!flow.error().isEmpty())
        fail({flow.error()});
    else if (const QString error = m_project.unusableError();
             flow.lacksReader() && !error.isEmpty())
        fail({error, mlvDumpName});
    else if (flow.lacksReader())
        fail(failureOf(mlvDumpName,
                       QStringLiteral("mlv_dump ended before it had extracted the frames")));
    else if (flow.lacksBlender())
        fail({QStringLiteral("cr2hdr could not be started"), cr2hdrName});
    else if (flow.hasEncoder() && !m_project.encoder().isRunning())
        fail(failureOf(ffmpegName, QStringLiteral("ffmpeg could not be started")));
    else if (m_project.dualISO() && m_project.framesToConvert() == 1)
        fail({withoutNeighbour});
}

void ProjectMonitor::checkReport()
{
    if (!m_errorInReport.isEmpty())
        fail(m_errorInReport);
    else if (const QString error = m_project.unusableError(); !error.isEmpty())
        fail({error, mlvDumpName});
    else if (!(m_project.fps() >= leastRate))
        fail({QStringLiteral("no movie can be made of 0 frames a second, its frame rate")});
    else
        end({});
}

void ProjectMonitor::checkConversion()
{
    if (m_project.blender().isRunning())
        return;
    const int blendStatus = m_project.blender().terminationStatus();
    if (m_project.blendsAlternatingRows() && blendStatus != 0)
        fail(endOf(cr2hdrName, blendStatus, m_project.blender().logs()));
    if (m_project.framesToConvert() == 0)
        fail({QStringLiteral("no frame could be extracted")});
    if (m_project.convertedBefore() < m_project.framesToConvert())
        dropEarlierMerges();
}

/// While a frame was missing, those around it were merged as neighbours.
void ProjectMonitor::dropEarlierMerges()
{
    if (m_project.dualISO())
        removeFolder(m_project.tiffsDirectory());
}

void ProjectMonitor::checkImage(const QImage &image)
{
    if (image.isNull()) {
        ++m_missingFrames;
        // The frames that follow would fail, too, each after all its work.
        if (isTemporaryDirectoryFull(m_project))
            fail(failureOf(dcrawName, QStringLiteral("dcraw could not write a frame")));
        else if (m_project.flow()) // which needs each of them
            fail(failureOf(dcrawName, QStringLiteral("dcraw could not convert a frame")));
    } else if (const QString error =
                   sizeError(image.size(), m_project.movieFormat(), m_project.recipe());
               !error.isEmpty()) {
        fail({error});
    }
}

void ProjectMonitor::checkFrames()
{
    if (m_project.flow())
        return; // they are looked at one by one
    const int wanted = m_project.framesToConvert();
    const int there =
        std::min(wanted - m_missingFrames, countFrames(m_project.extractionDirectory()));
    if (there < wanted)
        fail(failureOf(
            dcrawName,
            QStringLiteral("dcraw converted only %1 of %2 frames").arg(there).arg(wanted)));
    if (m_project.dualISO())
        checkMergedFrames(wanted - 1);
}

void ProjectMonitor::checkMergedFrames(int pairs)
{
    if (pairs == 0)
        fail({withoutNeighbour});
    const int merged = countFrames(m_project.tiffsDirectory());
    if (merged < pairs)
        fail({QStringLiteral("only %1 of %2 pairs of frames were merged").arg(merged).arg(pairs)});
}

/// How large the movies of most recipes get is only known while they grow.
void ProjectMonitor::checkRoom()
{
    const FFmpegTask &encoder = m_project.encoder();
    if (m_ended || !m_project.recipe() || !encoder.isRunning())
        return;
    const QString movie = encoder.moviePath();
    const GrowingMovie growing{movie, static_cast<double>(QFileInfo(movie).size()),
                               encoder.encodedFrames(),
                               static_cast<quint64>(m_project.framesOfMovie())};
    if (const QString error = growthError(growing, freeSpace(QFileInfo(movie).absolutePath()));
        !error.isEmpty())
        fail({error});
}

void ProjectMonitor::checkMovie()
{
    if (m_ended) { // it is made of less than the recording
        m_project.removeMovie();
        return;
    }
    const Failure failure = encodingFailure();
    if (!failure.isEmpty()) {
        endWithMovie(failure);
        return;
    }
    // Not on this thread: a disk may be busy with a movie for seconds.
    const bool isFolder = m_project.movieKind() == MovieKind::Folder;
    const auto settle = [isFolder, movie = m_project.moviePath(), mark = m_project.movieMark()] {
        const QString error = isFolder ? finishFrameFolder(movie) : QString();
        return error.isEmpty() ? mark->settle() : error;
    };
    m_settling.setFuture(QtConcurrent::run(settle));
}

/// A movie that isn't whole must not look like one.
void ProjectMonitor::endWithMovie(const Failure &failure)
{
    if (failure.isEmpty()) {
        end({});
        return;
    }
    fail(failure); // sees the disk as it was left
    m_project.removeMovie();
}

Failure ProjectMonitor::encodingFailure() const
{
    if (m_project.movieKind() == MovieKind::Folder)
        return {}; // mlv_dump writes frames that are whole, or says why not
    const FFmpegTask &encoder = m_project.encoder();
    if (encoder.terminationStatus() != 0)
        return endOf(ffmpegName, encoder.terminationStatus(), encoder.logs());
    if (!QFile::exists(encoder.moviePath()))
        return failureOf(ffmpegName, QStringLiteral("ffmpeg wrote no movie"));
    const auto frames = framesOfFinishedMovie(encoder.moviePath());
    if (!frames)
        return failureOf(ffmpegName, QStringLiteral("ffmpeg left its movie unfinished"));
    const int wanted = m_project.framesOfMovie();
    const auto encoded = static_cast<qint64>(*frames);
    if (encoded == wanted)
        return {};
    const QString error = encoded < wanted
                              ? QStringLiteral("ffmpeg encoded only %1 of %2 frames")
                              : QStringLiteral("ffmpeg encoded %1 frames where there are %2");
    return failureOf(ffmpegName, error.arg(encoded).arg(wanted));
}

/// What the tool printed last helps to see why.
Failure ProjectMonitor::failureOf(const QString &tool, const QString &error) const
{
    return {error, tool, m_project.lastToolLines().value(tool)};
}

Failure ProjectMonitor::endOf(const QString &tool, int status, const QStringList &lines) const
{
    return failureOf(
        tool, QStringLiteral("%1 ended with status %2: %3")
                  .arg(tool)
                  .arg(status)
                  .arg(lines.isEmpty() ? QStringLiteral("it said nothing") : lines.constLast()));
}

void ProjectMonitor::fail(Failure failure)
{
    if (m_ended)
        return;
    failure.error = withFullDisk(failure.error, m_project);
    end(failure);
}

void ProjectMonitor::end(const Failure &failure)
{
    if (m_ended)
        return;
    m_ended = true;
    QMetaObject::invokeMethod(
        this, [this, failure] { Q_EMIT ended(failure); }, Qt::QueuedConnection);
}

} // namespace filmwright

#include "moc_projectmonitor.cpp"
