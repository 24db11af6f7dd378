// SPDX-License-Identifier: MIT
#pragma once

#include "runner/taskwrapper.h"

namespace filmwright {

/// A call of a bundled tool.
struct ToolCall
{
    QString tool; ///< its name: "dcraw"
    QStringList arguments;
    QString folder{}; ///< the child's working directory; a null string is the application's
};

/// Runs a bundled tool to its end, one call at a time. Main thread only.
class ToolRun : public TaskWrapper, public TaskWrapperDelegate, public TaskWrapperLineReceiver
{
    Q_OBJECT

public:
    ToolRun();
    ~ToolRun() override;

    /// Starts; ends with ended(), unless it is aborted.
    void begin(const ToolCall &call);

    /// Whether the tool of the last call ended with status 0.
    bool hasSucceeded() const { return m_launched && terminationStatus() == 0; }
    /// The error that the tool told, else the last that it said; a sentence.
    QString error() const;

    void receivedLine(const QString &line, TaskWrapper &taskWrapper) override;
    void aborted() override {}

Q_SIGNALS:
    void ended();

protected:
    void taskWrapperTerminated() override;

private:
    QString m_tool;
    QString m_error;
    bool m_launched = false;
};

} // namespace filmwright
