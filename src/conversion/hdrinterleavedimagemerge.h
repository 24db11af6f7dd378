// SPDX-License-Identifier: MIT
#pragma once

#include "conversion/dcrawtask.h"
#include "runner/taskwrapper.h"

#include <QMutex>
#include <QString>

#include <memory>

namespace filmwright {

/// Blends one dual-ISO DNG in place with cr2hdr, after converting it once at the default
/// brightness. Used on one thread, apart from requestCancel().
class HDRInterleavedImageMerge : public TaskWrapperDelegate, public TaskWrapperLineReceiver
{
public:
    QString imagePath() const { return m_imagePath; }
    void setImagePath(const QString &path) { m_imagePath = path; }

    /// Blocks for the length of both tools. What cr2hdr prints goes to the system log; a missing
    /// or failing tool is not reported otherwise.
    void hdrMerge();

    /// Makes a running hdrMerge() and every later one return soon. Any thread.
    void requestCancel();
    /// Takes that back. On the thread of hdrMerge().
    void clearCancelRequest();

    void receivedLine(const QString &line, TaskWrapper &taskWrapper) override;
    void aborted() override {}

private:
    void setBlender(std::unique_ptr<TaskWrapper> blender);

    QString m_imagePath;
    DCRawTask m_dcRawTask; // its request to cancel stands for the whole merge
    QMutex m_blenderLock;
    std::unique_ptr<TaskWrapper> m_blender; // guarded by m_blenderLock; the cr2hdr that runs
};

} // namespace filmwright
