// SPDX-License-Identifier: MIT
#include "project/spacecheck.h"

#include "project/framesize.h"
#include "project/mlvprojectcontroller.h"
#include "project/moviemark.h"
#include "runner/files.h"
#include "runner/readabletext.h"
#include "runner/resources.h"
#include "runner/temporarydirectory.h"

#include <QDir>
#include <QFile>
#include <QMap>

#include <algorithm>
#include <utility>

namespace filmwright {

namespace {

/// Tags, previews and the rest of a file system block; the files of sound and notes are small
/// beside the frames.
constexpr double bytesBesideSamples = 8192;

/// dcraw writes TIFFs of three channels with 8 bits each; a recipe may ask for 16 bits, or for a
/// quarter of the pixels.
double tiffBytesOfPixel(const MLVProjectController &project)
{
    constexpr double usualBytes = 3;
    const auto &recipe = project.recipe();
    const double depth = recipe && recipe->developsSixteenBits() ? 2 : 1;
    const double size = recipe && recipe->developsHalfSize() ? 0.25 : 1;
    return usualBytes * depth * size;
}

/// DNG frames are packed like the recording until they are blended. Recordings have 14 bits where
/// they don't say it.
double dngBytesOfPixel(const MLVProjectController &project)
{
    constexpr int usualBits = 14;
    constexpr int blendedBits = 16;
    const int bitsPerSample =
        project.blendsAlternatingRows() ? blendedBits : project.bitsPerSample();
    return (bitsPerSample > 0 ? bitsPerSample : usualBits) / 8.0;
}

/// Extracted and developed; 0 where the report doesn't tell the resolution.
double bytesOfFlowingFrame(const MLVProjectController &project)
{
    const double pixels = pixelsOf(project.resolution());
    const QSize size = developedSize(project.metadata());
    const double developed =
        size.isEmpty() ? pixels : static_cast<double>(size.width()) * size.height();
    return pixels <= 0 ? 0
                       : pixels * dngBytesOfPixel(project) + developed * tiffBytesOfPixel(project) +
                             2 * bytesBesideSamples;
}

/// Beside few frames, the sound of an hour does count.
double soundBytes(const MLVProjectController &project)
{
    constexpr double bytesOfSecond = 48000 * 4;
    return project.audioFrames() == 0 || project.fps() <= 0
               ? 0
               : bytesOfSecond * static_cast<double>(project.framesToExtract()) /
                     static_cast<double>(project.fps());
}

/// A tool hardly fails for want of space while more than this is free.
constexpr double leastSpace = 65536;

QString movieFolder(const MLVProjectController &project)
{
    return QFileInfo(project.moviePath()).absolutePath();
}

/// The texts of ENOSPC and EDQUOT, which all the tools print as the system has them.
bool tellsOfFullDisk(const QStringList &lines)
{
    return std::any_of(lines.begin(), lines.end(), [](const QString &line) {
        return line.contains(QLatin1String("No space left on device")) ||
               line.contains(QLatin1String("Disk quota exceeded"));
    });
}

} // namespace

SpaceNeed spaceNeed(const MLVProjectController &project)
{
    const double pixels = pixelsOf(project.resolution());
    if (pixels <= 0)
        return {};
    SpaceNeed need;
    const QFileInfoList files = QDir(project.extractionDirectory()).entryInfoList(QDir::Files);
    for (const QFileInfo &file : files)
        need.there += static_cast<double>(file.size());
    if (project.flows()) {
        const quint64 frames = std::min(framesInBuffer(project), project.framesToExtract());
        need.frames =
            static_cast<double>(frames) * bytesOfFlowingFrame(project) + soundBytes(project);
        return need;
    }
    double tiffs = project.dualISO() ? 2 : 1; // merged frames are TIFFs, too
    if (project.movieKind() == MovieKind::Folder)
        tiffs = 0;
    const double frame = pixels * dngBytesOfPixel(project) + bytesBesideSamples +
                         tiffs * (pixels * tiffBytesOfPixel(project) + bytesBesideSamples);
    need.frames = static_cast<double>(project.framesToExtract()) * frame;
    return need;
}

quint64 framesInBuffer(const MLVProjectController &project)
{
    const double frame = bytesOfFlowingFrame(project);
    const double buffer =
        std::min(static_cast<double>(project.frameBuffer()), freeSpace(temporaryDirectory()) / 2);
    return frame > 0 ? std::max<quint64>(1, static_cast<quint64>(buffer / frame)) : 1;
}

QString spaceError(const SpaceNeed &need, double free, const QString &folder)
{
    const double missing = need.frames - need.there;
    if (missing <= free)
        return {};
    return QStringLiteral("its frames need %1, but only %2 are free in the temporary folder %3; "
                          "make room there or choose another temporary folder")
        .arg(readableFileSize(missing), readableFileSize(free), folder);
}

namespace {

QString folderError(const MLVProjectController &project)
{
    const SpaceNeed need = spaceNeed(project);
    const QString folder = movieFolder(project);
    const double missing = need.frames - need.there;
    const double free = freeSpace(folder);
    if (missing <= free)
        return {};
    return QStringLiteral(
               "its frames need %1, but only %2 are free in the folder %3; make room there "
               "or choose another folder for the movies")
        .arg(readableFileSize(missing), readableFileSize(free), folder);
}

} // namespace

QString spaceError(const MLVProjectController &project)
{
    if (project.movieKind() == MovieKind::Folder)
        return folderError(project);
    const QString folder = temporaryDirectory();
    return spaceError(spaceNeed(project), freeSpace(folder), folder);
}

bool isTemporaryDirectoryFull(const MLVProjectController &project)
{
    return freeSpace(temporaryDirectory()) <
           std::max(leastSpace, pixelsOf(project.resolution()) * tiffBytesOfPixel(project));
}

QString withFullDisk(const QString &error, const MLVProjectController &project)
{
    QMap<QString, QStringList> lines = project.lastToolLines();
    const QString movies = movieFolder(project);
    bool movieIsFull = tellsOfFullDisk(lines.take(ffmpegName));
    bool framesAreFull = tellsOfFullDisk({error}) ||
                         std::any_of(lines.cbegin(), lines.cend(), [](const QStringList &printed) {
                             return tellsOfFullDisk(printed);
                         });
    if (project.movieKind() == MovieKind::Folder)
        movieIsFull = std::exchange(framesAreFull, false); // the frames are the movie
    if (movieIsFull || freeSpace(movies) < leastSpace)
        return QStringLiteral("no space left in the movie's folder %1: %2").arg(movies, error);
    if (framesAreFull || isTemporaryDirectoryFull(project)) {
        return QStringLiteral("no space left in the temporary folder %1: %2")
            .arg(temporaryDirectory(), error);
    }
    return error;
}

} // namespace filmwright
