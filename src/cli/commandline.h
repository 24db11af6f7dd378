// SPDX-License-Identifier: MIT
#pragma once

#include "cli/exitstatus.h"

#include <QStringList>

#include <optional>

class QCommandLineParser;

namespace filmwright {

/// Reads the arguments that follow a command's name. When they end the program, because help was
/// asked for (which is printed) or something is wrong (which is told), returns the exit status.
/// `usage` is the command's line of usage behind the program's name.
std::optional<ExitStatus> readArguments(QCommandLineParser &parser, const QString &usage,
                                        const QStringList &arguments);

} // namespace filmwright
