// SPDX-License-Identifier: MIT
#include "preview/framerequest.h"

#include "project/worknote.h"

namespace filmwright {

namespace {

RawCorrections withoutMeasuring(RawCorrections corrections)
{
    const auto notMeasured = [](const QString &level) {
        return level.isEmpty() ? QStringLiteral("recorded") : level;
    };
    corrections.whiteLevel = notMeasured(corrections.whiteLevel);
    corrections.blackLevel = notMeasured(corrections.blackLevel);
    if (corrections.pixelRepair == QLatin1String("auto"))
        corrections.pixelRepair.clear();
    corrections.repairsColumns = false;
    if (corrections.whiteBalance == QLatin1String("auto"))
        corrections.whiteBalance.clear();
    return corrections;
}

} // namespace

QByteArray identityOf(const FrameRequest &request)
{
    return lookOf(request) + QByteArray::number(request.frame);
}

QByteArray lookOf(const FrameRequest &request)
{
    ConversionSettings settings = request.settings;
    settings.frames = surveyedFrames(request);
    return frameOrigin(request.recording, settings) +
           (settings.mergesNeighbours ? "merged\n" : "single\n") +
           QByteArray::number(request.quality) + '\n';
}

RawCorrections correctionsOf(const FrameRequest &request)
{
    const RawCorrections &corrections = request.settings.corrections;
    return request.quality == FrameRequest::AsInMovie ? corrections : withoutMeasuring(corrections);
}

bool needsMeasuring(const FrameRequest &request)
{
    const RawCorrections &corrections = request.settings.corrections;
    return request.quality == FrameRequest::AsInMovie &&
           (request.settings.blendsAlternatingRows ||
            corrections.arguments() != withoutMeasuring(corrections).arguments());
}

FrameSelection surveyedFrames(const FrameRequest &request)
{
    const FrameSelection &chosen = request.settings.frames;
    const bool isChosen =
        request.frame >= chosen.first && (chosen.last == 0 || request.frame <= chosen.last);
    return request.settings.blendsAlternatingRows && isChosen ? chosen : FrameSelection();
}

QByteArray surveyOf(const FrameRequest &request)
{
    ConversionSettings settings = request.settings;
    settings.frames = surveyedFrames(request);
    settings.corrections.exposure = 0;
    settings.recipe.reset();
    return frameOrigin(request.recording, settings);
}

QStringList developOf(const FrameRequest &request)
{
    if (request.quality == FrameRequest::Small)
        return {QStringLiteral("-h")};
    return request.settings.recipe ? request.settings.recipe->develop : QStringList();
}

} // namespace filmwright
