// SPDX-License-Identifier: MIT
#pragma once

#include "runner/taskwrapper.h"

#include <memory>

namespace filmwright {

class DCRawTask;

/// Who is told that a conversion is over, on the thread that converts.
class DCRawTaskProtocol
{
public:
    virtual ~DCRawTaskProtocol() = default;

    /// dcraw ended, or there was nothing to do. Whether there is a TIFF is for the delegate to see.
    virtual void dngConversionFinished(DCRawTask &task) = 0;
};

/// Runs dcraw once for one DNG. Its output is read and dropped.
class DCRawTask : public TaskWrapper, public TaskWrapperDelegate
{
    Q_OBJECT

public:
    /// A task that is ready to run the bundled dcraw and listens to itself.
    static std::unique_ptr<DCRawTask> dcRawTask();

    DCRawTask();
    ~DCRawTask() override;

    /// Not owned; cleared by its owner before it goes away.
    DCRawTaskProtocol *delegate() const { return m_delegate; }
    void setDelegate(DCRawTaskProtocol *delegate) { m_delegate = delegate; }

    QString dngPath() const { return m_dngPath; }
    void setDngPath(const QString &path) { m_dngPath = path; }

    /// Brightness factor; 1 after creation.
    float exposure() const { return m_exposure; }
    void setExposure(float exposure) { m_exposure = exposure; }

    /// dcraw's arguments in front of the usual ones; none after creation.
    QStringList develop() const { return m_develop; }
    void setDevelop(const QStringList &arguments) { m_develop = arguments; }

    /// Converts dngPath() to the TIFF beside it, unless a file is already there, and reports to
    /// the delegate before it returns. Blocks for the length of a dcraw run; requestCancel() makes
    /// it return soon, without the half-written TIFF of that run.
    void convertDNG();

    void aborted() override {}

protected:
    void taskWrapperTerminated() override;

private:
    void reportFinished();

    DCRawTaskProtocol *m_delegate = nullptr;
    QString m_dngPath;
    float m_exposure = 1.0F;
    QStringList m_develop;
};

} // namespace filmwright
