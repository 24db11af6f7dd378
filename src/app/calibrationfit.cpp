// SPDX-License-Identifier: MIT
// What a calibration recording can't be used for, told when it is chosen: found out at the
// recordings' turns, it would cost them their movies.
#include "app/appdelegate.h"
#include "app/plaintext.h"
#include "app/queuetableview.h"
#include "app/statusline.h"
#include "ui_mainwindow.h"

#include <QFileInfo>

#include <algorithm>

namespace filmwright {

namespace {

/// What frames must have alike to be calibrated with each other; empty when it isn't known.
QString frameShape(const MlvMetadata &metadata)
{
    if (metadata.resolution.isEmpty())
        return {};
    return QStringLiteral("%1 at %2 bits").arg(metadata.resolution).arg(metadata.bitsPerSample);
}

bool differ(const QString &one, const QString &other)
{
    return !one.isEmpty() && !other.isEmpty() && one != other;
}

} // namespace

void AppDelegate::readCalibration(const QString &recording)
{
    const std::shared_ptr<MlvDumpTask> task = makeCalibrationTask();
    m_calibrationReports[recording] = task;
    task->setMlvPath(recording);
    task->extractMeta();
}

void AppDelegate::metaExtractionFinished(MlvDumpTask &task)
{
    m_ui->queueTableView->reloadData();
    tellUnfitFor(task.mlvPath());
}

/// Of a calibration recording.
QString AppDelegate::calibrationShape(const QString &recording) const
{
    const auto report = m_calibrationReports.find(recording);
    return report == m_calibrationReports.cend() ? QString()
                                                 : frameShape(report->second->metadata());
}

void AppDelegate::tellUnfitFor(const QString &calibrationRecording)
{
    const QString shape = calibrationShape(calibrationRecording);
    QStringList unfit;
    const auto compare = [&](const QString &recording, const QString &other) {
        if (differ(shape, other))
            unfit << QStringLiteral("%1, %2").arg(QFileInfo(recording).fileName(), other);
    };
    if (calibrationRecording == m_darkPath || calibrationRecording == m_flatPath)
        for (const auto &project : *m_projectList)
            compare(project->mlvPath(), frameShape(project->metadata()));
    if (calibrationRecording == m_flatPath)
        compare(m_flatDarkPath, calibrationShape(m_flatDarkPath));
    if (calibrationRecording == m_flatDarkPath)
        compare(m_flatPath, calibrationShape(m_flatPath));
    if (unfit.isEmpty())
        return;
    const QString message = QStringLiteral("%1 has frames of %2. It can't be used for:\n\n%3")
                                .arg(QFileInfo(calibrationRecording).fileName(), shape,
                                     shortened(unfit).join(QLatin1Char('\n')));
    m_alerts.whenNoneIsOpen([this, message] {
        m_alerts.runAlert(QStringLiteral("The calibration doesn't fit"), message,
                          QStringLiteral("Ok"));
    });
}

QStringList AppDelegate::misfits(const MLVProjectController &project) const
{
    QStringList sentences;
    const QString needed = frameShape(project.metadata());
    for (const QString &recording : {m_darkPath, m_flatPath}) {
        if (const QString shape = calibrationShape(recording); differ(shape, needed)) {
            sentences << QStringLiteral("%1 doesn't fit: it has frames of %2, the recording has "
                                        "frames of %3")
                             .arg(QFileInfo(recording).fileName(), shape, needed);
        }
    }
    return sentences;
}

/// Of recordings that came after the calibration.
void AppDelegate::tellMisfits()
{
    const auto unfit =
        std::count_if(m_projectList->cbegin(), m_projectList->cend(),
                      [this](const auto &project) { return !misfits(*project).isEmpty(); });
    if (unfit > 0) {
        m_ui->statusTextField->tell(
            unfit == 1 ? QStringLiteral("1 recording doesn't fit the calibration")
                       : QStringLiteral("%1 recordings don't fit the calibration").arg(unfit));
    }
}

} // namespace filmwright
