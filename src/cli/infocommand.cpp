// SPDX-License-Identifier: MIT
#include "cli/infocommand.h"

#include "cli/commandline.h"
#include "cli/missingtools.h"
#include "mlvdump/recordingcheck.h"
#include "project/recordingrun.h"
#include "runner/readabletext.h"
#include "runner/resources.h"

#include <QCommandLineParser>
#include <QEventLoop>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace filmwright {

namespace {

/// Blocks until the report is read. Returns what went wrong, or an empty string.
QString readMetadata(MLVProjectController &project, const QString &path)
{
    RecordingRun run(project, path, nullptr);
    QEventLoop loop;
    QObject::connect(&run, &RecordingRun::ended, &loop, &QEventLoop::quit);
    run.read();
    loop.exec();
    run.detach(); // a tool that has printed its report may still run
    return run.outcome().failure.error;
}

/// As a person would write it: a 32-bit 23.976 isn't 23.975999832.
double shortest(float value)
{
    return QString::number(static_cast<double>(value), 'g', 7).toDouble();
}

/// What is wrong with the recording: of its state, and what its frames say against it.
QStringList warningsOf(const MLVProjectController &project)
{
    RecordingCheck check;
    QEventLoop loop;
    QObject::connect(&check, &RecordingCheck::ended, &loop, &QEventLoop::quit);
    check.check(project.mlvPath(), RecordingCheck::Survey);
    loop.exec();
    QStringList warnings = project.warnings() + project.notes() + check.result().sentences();
    warnings.removeDuplicates();
    return warnings;
}

QJsonObject describe(const QString &path, const MlvMetadata &metadata, const QStringList &warnings)
{
    QJsonObject object{
        {QStringLiteral("path"), path},
        {QStringLiteral("fps"), shortest(metadata.fps)},
        {QStringLiteral("videoFrames"), static_cast<qint64>(metadata.videoFrames)},
        {QStringLiteral("audioFrames"), static_cast<qint64>(metadata.audioFrames)},
        {QStringLiteral("iso"), static_cast<qint64>(metadata.iso)},
        {QStringLiteral("shutter"), metadata.shutter},
        {QStringLiteral("aperture"), shortest(metadata.aperture)},
        {QStringLiteral("camera"), metadata.camera},
        {QStringLiteral("cameraSerial"), metadata.cameraSerial},
        {QStringLiteral("lens"), metadata.lens},
        {QStringLiteral("focal"), metadata.focal},
        {QStringLiteral("date"), metadata.date},
        {QStringLiteral("time"), metadata.time},
        {QStringLiteral("resolution"), metadata.resolution},
        {QStringLiteral("warnings"), QJsonArray::fromStringList(warnings)},
    };
    if (metadata.movieFrames() != metadata.videoFrames)
        object.insert(QStringLiteral("movieFrames"), static_cast<qint64>(metadata.movieFrames()));
    return object;
}

void printText(const QString &path, const MlvMetadata &metadata, const QStringList &warnings)
{
    const std::chrono::duration<double> length(metadata.fps > 0
                                                   ? static_cast<double>(metadata.videoFrames) /
                                                         static_cast<double>(metadata.fps)
                                                   : 0);
    const auto line = [](const QString &label, const QString &value) {
        printLine(QStringLiteral("  %1 %2").arg(label, -12).arg(printable(value)));
    };
    printLine(printable(path));
    line(QStringLiteral("Resolution"), metadata.resolution);
    line(QStringLiteral("Frames"), QStringLiteral("%1 at %2 frames/s (%3), %4 sound blocks")
                                       .arg(metadata.videoFrames)
                                       .arg(shortest(metadata.fps))
                                       .arg(timeText(length))
                                       .arg(metadata.audioFrames));
    const QString shutter = exposureTimeText(metadata.shutter);
    line(QStringLiteral("Exposure"),
         QStringLiteral("ISO %1, %2, f/%3")
             .arg(QString::number(metadata.iso),
                  shutter.isEmpty() ? QStringLiteral("unknown time") : shutter,
                  QString::number(shortest(metadata.aperture))));
    line(QStringLiteral("Camera"),
         QStringLiteral("%1 %2").arg(metadata.camera, metadata.cameraSerial));
    line(QStringLiteral("Lens"), QStringLiteral("%1 %2").arg(metadata.lens, metadata.focal));
    line(QStringLiteral("Recorded"), QStringLiteral("%1 %2").arg(metadata.date, metadata.time));
    for (const QString &warning : warnings)
        line(QStringLiteral("Warning"), warning);
}

} // namespace

int runInfo(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Tells what recordings say of themselves."));
    const QString json = QStringLiteral("json");
    parser.addOption({json, QStringLiteral("Print one JSON array; the shutter is in seconds.")});
    parser.addPositionalArgument(QStringLiteral("file"), QStringLiteral("Recordings."),
                                 QStringLiteral("file..."));
    if (const auto ending =
            readArguments(parser, QStringLiteral("info [options] file..."), arguments))
        return *ending;
    const QStringList paths = parser.positionalArguments();
    if (paths.isEmpty()) {
        printError(QStringLiteral("name at least one recording"));
        return ExitUnusable;
    }
    if (!checkTools({mlvDumpName}))
        return ExitUnusable;

    QJsonArray descriptions;
    int status = ExitSuccess;
    for (const QString &path : paths) {
        if (!QFileInfo(path).isFile() || !QFileInfo(path).isReadable()) {
            printError(QStringLiteral("%1 can't be read").arg(path));
            status = ExitUnusable;
            continue;
        }
        MLVProjectController project;
        const QString error = readMetadata(project, QFileInfo(path).absoluteFilePath());
        if (!error.isEmpty()) {
            printError(QStringLiteral("%1: %2").arg(path, error));
            status = std::max<int>(status, ExitFailed);
        } else if (parser.isSet(json)) {
            descriptions << describe(path, project.metadata(), warningsOf(project));
        } else {
            printText(path, project.metadata(), warningsOf(project));
        }
    }
    if (parser.isSet(json))
        printLine(QString::fromUtf8(QJsonDocument(descriptions).toJson().trimmed()));
    return status;
}

} // namespace filmwright
