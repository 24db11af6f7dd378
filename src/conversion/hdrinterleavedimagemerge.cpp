// SPDX-License-Identifier: MIT
#include "conversion/hdrinterleavedimagemerge.h"

#include "runner/resources.h"
#include "runner/systemlog.h"

#include <QFileInfo>
#include <QProcessEnvironment>

namespace filmwright {

void HDRInterleavedImageMerge::hdrMerge()
{
    m_dcRawTask.setDngPath(m_imagePath);
    m_dcRawTask.convertDNG();
    if (m_dcRawTask.isCancelRequested())
        return;
    const QString cr2hdr = resourcePath(cr2hdrName);
    // Its own folder is all that it may look for programs in.
    QProcessEnvironment environment;
    environment.insert(QStringLiteral("PATH"), QFileInfo(cr2hdr).path());
    // One for each frame: what the last one left of an unfinished line is not this one's.
    auto blender = std::make_unique<TaskWrapper>();
    blender->setTaskWrapperdelegate(this);
    blender->setLaunchPath(cr2hdr);
    blender->setEnvironmentVariables(environment);
    blender->setArguments({m_imagePath});
    TaskWrapper &running = *blender;
    setBlender(std::move(blender));
    running.startAndWaitUntilExit(true);
    setBlender(nullptr);
}

void HDRInterleavedImageMerge::setBlender(std::unique_ptr<TaskWrapper> blender)
{
    const QMutexLocker locker(&m_blenderLock);
    m_blender = std::move(blender);
    if (m_blender && m_dcRawTask.isCancelRequested())
        m_blender->requestCancel();
}

void HDRInterleavedImageMerge::requestCancel()
{
    m_dcRawTask.requestCancel();
    const QMutexLocker locker(&m_blenderLock);
    if (m_blender)
        m_blender->requestCancel();
}

void HDRInterleavedImageMerge::clearCancelRequest()
{
    m_dcRawTask.clearCancelRequest();
}

void HDRInterleavedImageMerge::receivedLine(const QString &line, TaskWrapper &)
{
    systemLogFormat(line);
}

} // namespace filmwright
