// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>
#include <QTemporaryDir>

/// A private resources folder with fake tools. While one lives, the environment variable
/// FILMWRIGHT_RESOURCES names it, so that the application finds the fakes first.
class ToolFolder
{
public:
    ToolFolder();
    ~ToolFolder();
    ToolFolder(const ToolFolder &) = delete;
    ToolFolder &operator=(const ToolFolder &) = delete;

    /// Adds a tool that notes its arguments and then runs the shell script, in which "$@" are the
    /// arguments.
    void addTool(const QString &name, const QString &script);

    /// Adds a link to a real program.
    void linkTool(const QString &name, const QString &target);

    /// The argument lists of all calls of the tool so far, in order.
    QList<QStringList> calls(const QString &name) const;

    QString path() const { return m_folder.path(); }

private:
    QTemporaryDir m_folder;
    QByteArray m_previous;
};
