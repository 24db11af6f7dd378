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
    const QString cr2hdr = resourcePath(QStringLiteral("cr2hdr"));
    // Its own folder is all that it may look for programs in.
    QProcessEnvironment environment;
    environment.insert(QStringLiteral("PATH"), QFileInfo(cr2hdr).path());
    m_cr2hdr.setTaskWrapperdelegate(this);
    m_cr2hdr.setLaunchPath(cr2hdr);
    m_cr2hdr.setEnvironmentVariables(environment);
    m_cr2hdr.setArguments({m_imagePath});
    m_cr2hdr.startAndWaitUntilExit(true);
}

void HDRInterleavedImageMerge::requestCancel()
{
    m_dcRawTask.requestCancel();
    m_cr2hdr.requestCancel();
}

void HDRInterleavedImageMerge::clearCancelRequest()
{
    m_dcRawTask.clearCancelRequest();
    m_cr2hdr.clearCancelRequest();
}

void HDRInterleavedImageMerge::receivedLine(const QString &line, TaskWrapper &)
{
    systemLogFormat(line);
}

} // namespace filmwright
