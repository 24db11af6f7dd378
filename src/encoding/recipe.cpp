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

bool Recipe::keepsRawFrames() const
{
    return extension == QLatin1String("dng");
}

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

QString encoderError(const QMap<QString, CapabilityList> &encoders, const Recipe &recipe)
{
    if (recipe.keepsRawFrames())
        return {};
    const QString error = QStringLiteral("ffmpeg has no encoder \"%1\"");
    if (!hasName(encoders.value(QStringLiteral("video_encoders")), recipe.videoEncoder()))
        return error.arg(recipe.videoEncoder());
    if (!recipe.sound.isEmpty() &&
        !hasName(encoders.value(QStringLiteral("audio_encoders")), recipe.soundEncoder()))
        return error.arg(recipe.soundEncoder());
    return {};
}

QString pixelFormatError(const QStringList &supported, const Recipe &recipe)
{
    const QString format = recipe.pixelFormat();
    if (format.isEmpty() || supported.isEmpty() || supported.contains(format))
        return {};
    return QStringLiteral("ffmpeg's encoder \"%1\" takes no pixels of the format \"%2\", but %3")
        .arg(recipe.videoEncoder(), format, supported.join(QStringLiteral(", ")));
}

QString moviePathFor(const QString &mlvPath, const Recipe &recipe)
{
    const QString movie = pathWithExtension(mlvPath, recipe.extension);
    const qsizetype stem = movie.size() - recipe.extension.size() - 1;
    return movie.left(stem) + recipe.suffix +
           (recipe.keepsRawFrames() ? QString() : movie.mid(stem));
}

} // namespace filmwright
