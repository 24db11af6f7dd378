// SPDX-License-Identifier: MIT
#include "project/batchmovies.h"

#include "mlvdump/mlvdumparguments.h"
#include "mlvdump/mlvdumpreport.h"
#include "project/recordingfiles.h"

#include <QFileInfo>

namespace filmwright {

namespace {

/// A recording's working folder has the recording's name.
bool isAverageName(const QString &name)
{
    return QStringList{averagedDarkName, averagedFlatName, averagedFlatDarkName,
                       substractedFlatName}
        .contains(name);
}

} // namespace

QString BatchMovies::claim(const QString &recording, const ConversionSettings &settings)
{
    if (!isRecordingName(recording))
        return QStringLiteral("its name doesn't end in .mlv");
    if (!settings.calibration.isEmpty() && isAverageName(QFileInfo(recording).fileName()))
        return QStringLiteral(
            "an averaged calibration recording is kept under its name; rename it");
    return settings.destination.isKnownBeforeReading()
               ? claimMovie(moviePathFor(recording, settings, {}))
               : QString();
}

QString BatchMovies::claimMovie(const QString &movie)
{
    // One folder may have been reached on two ways.
    const QFileInfo file(movie);
    const QString identity =
        QFileInfo(file.path()).canonicalFilePath() + QLatin1Char('/') + file.fileName();
    if (m_movies.contains(identity))
        return QStringLiteral("its movie would replace that of another recording, %1").arg(movie);
    m_movies << identity;
    return {};
}

} // namespace filmwright
