// SPDX-License-Identifier: MIT
#include "encoding/recipe.h"

#include "encoding/recipearguments.h"
#include "runner/files.h"

#include <algorithm>

namespace filmwright {

namespace {

bool hasName(const CapabilityList &records, const QString &name)
{
    return std::any_of(records.cbegin(), records.cend(), [&name](const CapabilityRecord &record) {
        return record.value(QStringLiteral("NAME")) == name;
    });
}

} // namespace

bool Recipe::developsSixteenBits() const
{
    return develop.contains(QLatin1String("-6"));
}

bool Recipe::developsHalfSize() const
{
    return develop.contains(QLatin1String("-h"));
}

QString Recipe::videoEncoder() const
{
    return encoderIn(video, QLatin1Char('v'));
}

QString Recipe::soundEncoder() const
{
    return encoderIn(sound, QLatin1Char('a'));
}

QString Recipe::pixelFormat() const
{
    const qsizetype option = video.lastIndexOf(QLatin1String("-pix_fmt"));
    return option < 0 ? QString() : video.value(option + 1);
}

bool Recipe::keepsRgb() const
{
    const QString format = pixelFormat();
    return format.contains(QLatin1String("rgb")) || format.contains(QLatin1String("bgr")) ||
           format.startsWith(QLatin1String("gbr"));
}

QString lackOf(const QMap<QString, CapabilityList> &encoders, const Recipe &recipe)
{
    const QString lack = QStringLiteral("ffmpeg has no encoder \"%1\"");
    if (!hasName(encoders.value(QStringLiteral("video_encoders")), recipe.videoEncoder()))
        return lack.arg(recipe.videoEncoder());
    if (!recipe.sound.isEmpty() &&
        !hasName(encoders.value(QStringLiteral("audio_encoders")), recipe.soundEncoder()))
        return lack.arg(recipe.soundEncoder());
    return {};
}

QString moviePathFor(const QString &mlvPath, const Recipe &recipe)
{
    const QString movie = pathWithExtension(mlvPath, recipe.extension);
    const qsizetype stem = movie.size() - recipe.extension.size() - 1;
    return movie.left(stem) + recipe.suffix + movie.mid(stem);
}

} // namespace filmwright
