// SPDX-License-Identifier: MIT
#include "support/toolfolder.h"

#include <QFile>
#include <QTest>

namespace {

constexpr char variable[] = "FILMWRIGHT_RESOURCES";

} // namespace

ToolFolder::ToolFolder()
    : m_previous(qgetenv(variable))
{
    QVERIFY2(m_folder.isValid(), "no temporary folder");
    qputenv(variable, m_folder.path().toUtf8());
}

ToolFolder::~ToolFolder()
{
    if (m_previous.isEmpty())
        qunsetenv(variable);
    else
        qputenv(variable, m_previous);
}

void ToolFolder::addTool(const QString &name, const QString &script)
{
    QFile tool(m_folder.filePath(name));
    QVERIFY2(tool.open(QIODevice::WriteOnly), "tool not written");
    // Each argument ends with a unit separator, each call with a record separator. Written at once:
    // several calls may run beside each other.
    tool.write(
        "#!/bin/sh\nIFS='\037'; printf \"%s${1+$IFS}\\036\" \"$*\" >> \"$0.calls\"; unset IFS\n");
    tool.write(script.toUtf8() + '\n');
    tool.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

void ToolFolder::linkTool(const QString &name, const QString &target)
{
    QVERIFY2(QFile::link(target, m_folder.filePath(name)), "tool not linked");
}

QList<QStringList> ToolFolder::calls(const QString &name) const
{
    QFile record(m_folder.filePath(name + QStringLiteral(".calls")));
    QList<QStringList> calls;
    if (!record.open(QIODevice::ReadOnly))
        return calls;
    QStringList records = QString::fromUtf8(record.readAll()).split(QChar(0x1e));
    records.removeLast();
    for (const QString &call : std::as_const(records)) {
        QStringList arguments = call.split(QChar(0x1f));
        arguments.removeLast();
        calls << arguments;
    }
    return calls;
}
