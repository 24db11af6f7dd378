// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

namespace filmwright {

class TaskWrapper;

/// Who is told of a tool's run. All calls arrive on the thread that drives the wrapper.
///
/// Only `aborted` is required. A delegate that wants output also derives from the interfaces below;
/// whether it does is asked at run time, and a wrapper whose delegate receives no lines never
/// splits its output into lines.
class TaskWrapperDelegate
{
public:
    virtual ~TaskWrapperDelegate() = default;

    /// The run was aborted; the child is gone. Also sent when abort() found nothing to stop.
    virtual void aborted() = 0;
};

/// A delegate that receives the tool's output as it comes.
class TaskWrapperDataReceiver
{
public:
    virtual ~TaskWrapperDataReceiver() = default;

    /// One non-empty chunk of output; its lines follow.
    virtual void receivedData(const QByteArray &data, TaskWrapper &taskWrapper) = 0;
};

/// A delegate that receives the tool's output as lines.
class TaskWrapperLineReceiver
{
public:
    virtual ~TaskWrapperLineReceiver() = default;

    /// One complete line without its line end. A std::exception thrown from here is logged and
    /// costs the remaining lines of the chunk.
    virtual void receivedLine(const QString &line, TaskWrapper &taskWrapper) = 0;
};

/// A delegate that receives what was still in the pipe when the wrapper was stopped with a flush.
class TaskWrapperDrainReceiver
{
public:
    virtual ~TaskWrapperDrainReceiver() = default;

    virtual void receivedData(const QByteArray &data) = 0;
};

} // namespace filmwright
