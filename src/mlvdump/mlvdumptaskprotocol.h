// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace filmwright {

class MlvDumpTask;

/// Who is told of the ends of an MlvDumpTask's runs. All calls arrive on the main thread.
class MlvDumpTaskProtocol
{
public:
    virtual ~MlvDumpTaskProtocol() = default;

    /// The report was read; the task's values are set.
    virtual void metaExtractionFinished(MlvDumpTask &task) = 0;
    /// The frame files are there: just extracted, or still there from an earlier run.
    virtual void dngExtractionFinished(MlvDumpTask &task) = 0;
    /// A run of whatever kind was aborted.
    virtual void dngExtractionAborted(MlvDumpTask &task) = 0;
    virtual void processingDarkFinished(MlvDumpTask &task) = 0;
    virtual void processingFlatFinished(MlvDumpTask &task) = 0;
    virtual void processingFlatDarkFinished(MlvDumpTask &task) = 0;
    virtual void processingFlatDarkSubstractionFinished(MlvDumpTask &task) = 0;
    /// The tool printed an error line; the run goes on and may still finish.
    virtual void error(const QString &error, MlvDumpTask &forTask) = 0;
};

} // namespace filmwright
