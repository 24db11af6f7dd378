// SPDX-License-Identifier: MIT
#include "project/moviespace.h"

#include "encoding/ffmpegarguments.h"
#include "mlvdump/mlvdumpreport.h"
#include "project/conversionsettings.h"
#include "project/framesize.h"
#include "project/spacecheck.h"
#include "runner/readabletext.h"

#include <QFileInfo>
#include <QMap>

namespace filmwright {

double movieBytes(const MlvMetadata &metadata, const ConversionSettings &settings)
{
    if (settings.recipe)
        return 0;
    const QSize size = developedSize(metadata);
    const double pixels = static_cast<double>(size.width()) * size.height();
    return static_cast<double>(metadata.videoFrames) * pixels *
           rawBytesOfPixel(settings.format, settings.quality);
}

/// By folder, not by file system: two folders of one disk that is nearly full are found out later,
/// as any other file that comes to it.
QString movieSpaceProblem(const std::vector<MovieRoom> &movies)
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
                .arg(movies.size() == 1 ? QStringLiteral("its raw movie needs")
                                        : QStringLiteral("the raw movies need"),
                     readableFileSize(need.value()), readableFileSize(free), need.key());
        }
    }
    return {};
}

} // namespace filmwright
