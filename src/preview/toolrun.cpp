// SPDX-License-Identifier: MIT
#include "preview/toolrun.h"

#include "runner/resources.h"

namespace filmwright {

ToolRun::ToolRun()
{
    setTaskWrapperdelegate(this);
}

ToolRun::~ToolRun()
{
    setTaskWrapperdelegate(nullptr);
    disconnect();
    stop(false);
}

void ToolRun::begin(const ToolCall &call)
{
    m_tool = call.tool;
    m_error.clear();
    setLaunchPath(resourcePath(call.tool));
    setArguments(call.arguments);
    setCurrentDirectoryPath(call.folder);
    start();
    m_launched = isRunning();
    if (!m_launched)
        QMetaObject::invokeMethod(this, &ToolRun::ended, Qt::QueuedConnection);
}

void ToolRun::receivedLine(const QString &line, TaskWrapper &)
{
    for (const QLatin1String mark : {QLatin1String("[UNUSABLE] "), QLatin1String("[ERROR] ")})
        if (line.startsWith(mark))
            m_error = line.sliced(mark.size());
}

QString ToolRun::error() const
{
    if (!m_launched)
        return QStringLiteral("%1 could not be started").arg(m_tool);
    if (!m_error.isEmpty())
        return m_error;
    const QString said = QString::fromUtf8(lastOutput()).trimmed();
    const QString last = said.section(QLatin1Char('\n'), -1).trimmed();
    return last.isEmpty() ? QStringLiteral("%1 failed without a word").arg(m_tool)
                          : QStringLiteral("%1: %2").arg(m_tool, last);
}

void ToolRun::taskWrapperTerminated()
{
    if (!isAborting())
        Q_EMIT ended();
}

} // namespace filmwright

#include "moc_toolrun.cpp"
