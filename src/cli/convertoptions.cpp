// SPDX-License-Identifier: MIT
#include "cli/convertoptions.h"

#include "encoding/cubelut.h"
#include "encoding/recipes.h"

#include <QCommandLineParser>
#include <QFileInfo>
#include <QRegularExpression>
#include <QThread>

#include <algorithm>
#include <cmath>

namespace filmwright {

namespace {

/// The index of the value among the choices; -1 and an error when it is none of them.
qint32 choose(const QString &option, const QString &value, const QStringList &choices,
              QString &error)
{
    const auto index = static_cast<qint32>(choices.indexOf(value));
    if (index < 0) {
        error = QStringLiteral("--%1 is one of %2, not \"%3\"")
                    .arg(option, choices.join(QStringLiteral(", ")), value);
    }
    return index;
}

/// A tool would take a relative path that begins with "-" for an option.
QString absolutePath(const QString &path)
{
    return path.isEmpty() ? path : QFileInfo(path).absoluteFilePath();
}

QString unreadablePath(const ConvertOptions &options)
{
    QStringList paths = options.paths;
    const CalibrationChoice &chosen = options.settings.calibration;
    const QString map = options.settings.corrections.pixelMap();
    for (const QString &file :
         {chosen.dark, chosen.flat, chosen.flatDark, map, options.settings.lut})
        if (!file.isEmpty())
            paths << file;
    for (const QString &path : std::as_const(paths))
        if (!QFileInfo(path).isReadable())
            return path;
    return {};
}

/// Each takes some hundred megabytes while dcraw runs.
constexpr int mostJobs = 64;

int jobsOf(const QString &value, QString &error)
{
    if (value == QLatin1String("auto"))
        return std::clamp(QThread::idealThreadCount(), 1, mostJobs);
    bool isNumber = false;
    const int number = value.toInt(&isNumber);
    if (isNumber && number >= 1 && number <= mostJobs)
        return number;
    error = QStringLiteral("--jobs is a number from 1 to %1 or auto, not \"%2\"")
                .arg(mostJobs)
                .arg(value);
    return 1;
}

/// A level as mlv_dump takes it; empty for "auto", which is what it does without being asked.
QString levelOf(const QString &option, const QString &value, QString &error)
{
    if (value == QLatin1String("auto"))
        return {};
    bool isNumber = false;
    const uint level = value.toUInt(&isNumber);
    constexpr uint mostLevel = 65535;
    if (value == QLatin1String("recorded") || (isNumber && level <= mostLevel))
        return isNumber ? QString::number(level) : value;
    error = QStringLiteral("--%1 is a number up to %2, recorded or auto, not \"%3\"")
                .arg(option)
                .arg(mostLevel)
                .arg(value);
    return {};
}

/// A file called "auto" or "off" is named with its folder.
QString pixelRepairOf(const QString &value)
{
    if (value == QLatin1String("off"))
        return {};
    return value == QLatin1String("auto") ? value : absolutePath(value);
}

const QString format = QStringLiteral("format");
const QString quality = QStringLiteral("quality");
const QString recipeOption = QStringLiteral("recipe");
const QString outputFolder = QStringLiteral("output");
const QString movieName = QStringLiteral("name");
const QString existing = QStringLiteral("existing");
const QString dark = QStringLiteral("dark");
const QString flat = QStringLiteral("flat");
const QString flatDark = QStringLiteral("flat-dark");
const QString whiteLevel = QStringLiteral("white-level");
const QString blackLevel = QStringLiteral("black-level");
const QString matrix = QStringLiteral("matrix");
const QString repairPixels = QStringLiteral("repair-pixels");
const QString repairColumns = QStringLiteral("repair-columns");
const QString exposure = QStringLiteral("exposure");
const QString whiteBalance = QStringLiteral("white-balance");
const QString lut = QStringLiteral("lut");
const QString frames = QStringLiteral("frames");
const QString temporaryBase = QStringLiteral("temp-dir");
const QString keepTemporary = QStringLiteral("keep-temp");
const QString stages = QStringLiteral("stages");
const QString buffer = QStringLiteral("buffer");
const QString report = QStringLiteral("report");
const QString progress = QStringLiteral("progress");
const QString quiet = QStringLiteral("quiet");
const QString hdr = QStringLiteral("hdr");
const QString dualIso = QStringLiteral("dual-iso");
const QString jobs = QStringLiteral("jobs");

void describe(QCommandLineParser &parser)
{
    const QString file = QStringLiteral("file");
    parser.addOptions({
        {format, QStringLiteral("Movie format; mov when not given."),
         movieExtensions().join(QLatin1Char('|')), QStringLiteral("mov")},
        {quality, QStringLiteral("Movie quality: high (default) or maximum."),
         QStringLiteral("high|maximum"), QStringLiteral("high")},
        {recipeOption,
         QStringLiteral(
             "Make the movie by this recipe, in place of format and quality; the command recipes "
             "lists them."),
         QStringLiteral("name|file")},
        {outputFolder,
         QStringLiteral(
             "Write the movies into this folder, which is made if need be; beside each recording "
             "when not given."),
         QStringLiteral("folder")},
        {movieName,
         QStringLiteral(
             "The movies' names without extension: text, and {name} (the recording's; default), "
             "{date}, {time}, {camera}, {recipe}."),
         QStringLiteral("pattern")},
        {existing,
         QStringLiteral(
             "A movie that is there already: replace (default), skip one that is whole and made "
             "with the same, or keep it and number the new one."),
         QStringLiteral("replace|skip|keep"), QStringLiteral("replace")},
        {dark, QStringLiteral("A recording with the lens covered, to be subtracted."), file},
        {flat, QStringLiteral("A recording of an even surface, to be divided by."), file},
        {flatDark, QStringLiteral("A dark recording for the flat."), file},
        {whiteLevel,
         QStringLiteral(
             "The level at which the sensor is full: a number, recorded, or auto (default), the "
             "recorded one unless the samples show that it can't be true."),
         QStringLiteral("n|recorded|auto"), QStringLiteral("auto")},
        {blackLevel, QStringLiteral("The level of no light, likewise."),
         QStringLiteral("n|recorded|auto"), QStringLiteral("auto")},
        {matrix,
         QStringLiteral(
             "The colour matrix: recorded, or auto (default), the recorded one unless it is known "
             "to be wrong."),
         QStringLiteral("recorded|auto"), QStringLiteral("auto")},
        {repairPixels,
         QStringLiteral(
             "Replace hot, cold, stuck and focus pixels by their neighbours: auto finds them in "
             "the recording, a file lists them; off (default) changes nothing."),
         QStringLiteral("auto|file|off"), QStringLiteral("off")},
        {repairColumns,
         QStringLiteral("Even out stripes of columns that repeat every eight columns.")},
        {exposure,
         QStringLiteral(
             "Develop the frames so much brighter, from -%1 to %1 EV; 1 doubles the light.")
             .arg(mostExposure),
         QStringLiteral("ev"), QStringLiteral("0")},
        {whiteBalance,
         QStringLiteral(
             "What is white: as the camera was set (camera, default), one white for the whole "
             "recording that is found in its frames (auto), daylight of so many kelvin, or the "
             "multipliers of red, green and blue."),
         QStringLiteral("camera|auto|kelvin|r,g,b"), QStringLiteral("camera")},
        {lut,
         QStringLiteral(
             "Send the frames of a recipe through this table of colours, a .cube file, whose "
             "input and output are BT.709."),
         file},
        {frames,
         QStringLiteral(
             "Make the movie of these frames alone, counted from 1 as the whole movie has them; "
             "without b to the end, without a from the first on."),
         QStringLiteral("a-b")},
        {temporaryBase,
         QStringLiteral(
             "Work in this folder and keep what is unfinished there, so that the same command goes "
             "on where it stopped."),
         QStringLiteral("folder")},
        {keepTemporary, QStringLiteral("Keep all temporary files.")},
        {stages,
         QStringLiteral("Make a recipe's movie stage by stage, all frames at a time, as other "
                        "movies are: it needs room for all of them, but can be taken up again.")},
        {buffer,
         QStringLiteral("What the frames between reading and encoding may take when a recipe's "
                        "movie is made, such as 500M or 8G; 2G when not given."),
         QStringLiteral("size")},
        {report, QStringLiteral("Write what became of each recording to this file, as JSON."),
         file},
        {quiet, QStringLiteral("Print no progress and no table at the end.")},
        {progress,
         QStringLiteral(
             "How progress is printed on standard error: text (default), or json, one object a "
             "line with recording, stage, framesDone, frames, framesPerSecond, secondsLeft and "
             "batchSecondsLeft, at the end movie or reason; other lines have message alone."),
         QStringLiteral("text|json"), QStringLiteral("text")},
        {hdr, QStringLiteral(
                  "Merge neighbouring frames that alternate two exposures into HDR frames; the "
                  "movie is silent.")},
        {dualIso, QStringLiteral("Blend rows that alternate two sensitivities.")},
        {jobs,
         QStringLiteral(
             "Frames converted at once: a number from 1 (default) to %1, or auto for the number of "
             "cores.")
             .arg(mostJobs),
         QStringLiteral("n|auto"), QStringLiteral("1")},
    });
    parser.addPositionalArgument(QStringLiteral("path"),
                                 QStringLiteral("Recordings, or folders to be searched."));
}

/// Nothing without the option; an error when the recipe can't be used.
std::optional<Recipe> recipeOf(const QCommandLineParser &parser, QString &error)
{
    if (!parser.isSet(recipeOption))
        return std::nullopt;
    const RecipeFile found = findRecipe(parser.value(recipeOption));
    if (!found.error.isEmpty())
        error = found.error;
    else if (parser.isSet(format) || parser.isSet(quality))
        error = QStringLiteral("--recipe takes the place of --format and --quality");
    return found.recipe;
}

double exposureOf(const QString &value, QString &error)
{
    static const QRegularExpression decimal(QStringLiteral("^[+-]?\\d(\\.\\d{1,3})?$"));
    const double chosen = value.toDouble();
    if (decimal.match(value).hasMatch() && std::abs(chosen) <= mostExposure)
        return chosen;
    error = QStringLiteral("--exposure is a number from -%1 to %1, not \"%2\"")
                .arg(mostExposure)
                .arg(value);
    return 0;
}

/// Empty for what mlv_dump does without being asked.
QString whiteBalanceOf(const QString &value, QString &error)
{
    if (value == QLatin1String("camera"))
        return {};
    if (isWhiteBalance(value))
        return value;
    error =
        QStringLiteral("--white-balance is camera, auto, a temperature from 2000 to 25000 or three "
                       "multipliers such as 2.1,1,1.4, not \"%1\"")
            .arg(value);
    return {};
}

FrameSelection framesOf(const QCommandLineParser &parser, QString &error)
{
    if (!parser.isSet(frames))
        return {};
    const auto selection = FrameSelection::fromText(parser.value(frames));
    if (!selection) {
        error = QStringLiteral(
                    "--frames is the first and the last frame, such as 100-250, 100- or -250, "
                    "not \"%1\"")
                    .arg(parser.value(frames));
    }
    return selection.value_or(FrameSelection());
}

/// Empty without the option; what is read here is read again when it is used.
QString lutOf(const QCommandLineParser &parser, const std::optional<Recipe> &chosen, QString &error)
{
    QString path = absolutePath(parser.value(lut));
    if (!parser.isSet(lut))
        return {};
    if (!parser.isSet(recipeOption) || (chosen && chosen->keepsRawFrames()))
        error = QStringLiteral("--lut is for movies that are made by a recipe");
    else if (path.isEmpty())
        error = QStringLiteral("--lut names a file");
    else if (const QString lutError = readCubeLut(path).error; !lutError.isEmpty())
        error = lutError;
    return path;
}

/// The units are those of 1024.
qint64 bytesOf(const QString &value, QString &error)
{
    static const QRegularExpression size(QStringLiteral("^([1-9]\\d{0,14})([KMGT]?)$"));
    constexpr double mostBytes = 1e15;
    const auto match = size.match(value);
    double bytes = match.captured(1).toDouble();
    const QString unit = match.captured(2);
    if (!unit.isEmpty())
        bytes *= std::pow(1024, 1 + QStringLiteral("KMGT").indexOf(unit));
    if (match.hasMatch() && bytes <= mostBytes)
        return static_cast<qint64>(bytes);
    error = QStringLiteral("--buffer is a number of bytes, or one with K, M, G or T behind it, "
                           "not \"%1\"")
                .arg(value);
    return usualFrameBuffer;
}

/// The frames' buffer that was chosen; 0 where they are to be on the disk all at once.
qint64 frameBufferOf(const QCommandLineParser &parser, const std::optional<Recipe> &chosen,
                     QString &error)
{
    const bool makesMovie = chosen && !chosen->keepsRawFrames();
    if (parser.isSet(buffer) && !makesMovie)
        error = QStringLiteral("--buffer is for movies that are made by a recipe");
    else if (parser.isSet(buffer) && parser.isSet(stages))
        error = QStringLiteral("--stages needs room for all frames, whatever --buffer says");
    if (parser.isSet(stages))
        return 0;
    return parser.isSet(buffer) ? bytesOf(parser.value(buffer), error) : usualFrameBuffer;
}

MovieDestination destinationOf(const QCommandLineParser &parser, QString &error)
{
    MovieDestination destination;
    if (parser.isSet(outputFolder)) {
        destination.folder = absolutePath(parser.value(outputFolder));
        if (destination.folder.isEmpty())
            error = QStringLiteral("--output names a folder");
    }
    if (parser.isSet(movieName)) {
        destination.pattern = parser.value(movieName);
        if (const QString nameError = patternError(destination.pattern); !nameError.isEmpty())
            error = QStringLiteral("--name: %1").arg(nameError);
    }
    destination.existing = static_cast<ExistingMovie>(
        choose(existing, parser.value(existing),
               {QStringLiteral("replace"), QStringLiteral("skip"), QStringLiteral("keep")}, error));
    return destination;
}

/// Returns what is wrong with the values, or an empty string.
QString take(const QCommandLineParser &parser, ConvertOptions &options)
{
    QString error;
    options.progress = static_cast<ProgressStyle>(choose(
        progress, parser.value(progress), {QStringLiteral("text"), QStringLiteral("json")}, error));
    ConversionSettings &settings = options.settings;
    settings.workers = jobsOf(parser.value(jobs), error);
    settings.format = choose(format, parser.value(format), movieExtensions(), error);
    settings.quality = choose(quality, parser.value(quality),
                              {QStringLiteral("maximum"), QStringLiteral("high")}, error);
    settings.recipe = recipeOf(parser, error);
    settings.destination = destinationOf(parser, error);
    settings.calibration = {absolutePath(parser.value(dark)), absolutePath(parser.value(flat)),
                            absolutePath(parser.value(flatDark))};
    RawCorrections &corrections = settings.corrections;
    corrections.whiteLevel = levelOf(whiteLevel, parser.value(whiteLevel), error);
    corrections.blackLevel = levelOf(blackLevel, parser.value(blackLevel), error);
    const QStringList matrices{QStringLiteral("auto"), QStringLiteral("recorded")};
    if (choose(matrix, parser.value(matrix), matrices, error) == 1)
        corrections.matrix = matrices.constLast();
    corrections.pixelRepair = pixelRepairOf(parser.value(repairPixels));
    corrections.repairsColumns = parser.isSet(repairColumns);
    corrections.whiteBalance = whiteBalanceOf(parser.value(whiteBalance), error);
    corrections.exposure = exposureOf(parser.value(exposure), error);
    settings.frames = framesOf(parser, error);
    settings.lut = lutOf(parser, settings.recipe, error);
    settings.frameBuffer = frameBufferOf(parser, settings.recipe, error);
    settings.mergesNeighbours = parser.isSet(hdr);
    settings.blendsAlternatingRows = parser.isSet(dualIso);
    options.temporaryBase = parser.value(temporaryBase);
    options.keepTemporary = parser.isSet(keepTemporary);
    options.report = parser.value(report);
    options.quiet = parser.isSet(quiet);
    options.paths = parser.positionalArguments();
    if (options.paths.isEmpty())
        error = QStringLiteral("name at least one recording or folder");
    if (error.isEmpty())
        error = settingsError(settings);
    const QString unreadable = unreadablePath(options);
    if (error.isEmpty() && !unreadable.isEmpty())
        error = QStringLiteral("%1 can't be read").arg(unreadable);
    return error;
}

} // namespace

std::optional<ExitStatus> readConvertOptions(const QStringList &arguments, ConvertOptions &options)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Turns MLV recordings into movies, each written beside its recording, and prints the "
        "path of every finished movie."));
    describe(parser);
    if (const auto ending =
            readArguments(parser, QStringLiteral("convert [options] path..."), arguments))
        return ending;
    const QString error = take(parser, options);
    if (error.isEmpty())
        return std::nullopt;
    printError(error);
    return ExitUnusable;
}

} // namespace filmwright
