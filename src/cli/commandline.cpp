// SPDX-License-Identifier: MIT
#include "cli/commandline.h"

#include <QCommandLineParser>

namespace filmwright {

std::optional<ExitStatus> readArguments(QCommandLineParser &parser, const QString &usage,
                                        const QStringList &arguments)
{
    const QString program = QStringLiteral("filmwright-cli ");
    const QCommandLineOption help(QStringLiteral("help"), QStringLiteral("Print this help."));
    parser.addOption(help);
    if (!parser.parse(QStringList{program} + arguments)) {
        printError(parser.errorText());
        return ExitUnusable;
    }
    if (parser.isSet(help)) {
        QString text = parser.helpText().trimmed();
        text.replace(0, text.indexOf(QLatin1Char('\n')),
                     QStringLiteral("Usage: ") + program + usage);
        printLine(text);
        return ExitSuccess;
    }
    return std::nullopt;
}

} // namespace filmwright
