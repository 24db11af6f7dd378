// SPDX-License-Identifier: MIT
#include "project/conversionsettings.h"

#include "mlvdump/mlvdumparguments.h"
#include "project/mlvprojectcontroller.h"
#include "runner/temporarydirectory.h"

#include <QFileInfo>

namespace filmwright {

QString CalibrationChoice::darkAverage() const
{
    return dark.isEmpty() ? QLatin1String("") : inTemporaryDirectory(averagedDarkName);
}

QString CalibrationChoice::flatAverage() const
{
    if (flat.isEmpty())
        return QLatin1String("");
    return inTemporaryDirectory(flatDark.isEmpty() ? averagedFlatName : substractedFlatName);
}

bool CalibrationChoice::isReady() const
{
    return (dark.isEmpty() || QFileInfo::exists(darkAverage())) &&
           (flat.isEmpty() || QFileInfo::exists(flatAverage()));
}

bool ConversionSettings::flows() const
{
    return recipe && movieKindOf(recipe) == MovieKind::File && frameBuffer > 0 &&
           !keepsFinishedWork;
}

bool ConversionSettings::isUsualDevelopment() const
{
    return corrections.whiteBalance.isEmpty() && corrections.exposure == 0 && frames.isWhole() &&
           lut.isEmpty();
}

QString settingsError(const ConversionSettings &settings)
{
    if (movieKindOf(settings.recipe) == MovieKind::Folder && settings.mergesNeighbours) {
        return QStringLiteral("the recipe %1 keeps the frames raw, and only developed "
                              "neighbours can be merged")
            .arg(settings.recipe->id);
    }
    return {};
}

void configure(MLVProjectController &project, const ConversionSettings &settings)
{
    project.setMovieFormat(settings.format);
    project.setMovieQuality(settings.quality);
    project.setRecipe(settings.recipe);
    project.setDualISO(settings.mergesNeighbours);
    project.setBlendsAlternatingRows(settings.blendsAlternatingRows);
    project.setConversionWorkers(settings.workers);
    project.setDarkPath(settings.calibration.darkAverage());
    project.setFlatPath(settings.calibration.flatAverage());
    project.setRawCorrections(settings.corrections);
    project.setFrameSelection(settings.frames);
    project.setLut(settings.lut);
    project.setFrameBuffer(settings.flows() ? settings.frameBuffer : 0);
    project.setKeepsTmpFiles(settings.keepsFinishedWork);
}

} // namespace filmwright
