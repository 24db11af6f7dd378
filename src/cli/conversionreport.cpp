// SPDX-License-Identifier: MIT
#include "cli/conversionreport.h"

#include "cli/exitstatus.h"
#include "cli/texttable.h"
#include "runner/fixedtext.h"
#include "runner/wholefiles.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

#include <cerrno>
#include <climits>

namespace filmwright {

namespace {

/// What the table and the report call a result.
QString nameOf(RecordingOutcome::Result result)
{
    switch (result) {
    case RecordingOutcome::Interrupted:
        return QStringLiteral("interrupted");
    case RecordingOutcome::Failed:
        return QStringLiteral("failed");
    case RecordingOutcome::Finished:
        return QStringLiteral("finished");
    case RecordingOutcome::Skipped:
        return QStringLiteral("skipped");
    case RecordingOutcome::NotBegun:
        break;
    }
    return QStringLiteral("not begun");
}

double seconds(std::chrono::milliseconds duration)
{
    return std::chrono::duration<double>(duration).count();
}

QStringList row(const RecordingOutcome &outcome, qsizetype folderLength)
{
    const bool begun = outcome.result != RecordingOutcome::NotBegun;
    const QStringList errors =
        outcome.failure.isEmpty() ? QStringList() : QStringList{outcome.failure.error};
    const QStringList remarks = errors + outcome.warnings + outcome.notes;
    return {printable(outcome.recording.mid(folderLength)), nameOf(outcome.result),
            outcome.frames > 0 ? QString::number(outcome.frames) : QString(),
            begun ? fixedText(seconds(outcome.duration), 1) : QString(),
            printable(remarks.join(QLatin1String("; ")))};
}

QJsonValue textOrNull(const QString &value)
{
    return value.isEmpty() ? QJsonValue(QJsonValue::Null) : QJsonValue(value);
}

QJsonObject objectOf(const RecordingOutcome &outcome)
{
    QJsonObject tools;
    for (auto tool = outcome.toolLines.cbegin(); tool != outcome.toolLines.cend(); ++tool)
        tools.insert(tool.key(), QJsonArray::fromStringList(tool.value()));
    return {
        {QStringLiteral("recording"), outcome.recording},
        {QStringLiteral("result"), nameOf(outcome.result)},
        {QStringLiteral("movie"), textOrNull(outcome.movie)},
        {QStringLiteral("frames"), outcome.frames},
        {QStringLiteral("seconds"), seconds(outcome.duration)},
        {QStringLiteral("reason"), textOrNull(outcome.failure.error)},
        {QStringLiteral("tool"), textOrNull(outcome.failure.tool)},
        {QStringLiteral("warnings"), QJsonArray::fromStringList(outcome.warnings + outcome.notes)},
        {QStringLiteral("tools"), tools},
    };
}

QString writeError(const QString &path, const QString &why)
{
    return QStringLiteral("the report %1 can't be written: %2").arg(path, why);
}

} // namespace

QStringList outcomeTable(const QList<RecordingOutcome> &outcomes)
{
    QList<QStringList> rows{{QStringLiteral("recording"), QStringLiteral("result"),
                             QStringLiteral("frames"), QStringLiteral("seconds"),
                             QStringLiteral("reason")}};
    QStringList recordings;
    for (const RecordingOutcome &outcome : outcomes)
        recordings << outcome.recording;
    const qsizetype folderLength = commonFolder(recordings).size();
    for (const RecordingOutcome &outcome : outcomes)
        rows << row(outcome, folderLength);
    return textTable(rows, {2, 3});
}

QByteArray outcomeReport(const QList<RecordingOutcome> &outcomes, int status,
                         const ConversionSettings &settings)
{
    QJsonArray recordings;
    for (const RecordingOutcome &outcome : outcomes)
        recordings.append(objectOf(outcome));
    QJsonObject report{{QStringLiteral("status"), status},
                       {QStringLiteral("recordings"), recordings}};
    const auto add = [&report](const QString &name, const QString &choice) {
        if (!choice.isEmpty())
            report.insert(name, choice);
    };
    add(QStringLiteral("recipe"), settings.recipe ? settings.recipe->id : QString());
    add(QStringLiteral("whiteBalance"), settings.corrections.whiteBalance);
    add(QStringLiteral("lut"), settings.lut);
    add(QStringLiteral("framesAskedFor"), settings.frames.text());
    if (settings.corrections.exposure != 0)
        report.insert(QStringLiteral("exposure"), settings.corrections.exposure);
    return QJsonDocument(report).toJson();
}

QString reportFileError(const QString &path)
{
    QSaveFile file(path);
    const bool writable = file.open(QIODevice::WriteOnly);
    file.cancelWriting();
    // The file gets its name only at the end.
    const bool nameFits = QFile::encodeName(QFileInfo(path).fileName()).size() <= NAME_MAX;
    if (writable && nameFits)
        return {};
    return writeError(path, nameFits ? file.errorString() : qt_error_string(ENAMETOOLONG));
}

QString writeReport(const QString &path, const QByteArray &report)
{
    const QString error = writeFile(path, report);
    return error.isEmpty() ? error : writeError(path, error);
}

} // namespace filmwright
