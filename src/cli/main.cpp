// SPDX-License-Identifier: MIT
#include "cli/capabilitycommands.h"
#include "cli/convertcommand.h"
#include "cli/exitstatus.h"
#include "cli/infocommand.h"
#include "cli/recipescommand.h"
#include "cli/verifycommand.h"
#include "runner/utf8locale.h"

#include <QCoreApplication>

#include <cstdio>
#include <optional>
#include <unistd.h>

using namespace filmwright;

namespace {

struct Command
{
    QLatin1String name;
    QLatin1String summary;
    int (*run)(const QStringList &arguments);
};

const Command commands[] = {
    {QLatin1String("convert"), QLatin1String("turn recordings into movies"), runConvert},
    {QLatin1String("info"), QLatin1String("tell what recordings say of themselves"), runInfo},
    {QLatin1String("verify"), QLatin1String("read recordings whole, tell what is lost"), runVerify},
    {QLatin1String("recipes"), QLatin1String("list the recipes of movies"), runRecipes},
    {QLatin1String("encoders"), QLatin1String("list what ffmpeg can encode"), runEncoders},
    {QLatin1String("tools"), QLatin1String("list the tools and where they are"), runTools},
};

/// The system log is standard error, where a live progress line may stand.
void printLogLine(QtMsgType, const QMessageLogContext &, const QString &message)
{
    const QByteArray line = printable(message).toUtf8();
    std::fprintf(stderr, "%s%s\n", isatty(STDERR_FILENO) == 1 ? "\r\033[K" : "", line.constData());
}

void printUsage()
{
    printLine(QStringLiteral("Usage: filmwright-cli COMMAND [OPTION]... [PATH]...\n\nCommands:"));
    for (const Command &command : commands)
        printLine(QStringLiteral("  %1 %2").arg(command.name, -10).arg(command.summary));
    printLine(QStringLiteral("\n\"filmwright-cli COMMAND --help\" tells the options of a command.\n"
                             "--version tells the version."));
}

} // namespace

int main(int argc, char *argv[])
{
    std::optional<Utf8Locale> locale(std::in_place);
    const QCoreApplication application(argc, argv);
    locale.reset();
    QCoreApplication::setApplicationName(QStringLiteral("filmwright-cli"));
    QCoreApplication::setApplicationVersion(QStringLiteral(FILMWRIGHT_VERSION));
    qInstallMessageHandler(printLogLine);

    const QStringList arguments = QCoreApplication::arguments().mid(1);
    const QString name = arguments.value(0);
    for (const Command &command : commands)
        if (name == command.name)
            return command.run(arguments.mid(1));
    if (name == QLatin1String("--version") || name == QLatin1String("-v")) {
        printLine(QStringLiteral("filmwright-cli " FILMWRIGHT_VERSION));
        return ExitSuccess;
    }
    if (name == QLatin1String("--help") || name == QLatin1String("-h")) {
        printUsage();
        return ExitSuccess;
    }
    printError(name.isEmpty()
                   ? QStringLiteral("name a command; --help lists them")
                   : QStringLiteral("unknown command \"%1\"; --help lists them").arg(name));
    return ExitUnusable;
}
