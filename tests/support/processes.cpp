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

bool runs(const QList<QByteArray> &fields)
{
    const QByteArray state = fields.value(0);
    return !state.isEmpty() && state != "Z" && state != "X";
}

bool isChild(const QList<QByteArray> &fields)
{
    return fields.value(1) == QByteArray::number(QCoreApplication::applicationPid());
}

QStringList processes()
{
    static const QRegularExpression number(QStringLiteral("^[0-9]+$"));
    return QDir(QStringLiteral("/proc")).entryList(QDir::Dirs).filter(number);
}

} // namespace

bool processRuns(qint64 pid)
{
    return runs(processFields(QString::number(pid)));
}

qsizetype childProcesses()
{
    return std::ranges::count_if(processes(),
                                 [](const QString &pid) { return isChild(processFields(pid)); });
}

QStringList runningChildren()
{
    QStringList names;
    for (const QString &pid : processes()) {
        const QList<QByteArray> fields = processFields(pid);
        QFile name(QStringLiteral("/proc/%1/comm").arg(pid));
        if (isChild(fields) && runs(fields) && name.open(QIODevice::ReadOnly))
            names << QString::fromLocal8Bit(name.readAll().trimmed());
    }
    return names;
}

QStringList processesCarrying(const QByteArray &identity)
{
    QStringList commands;
    for (const QString &pid : processes()) {
        QFile environment(QStringLiteral("/proc/%1/environ").arg(pid));
        QFile command(QStringLiteral("/proc/%1/cmdline").arg(pid));
        if (environment.open(QIODevice::ReadOnly) && environment.readAll().contains(identity) &&
            command.open(QIODevice::ReadOnly))
            commands << QString::fromLocal8Bit(command.readAll().replace('\0', ' ')).trimmed();
    }
    return commands;
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
