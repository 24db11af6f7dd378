// SPDX-License-Identifier: MIT
#include "support/processes.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QRegularExpression>

#include <algorithm>

namespace {

/// What the kernel says of a process from its state on: state, parent, group …; empty without it.
QList<QByteArray> processFields(const QString &pid)
{
    QFile stat(QStringLiteral("/proc/%1/stat").arg(pid));
    if (!stat.open(QIODevice::ReadOnly))
        return {};
    const QByteArray line = stat.readAll();
    return line.mid(line.lastIndexOf(')') + 2).split(' ');
}

QStringList processes()
{
    static const QRegularExpression number(QStringLiteral("^[0-9]+$"));
    return QDir(QStringLiteral("/proc")).entryList(QDir::Dirs).filter(number);
}

} // namespace

bool processRuns(qint64 pid)
{
    const QByteArray state = processFields(QString::number(pid)).value(0);
    return !state.isEmpty() && state != "Z" && state != "X";
}

qsizetype childProcesses()
{
    const QByteArray parent = QByteArray::number(QCoreApplication::applicationPid());
    return std::ranges::count_if(processes(), [&parent](const QString &pid) {
        return processFields(pid).value(1) == parent;
    });
}

QStringList processesWith(const QString &text)
{
    QStringList commands;
    for (const QString &pid : processes()) {
        QFile file(QStringLiteral("/proc/%1/cmdline").arg(pid)); // a zombie's is empty
        if (!file.open(QIODevice::ReadOnly))
            continue;
        const QString command = QString::fromLocal8Bit(file.readAll().replace('\0', ' ')).trimmed();
        if (command.contains(text))
            commands.append(command);
    }
    return commands;
}
