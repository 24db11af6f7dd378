// SPDX-License-Identifier: MIT
#include "conversion/cr2hdrtask.h"

#include "runner/resources.h"

namespace filmwright {

std::unique_ptr<CR2HDRTask> CR2HDRTask::cr2hdrTask()
{
    auto task = std::make_unique<CR2HDRTask>();
    task->setLaunchPath(resourcePath(cr2hdrName));
    task->setTaskWrapperdelegate(task.get());
    return task;
}

CR2HDRTask::~CR2HDRTask()
{
    setTaskWrapperdelegate(nullptr);
}

void CR2HDRTask::blend(const QString &folder, const QStringList &names, const QStringList &options)
{
    m_logs.clear();
    // Names alone keep an hour of footage below the system's limit for a command line.
    setCurrentDirectoryPath(folder);
    setArguments(options + names);
    start();
}

void CR2HDRTask::receivedLine(const QString &line, TaskWrapper &)
{
    m_logs << line;
}

void CR2HDRTask::taskWrapperTerminated()
{
    if (m_delegate && !isAborting())
        m_delegate->blendFinished(*this);
}

} // namespace filmwright

#include "moc_cr2hdrtask.cpp"
