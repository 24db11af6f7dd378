// SPDX-License-Identifier: MIT
#include "encoding/recipemovie.h"

#include "encoding/framerate.h"

#include <QFile>
#include <QtEndian>

namespace filmwright {

namespace {

/// Developed frames have the primaries of sRGB, which are those of BT.709, and its curve.
QString colourFilter(const Recipe &recipe)
{
    const QString primaries = QStringLiteral("color_primaries=bt709:color_trc=bt709");
    if (recipe.keepsRgb())
        return QStringLiteral("setparams=range=pc:colorspace=gbr:") + primaries;
    return QStringLiteral("scale=out_color_matrix=bt709:out_range=tv,"
                          "setparams=range=tv:colorspace=bt709:") +
           primaries;
}

/// With a backslash before every character that could mean something.
QString escapedOnce(const QString &value)
{
    QString escaped;
    for (const QChar c : value) {
        const bool isPlain =
            c.unicode() >= 0x80 || c.isLetterOrNumber() || QStringLiteral("_./-").contains(c);
        if (!isPlain)
            escaped += QLatin1Char('\\');
        escaped += c;
    }
    return escaped;
}

/// A value as it stands in a graph of filters, which ffmpeg takes apart twice: into filters, and
/// these into their options.
QString escaped(const QString &value)
{
    return escapedOnce(escapedOnce(value));
}

QString pictureFilter(const Recipe &recipe, const QString &lut,
                      const std::optional<RawVideo> &video)
{
    QString filter;
    if (video && video->tellsSquarePixels)
        filter += QStringLiteral("setsar=1,");
    // Half of an even side may be odd, which most encoders don't take.
    if (recipe.developsHalfSize())
        filter += QStringLiteral("crop=floor(iw/2)*2:floor(ih/2)*2,");
    if (!lut.isEmpty())
        filter += QStringLiteral("lut3d=file=%1:interp=tetrahedral,").arg(escaped(lut));
    return filter + colourFilter(recipe);
}

QStringList pictureInput(const MovieSources &sources)
{
    const QString rate = exactRate(sources.fps).text();
    if (!sources.video) {
        return {QStringLiteral("-f"),         QStringLiteral("image2"),
                QStringLiteral("-framerate"), rate,
                QStringLiteral("-i"),         framePattern(sources.tiffsDirectory)};
    }
    const RawVideo &video = *sources.video;
    return {QStringLiteral("-f"),
            QStringLiteral("rawvideo"),
            QStringLiteral("-pixel_format"),
            video.bitsPerSample == 16 ? QStringLiteral("rgb48") : QStringLiteral("rgb24"),
            QStringLiteral("-video_size"),
            QStringLiteral("%1x%2").arg(video.size.width()).arg(video.size.height()),
            QStringLiteral("-framerate"),
            rate,
            QStringLiteral("-i"),
            QStringLiteral("pipe:0")};
}

/// Samples a second, as the head of mlv_dump's sound file has it; 0 when it is another kind of
/// file.
quint32 sampleRateOf(const QString &path)
{
    constexpr qsizetype format = 12;
    constexpr qsizetype rate = 24;
    QFile file(path);
    const QByteArray head = file.open(QIODevice::ReadOnly) ? file.read(rate + 4) : QByteArray();
    if (head.size() < rate + 4 || !head.startsWith("RIFF") || head.mid(format, 4) != "fmt ")
        return 0;
    return qFromLittleEndian<quint32>(head.constData() + rate);
}

/// Silence fills what the sound lacks; what is too much goes.
QStringList lengthArguments(const MovieSources &sources, quint64 frames)
{
    const quint32 sampleRate = sampleRateOf(sources.soundPath);
    if (sampleRate == 0)
        return {};
    const quint64 samples = exactRate(sources.fps).samplesOf(frames, sampleRate);
    return {QStringLiteral("-af"),
            QStringLiteral("apad=whole_len=%1,atrim=end_sample=%1").arg(samples)};
}

void addFact(QStringList &arguments, const QString &key, const QString &value,
             const QString &option = QStringLiteral("-metadata"))
{
    if (!value.isEmpty())
        arguments << option << key + QLatin1Char('=') + value;
}

/// A track of timecode counts the frames of a second in a byte; ffmpeg writes one that no reader
/// takes beyond that.
constexpr float mostFramesOfTimecode = 255;

QStringList factArguments(const MovieFacts &facts, float fps)
{
    QStringList arguments;
    if (!facts.timecode.isEmpty() && fps <= mostFramesOfTimecode)
        arguments << QStringLiteral("-timecode") << facts.timecode;
    addFact(arguments, QStringLiteral("creation_time"), facts.creationTime);
    addFact(arguments, QStringLiteral("make"), facts.make);
    addFact(arguments, QStringLiteral("model"), facts.model);
    addFact(arguments, QStringLiteral("comment"), facts.comment);
    addFact(arguments, QStringLiteral("reel_name"), facts.reel, QStringLiteral("-metadata:s:v"));
    return arguments;
}

/// AVI has none of these flags.
QStringList containerArguments(const Recipe &recipe)
{
    if (recipe.extension == QLatin1String("avi"))
        return {};
    return {QStringLiteral("-movflags"), recipe.fastStart ? QStringLiteral("+write_colr+faststart")
                                                          : QStringLiteral("+write_colr")};
}

} // namespace

QStringList recipeArguments(const RecipeMovie &movie, const MovieSources &sources,
                            const QString &moviePath)
{
    const Recipe &recipe = movie.recipe;
    QStringList arguments = pictureInput(sources);
    const bool hasSound = !sources.soundPath.isEmpty() && !recipe.sound.isEmpty();
    if (hasSound)
        arguments << QStringLiteral("-i") << sources.soundPath;
    arguments << QStringLiteral("-vf") << pictureFilter(recipe, movie.lut, sources.video)
              << recipe.video;
    if (hasSound)
        arguments << recipe.sound << lengthArguments(sources, movie.frames);
    return arguments << containerArguments(recipe) << factArguments(movie.facts, sources.fps)
                     << moviePath;
}

} // namespace filmwright
