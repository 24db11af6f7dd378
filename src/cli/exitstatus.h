// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace filmwright {

/// How a command ends.
enum ExitStatus : int {
    ExitSuccess = 0,       ///< everything asked for was done
    ExitFailed = 1,        ///< at least one recording failed
    ExitUnusable = 2,      ///< wrong usage, a missing tool or an unreadable path; nothing was begun
    ExitInterrupted = 130, ///< ended by a signal; tools stopped, partial output removed
};

/// A line on standard error, with the program's name in front.
void printError(const QString &error);

/// A line on standard output, at once.
void printLine(const QString &line);

/// Text that is safe on a terminal: control characters are replaced.
QString printable(QString text);

} // namespace filmwright
