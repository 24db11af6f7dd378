// SPDX-License-Identifier: MIT
#include "conversion/dcrawprocess.h"

#include "conversion/dcrawarguments.h"
#include "conversion/tiffbitmap.h"

#include <QImage>

namespace filmwright {

namespace {

constexpr float dualIsoExposure = 8.0F;

QString filePathKey()
{
    return QStringLiteral("FilePath");
}

QString imageKey()
{
    return QStringLiteral("Image");
}

QString convertedPathKey()
{
    return QStringLiteral("ConvertedPath");
}

std::shared_ptr<SLOutlet> makeOutlet(const QString &name, SLOutletMode mode, QMetaType dataType)
{
    auto outlet = SLOutlet::outlet();
    outlet->setName(name);
    outlet->setMode(mode);
    outlet->setDataType(dataType);
    return outlet;
}

} // namespace

DCRawProcess::DCRawProcess()
    : m_filePathPipeline(SLPipeline::pipeline())
    , m_dcRawTask(DCRawTask::dcRawTask())
{
    const auto stringType = QMetaType::fromType<QString>();
    setInputs({makeOutlet(filePathKey(), SLOutletModeInput, stringType)});
    setOutputs({makeOutlet(imageKey(), SLOutletModeOutput, QMetaType::fromType<QImage>())});
    m_filePathPipeline->setDataType(stringType);
    m_filePathPipeline->setOutput(inputs().front());
    setThreadMode(SLThreadModeWorker);
    m_dcRawTask->setDelegate(this);
}

DCRawProcess::~DCRawProcess() = default;

void DCRawProcess::sharePathsOf(const DCRawProcess &other)
{
    m_filePathPipeline = other.m_filePathPipeline;
    m_filePathPipeline->addOutput(inputs().front());
}

SLOutlet *DCRawProcess::addPathOutput()
{
    Outlets all = outputs();
    all.push_back(
        makeOutlet(convertedPathKey(), SLOutletModeOutput, QMetaType::fromType<QString>()));
    setOutputs(all);
    m_tellsPaths = true;
    return all.back().get();
}

void DCRawProcess::addFilePath(const QString &path)
{
    m_filePathPipeline->setValue(path);
}

void DCRawProcess::setDevelop(const QStringList &arguments)
{
    m_dcRawTask->setDevelop(arguments);
}

void DCRawProcess::setExposure(float exposure)
{
    m_dcRawTask->setExposure(exposure);
}

bool DCRawProcess::process()
{
    // A request to end belongs to a stop: one made before this call has either been meant for an
    // earlier frame, or the stop is seen here.
    m_dcRawTask->clearCancelRequest();
    m_interleavedMerge.clearCancelRequest();
    if (isStopped())
        return true;

    const QString path = inputValueForKey(filePathKey()).toString();
    if (m_dualIso) {
        m_interleavedMerge.setImagePath(path);
        m_interleavedMerge.hdrMerge();
        // Never set back. The merge has just made the TIFF at the default exposure, so this one
        // counts only where that failed.
        m_dcRawTask->setExposure(dualIsoExposure);
    }
    m_dcRawTask->setDngPath(path);
    m_dcRawTask->convertDNG();
    return true;
}

void DCRawProcess::interrupt()
{
    m_interleavedMerge.requestCancel();
    m_dcRawTask->requestCancel();
}

QByteArray DCRawProcess::lastError() const
{
    const QMutexLocker locker(&m_errorLock);
    return m_lastError;
}

void DCRawProcess::dngConversionFinished(DCRawTask &task)
{
    const QString path = inputValueForKey(filePathKey()).toString();
    const TiffBitmap frame = TiffBitmap::read(tiffPathFor(path));
    if (frame.isEmpty()) {
        const QMutexLocker locker(&m_errorLock);
        m_lastError = task.lastOutput();
    }
    setOutputValue(frame.eightBits().toImage(), imageKey());
    if (m_tellsPaths)
        setOutputValue(path, convertedPathKey());
}

} // namespace filmwright
