// SPDX-License-Identifier: MIT
#include "project/moviespace.h"

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

struct EncodedFrames
{
    QLatin1String encoder;
    QLatin1String profile;
    double bytesOfPixel;
};

/// DNxHR has one size for each picture size; those of ProRes are the format's usual rates at 1080p,
/// 102, 220 and 330 megabits a second; lossless frames of 16 bits with next to no noise take a
/// third of their samples.
constexpr EncodedFrames evenFrames[] = {
    {QLatin1String("dnxhd"), QLatin1String("dnxhr_hqx"), 0.44},
    {QLatin1String("prores_ks"), QLatin1String("lt"), 0.2},
    {QLatin1String("prores_ks"), QLatin1String("hq"), 0.44},
    {QLatin1String("prores_ks"), QLatin1String("4444"), 0.66},
    {QLatin1String("ffv1"), QLatin1String(""), 2},
};

double bytesOfPixel(const Recipe &recipe)
{
    const qsizetype option = recipe.video.indexOf(QLatin1String("-profile:v"));
    const QString profile = option < 0 ? QString() : recipe.video.value(option + 1);
    for (const EncodedFrames &frames : evenFrames)
        if (recipe.videoEncoder() == frames.encoder && profile == frames.profile)
            return frames.bytesOfPixel * (recipe.developsHalfSize() ? 0.25 : 1);
    return 0;
}

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
           bytesOfPixel(*settings.recipe);
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
