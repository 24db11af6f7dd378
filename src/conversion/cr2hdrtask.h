// SPDX-License-Identifier: MIT
#pragma once

#include "runner/taskwrapper.h"

#include <memory>

namespace filmwright {

class CR2HDRTask;

/// Who is told that all frames of a recording have been through cr2hdr.
class CR2HDRTaskProtocol
{
public:
    virtual ~CR2HDRTaskProtocol() = default;

    /// cr2hdr ended, whatever its status. Not sent for an aborted run.
    virtual void blendFinished(CR2HDRTask &task) = 0;
};

/// Blends the alternating rows of all DNG frames of a folder in one run of cr2hdr, so that they are
/// taken for one recording and nothing flickers. Main thread only.
class CR2HDRTask : public TaskWrapper, public TaskWrapperDelegate, public TaskWrapperLineReceiver
{
    Q_OBJECT

public:
    /// A task that is ready to run the bundled cr2hdr and listens to itself.
    static std::unique_ptr<CR2HDRTask> cr2hdrTask();

    CR2HDRTask() = default;
    ~CR2HDRTask() override;

    /// Not owned; cleared by its owner before it goes away.
    CR2HDRTaskProtocol *delegate() const { return m_delegate; }
    void setDelegate(CR2HDRTaskProtocol *delegate) { m_delegate = delegate; }

    /// Starts blending the named frames of the folder in place; returns at once. `options` stand in
    /// front of the names.
    void blend(const QString &folder, const QStringList &names, const QStringList &options = {});

    /// Every line of the current or last run.
    QStringList logs() const { return m_logs; }

    void receivedLine(const QString &line, TaskWrapper &taskWrapper) override;
    void aborted() override {}

protected:
    void taskWrapperTerminated() override;

private:
    CR2HDRTaskProtocol *m_delegate = nullptr;
    QStringList m_logs;
};

} // namespace filmwright
