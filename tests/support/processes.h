// SPDX-License-Identifier: MIT
#pragma once

#include <QStringList>

/// Whether a process of that id runs; a zombie that nobody has waited for doesn't count.
bool processRuns(qint64 pid);

/// How many children this process has, also those that have ended and that nobody has waited for.
qsizetype childProcesses();

/// The names of the programs that the running children of this process are.
QStringList runningChildren();

/// The command lines of the processes that were started with this, "NAME=value", in their
/// environment.
QStringList processesCarrying(const QByteArray &identity);

/// The command lines of all running processes in which a text occurs.
QStringList processesWith(const QString &text);
