// SPDX-License-Identifier: MIT
#include "encoding/ffmpegarguments.h"

#include "runner/files.h"
#include "runner/fixedtext.h"
#include "runner/workingfiles.h"

#include <array>

namespace filmwright {

namespace {

struct Quality
{
    QStringList videoCodec; // with its options
    QString description;
    double secondsOfMegapixel; // of one core, measured on frames of 1920x1080
    double rawBytesOfPixel = 0;
};

struct Format
{
    QString extension;
    QStringList soundCodec; // none: ffmpeg's own choice for the container
    bool holdsOddSides;
    Quality qualities[2]; // by MovieQuality
};

/// By MovieFormat.
const std::array formats{
    // Raw: brightness of each pixel and two colour differences of every fourth.
    Format{QStringLiteral("avi"),
           {QStringLiteral("-c:a"), QStringLiteral("pcm_s16le")},
           true,
           {{{QStringLiteral("rawvideo")},
             QStringLiteral("Raw video, nothing compressed: 4.67 GB a minute of "
                            "1920x1080 at 25 frames/s"),
             0.004,
             1.5},
            {{QStringLiteral("mpeg4"), QStringLiteral("-qscale:v"), QStringLiteral("1")},
             QStringLiteral("MPEG-4 at its best"),
             0.008}}},
    // Quantiser 1, not 0: with 0, H.264 turns lossless and few players show it.
    Format{QStringLiteral("mov"),
           {},
           false,
           {{{QStringLiteral("h264"), QStringLiteral("-qp"), QStringLiteral("1")},
             QStringLiteral("H.264, next to lossless"),
             0.2},
            {{QStringLiteral("h264"), QStringLiteral("-qp"), QStringLiteral("17")},
             QStringLiteral("H.264, for looking at"),
             0.055}}},
};

const Format &formatOf(qint32 format)
{
    const auto index = static_cast<std::size_t>(format);
    return formats[index < formats.size() ? index : std::size_t{MovieFormatMOV}];
}

const Quality &qualityOf(qint32 format, qint32 quality)
{
    return formatOf(format).qualities[quality == MovieQualityMaximum ? 0 : 1];
}

/// ffmpeg finds out by itself that the input is a sequence of pictures, but then takes its rate for
/// 25 frames a second and, from one and a half times that on, repeats the first one: the sound
/// would be ahead of the picture.
constexpr float highestRateOfUnnamedInput = 37;

} // namespace

QStringList movieExtensions()
{
    QStringList extensions;
    for (const Format &format : formats)
        extensions << format.extension;
    return extensions;
}

QString movieDescription(qint32 format, qint32 quality)
{
    return qualityOf(format, quality).description;
}

double rawBytesOfPixel(qint32 format, qint32 quality)
{
    return qualityOf(format, quality).rawBytesOfPixel;
}

double encodingSecondsOfMegapixel(qint32 format, qint32 quality)
{
    return qualityOf(format, quality).secondsOfMegapixel;
}

bool holdsOddSides(qint32 format)
{
    return formatOf(format).holdsOddSides;
}

QString moviePathFor(const QString &mlvPath, qint32 format)
{
    return pathWithExtension(mlvPath, formatOf(format).extension);
}

/// A "%" in the folder's name, which is that of the recording, is no part of the pattern.
QString framePattern(QString directory)
{
    return directory.replace(QLatin1String("%"), QLatin1String("%%")) + extractedStem +
           QStringLiteral("%06d.tiff");
}

QStringList movieArguments(const MovieSources &sources, qint32 format, qint32 quality,
                           const QString &moviePath)
{
    QStringList arguments{QStringLiteral("-r"), fixedText(static_cast<double>(sources.fps), 2)};
    if (sources.fps > highestRateOfUnnamedInput)
        arguments << QStringLiteral("-f") << QStringLiteral("image2");
    arguments << QStringLiteral("-i") << framePattern(sources.tiffsDirectory);
    if (!sources.soundPath.isEmpty())
        arguments << QStringLiteral("-i") << sources.soundPath << formatOf(format).soundCodec;
    arguments << QStringLiteral("-pix_fmt") << QStringLiteral("yuv420p")
              << QStringLiteral("-vcodec") << qualityOf(format, quality).videoCodec << moviePath;
    return arguments;
}

} // namespace filmwright
