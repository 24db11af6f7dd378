// SPDX-License-Identifier: MIT
#include "cli/capabilitycommands.h"

#include "cli/commandline.h"
#include "cli/developer.h"
#include "cli/missingtools.h"
#include "encoding/ffmpegtask.h"
#include "project/mlvprojectcontroller.h"
#include "runner/resources.h"

#include <QCommandLineParser>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace filmwright {

namespace {

const QString json = QStringLiteral("json");

/// A command whose only option is --json.
void describeCommand(QCommandLineParser &parser, const QString &description)
{
    parser.setApplicationDescription(description);
    parser.addOption({json, QStringLiteral("Print JSON.")});
}

void printJson(const QJsonDocument &document)
{
    printLine(QString::fromUtf8(document.toJson().trimmed()));
}

void printEncodersAsJson(const QMap<QString, CapabilityList> &options)
{
    QJsonObject lists;
    for (auto list = options.cbegin(); list != options.cend(); ++list) {
        QJsonArray records;
        for (const CapabilityRecord &record : list.value()) {
            QJsonObject fields;
            for (auto field = record.cbegin(); field != record.cend(); ++field)
                fields.insert(field.key(), field.value());
            records << fields;
        }
        lists.insert(list.key(), records);
    }
    printJson(QJsonDocument(lists));
}

void printEncodersAsText(const QMap<QString, CapabilityList> &options)
{
    for (auto list = options.cbegin(); list != options.cend(); ++list) {
        printLine(list.key());
        for (const CapabilityRecord &record : list.value()) {
            const QString detail = record.contains(QStringLiteral("TITLE"))
                                       ? record.value(QStringLiteral("TITLE"))
                                       : record.value(QStringLiteral("NB_COMPONENTS"));
            printLine(QStringLiteral("  %1 %2")
                          .arg(record.value(QStringLiteral("NAME")), -20)
                          .arg(detail));
        }
    }
}

/// While one lives, the lines of ffmpeg's tables that can't be read are counted by list instead of
/// printed: a table of another form would fill the screen.
class UnreadableLines
{
public:
    UnreadableLines()
    {
        counts.clear();
        previous = qInstallMessageHandler(take);
    }
    UnreadableLines(const UnreadableLines &) = delete;
    UnreadableLines &operator=(const UnreadableLines &) = delete;
    ~UnreadableLines() { qInstallMessageHandler(previous); }

    static int of(const QString &list) { return counts.value(list); }

private:
    static void take(QtMsgType type, const QMessageLogContext &context, const QString &line)
    {
        const std::pair<QLatin1String, QString> starts[] = {
            {QLatin1String("Unable to parse PixFmts"), QStringLiteral("pix_fmts")},
            {QLatin1String("Unable to parse video"), QStringLiteral("video_encoders")},
            {QLatin1String("Unable to parse audio"), QStringLiteral("audio_encoders")},
        };
        for (const auto &[start, list] : starts) {
            if (line.startsWith(start)) {
                ++counts[list];
                return;
            }
        }
        previous(type, context, line);
    }

    static inline QMap<QString, int> counts;
    static inline QtMessageHandler previous = nullptr;
};

/// Why a list is empty or not whole.
void explainGaps(const QMap<QString, CapabilityList> &options)
{
    for (auto list = options.cbegin(); list != options.cend(); ++list) {
        const int unreadable = UnreadableLines::of(list.key());
        if (unreadable > 0) {
            printError(
                QStringLiteral("%1: %2 of the %3 lines that ffmpeg lists are of a form that isn't "
                               "understood")
                    .arg(list.key())
                    .arg(unreadable)
                    .arg(unreadable + list->size()));
        } else if (list->isEmpty()) {
            printError(QStringLiteral("%1: ffmpeg lists none").arg(list.key()));
        }
    }
}

QJsonValue orNull(const QString &value)
{
    return value.isEmpty() ? QJsonValue() : value;
}

QJsonObject toolAsJson(const QString &name, const QString &path,
                       const std::optional<Developer> &developer)
{
    QJsonObject tool{{QStringLiteral("name"), name}, {QStringLiteral("path"), orNull(path)}};
    if (developer) {
        tool.insert(QStringLiteral("program"), developer->program);
        tool.insert(QStringLiteral("covers"), orNull(developer->covers));
        tool.insert(QStringLiteral("other"), orNull(developer->other));
    }
    return tool;
}

void printTool(const QString &name, const QString &path, const std::optional<Developer> &developer)
{
    const QString line = QStringLiteral("%1 %2");
    printLine(line.arg(name, -10).arg(path.isNull() ? QStringLiteral("missing") : path));
    if (developer)
        printLine(line.arg(QString(), -10).arg(describe(*developer)));
}

} // namespace

int runEncoders(const QStringList &arguments)
{
    QCommandLineParser parser;
    describeCommand(parser, QStringLiteral("Lists the pixel formats and encoders of ffmpeg."));
    if (const auto status = readArguments(parser, QStringLiteral("encoders [options]"), arguments))
        return *status;
    if (!checkTools({ffmpegName}))
        return ExitUnusable;
    const UnreadableLines unreadable;
    const QMap<QString, CapabilityList> options = FFmpegTask::ffmpegTask()->readOptions();
    if (parser.isSet(json))
        printEncodersAsJson(options);
    else
        printEncodersAsText(options);
    explainGaps(options);
    return ExitSuccess;
}

int runTools(const QStringList &arguments)
{
    QCommandLineParser parser;
    describeCommand(parser, QStringLiteral("Lists the tools that do the work and where they are."));
    if (const auto status = readArguments(parser, QStringLiteral("tools [options]"), arguments))
        return *status;
    QJsonArray tools;
    const QStringList names = MLVProjectController::toolNames(true);
    for (const QString &name : names) {
        const QString path = resourcePath(name);
        const auto developer =
            name == dcrawName && !path.isNull() ? askDeveloper(path) : std::nullopt;
        tools << toolAsJson(name, path, developer);
        if (!parser.isSet(json))
            printTool(name, path, developer);
    }
    if (parser.isSet(json))
        printJson(QJsonDocument(tools));
    return checkTools(names) ? ExitSuccess : ExitUnusable;
}

} // namespace filmwright
