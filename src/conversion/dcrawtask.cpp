// SPDX-License-Identifier: MIT
#include "conversion/dcrawtask.h"

#include "conversion/dcrawarguments.h"
#include "conversion/tiffbitmap.h"
#include "runner/resources.h"

#include <QFile>

namespace filmwright {

std::unique_ptr<DCRawTask> DCRawTask::dcRawTask()
{
    return std::make_unique<DCRawTask>();
}

DCRawTask::DCRawTask()
{
    setLaunchPath(resourcePath(dcrawName));
    setTaskWrapperdelegate(this);
}

DCRawTask::~DCRawTask() = default;

void DCRawTask::convertDNG()
{
    const QString tiffPath = tiffPathFor(m_dngPath);
    if (!QFile::exists(tiffPath) && !isCancelRequested()) {
        setArguments(dcRawArguments(m_dngPath, m_exposure, m_develop));
        startAndWaitUntilExit(true);
        // A later run would take what the cancelled one left for a converted frame.
        if (isCancelRequested() && !TiffBitmap::isWhole(tiffPath))
            QFile::remove(tiffPath);
    }
    reportFinished();
}

void DCRawTask::taskWrapperTerminated()
{
    reportFinished();
}

void DCRawTask::reportFinished()
{
    if (m_delegate)
        m_delegate->dngConversionFinished(*this);
}

} // namespace filmwright

#include "moc_dcrawtask.cpp"
