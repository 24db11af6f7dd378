// SPDX-License-Identifier: MIT
#pragma once

#include "conversion/dcrawtask.h"
#include "conversion/hdrinterleavedimagemerge.h"
#include "sluice/slpipeline.h"
#include "sluice/slunitprocess.h"

#include <QMutex>
#include <QString>

#include <atomic>

namespace filmwright {

/// The unit that converts DNG frames: each path of its input "FilePath" (a QString) gives a TIFF
/// beside the DNG and, on the output "Image", a QImage of the TIFF's size with 8 bits a sample. A
/// frame that could not be converted gives a null image, so that one image comes back for every
/// path.
///
/// Several units can work off one queue of paths; the images then come in the order in which they
/// are ready.
///
/// Made, fed and destroyed on the main thread; the rest runs in the unit's worker thread.
class DCRawProcess : public SLUnitProcess, public DCRawTaskProtocol
{
public:
    DCRawProcess();
    ~DCRawProcess() override;

    /// Takes its paths from the other unit's queue from now on: whichever of them is free gets the
    /// next. Before the manager runs; both belong to one manager.
    void sharePathsOf(const DCRawProcess &other);

    /// Adds the output "ConvertedPath", on which every path comes out again behind its image, and
    /// answers it. Once, before the manager runs.
    SLOutlet *addPathOutput();

    /// Queues a DNG. Main thread, before or while the manager runs.
    void addFilePath(const QString &path);

    /// Whether cr2hdr blends each frame's alternating rows before the conversion; false after
    /// creation.
    bool dualIso() const { return m_dualIso; }
    void setDualIso(bool dualIso) { m_dualIso = dualIso; }

    /// dcraw's arguments in front of the usual ones; none after creation. Before the manager runs.
    void setDevelop(const QStringList &arguments);

    /// The brightness factor; 1 after creation. Before the manager runs.
    void setExposure(float exposure);

    bool process() override;

    /// Ends the tool that converts the current frame; its half-written TIFF is removed.
    void interrupt() override;

    /// What dcraw printed last on the latest frame that could not be converted; empty while all
    /// could. Any thread.
    QByteArray lastError() const;

    void dngConversionFinished(DCRawTask &task) override;

private:
    std::shared_ptr<SLPipeline> m_filePathPipeline;
    std::unique_ptr<DCRawTask> m_dcRawTask;
    HDRInterleavedImageMerge m_interleavedMerge;
    std::atomic<bool> m_dualIso = false;
    std::atomic<bool> m_tellsPaths = false;
    mutable QMutex m_errorLock;
    QByteArray m_lastError; // guarded by m_errorLock
};

} // namespace filmwright
