// SPDX-License-Identifier: MIT
#pragma once

#include "mlvdump/mlvdumptask.h"
#include "project/conversionsettings.h"

#include <QObject>

#include <deque>
#include <functional>
#include <memory>

namespace filmwright {

/// Averages the calibration recordings of a run into the temporary directory, one after the other,
/// and subtracts the dark of the flat from the flat when both are given. Main thread only.
class Calibration : public QObject, private MlvDumpTaskProtocol
{
    Q_OBJECT

public:
    explicit Calibration(const CalibrationChoice &choice);
    ~Calibration() override;

    void start();
    void stop();

Q_SIGNALS:
    /// The next average is being made of this recording.
    void averaging(const QString &recording);
    /// All averages are there, or, with an error, one can't be made. Sent once, after the current
    /// event.
    void ended(const QString &error);

private:
    struct Step
    {
        QString recording;
        QString output;
        std::function<void(MlvDumpTask &)> run;
    };

    void addStep(const QString &recording, QLatin1String output,
                 std::function<void(MlvDumpTask &)> run);
    void next();
    void stepFinished();
    void checkTool();
    void end(const QString &error);

    void metaExtractionFinished(MlvDumpTask &) override {}
    void dngExtractionFinished(MlvDumpTask &) override {}
    void dngExtractionAborted(MlvDumpTask &) override {}
    void processingDarkFinished(MlvDumpTask &) override { stepFinished(); }
    void processingFlatFinished(MlvDumpTask &) override { stepFinished(); }
    void processingFlatDarkFinished(MlvDumpTask &) override { stepFinished(); }
    void processingFlatDarkSubstractionFinished(MlvDumpTask &) override { stepFinished(); }
    void error(const QString &error, MlvDumpTask &forTask) override;

    const CalibrationChoice m_choice;
    std::deque<Step> m_steps; // the first one is running
    std::unique_ptr<MlvDumpTask> m_task;
    bool m_ended = false;
};

} // namespace filmwright
