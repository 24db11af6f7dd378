// SPDX-License-Identifier: MIT
#include "project/moviespace.h"

#include "encoding/encodercost.h"
#include "encoding/ffmpegarguments.h"
#include "mlvdump/mlvdumpreport.h"
#include "project/conversionsettings.h"
#include "project/framesize.h"
#include "project/spacecheck.h"
#include "runner/files.h"
#include "runner/readabletext.h"

#include <QFileInfo>
#include <QMap>

#include <algorithm>

namespace filmwright {

namespace {

QString needText(const std::vector<MovieRoom> &movies)
{
    const bool isOne = movies.size() == 1;
    const auto isEstimate = [](const MovieRoom &movie) { return movie.isEstimate; };
    if (std::any_of(movies.begin(), movies.end(), isEstimate))
        return isOne ? QStringLiteral("its movie needs about")
                     : QStringLiteral("the movies need about");
    return isOne ? QStringLiteral("its raw movie needs") : QStringLiteral("the raw movies need");
}

} // namespace

double movieBytes(const MlvMetadata &metadata, const ConversionSettings &settings)
{
    const QSize size = developedSize(metadata);
    const double pixels = static_cast<double>(size.width()) * size.height();
    if (!settings.recipe)
        return static_cast<double>(metadata.videoFrames) * pixels *
               rawBytesOfPixel(settings.format, settings.quality);
    return static_cast<double>(settings.frames.countOf(metadata.movieFrames())) * pixels *
           encoderCost(*settings.recipe).bytesOfPixel;
}

QString growthError(const GrowingMovie &movie, double free)
{
    constexpr quint64 fewFrames = 48;
    constexpr quint64 smallPart = 50;
    if (movie.encoded < std::max(fewFrames, movie.frames / smallPart) ||
        movie.encoded >= movie.frames)
        return {};
    const double frame = movie.bytes / static_cast<double>(movie.encoded);
    const auto left = static_cast<double>(movie.frames - movie.encoded);
    const double doubt = 1 + left / static_cast<double>(movie.frames);
    if (frame * left <= free * doubt)
        return {};
    return QStringLiteral("the rest of its movie needs about %1, but only %2 are free in %3")
        .arg(readableFileSize(frame * left), readableFileSize(free),
             QFileInfo(movie.path).absolutePath());
}

/// By folder, not by file system: two folders of one disk that is nearly full are found out later,
/// as any other file that comes to it.
QString movieSpaceError(const std::vector<MovieRoom> &movies)
{
    QMap<QString, double> needs;
    for (const MovieRoom &movie : movies) {
        const QFileInfo file(movie.path);
        if (movie.bytes > 0)
            needs[file.absolutePath()] += movie.bytes - static_cast<double>(file.size());
    }
    for (auto need = needs.cbegin(); need != needs.cend(); ++need) {
        const double free = freeSpace(need.key());
        if (need.value() > free) {
            return QStringLiteral("%1 %2, but only %3 are free in %4")
                .arg(needText(movies), readableFileSize(need.value()), readableFileSize(free),
                     need.key());
        }
    }
    return {};
}

} // namespace filmwright
