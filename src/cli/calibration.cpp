// SPDX-License-Identifier: MIT
#include "cli/calibration.h"

#include "mlvdump/mlvdumparguments.h"
#include "project/projectmonitor.h"
#include "runner/notificationcenter.h"
#include "runner/temporarydirectory.h"

#include <QFile>
#include <QFileInfo>

namespace filmwright {

Calibration::Calibration(const CalibrationChoice &choice)
    : m_choice(choice)
{
    if (!m_choice.dark.isEmpty()) {
        addStep(m_choice.dark, averagedDarkName, [this](MlvDumpTask &task) {
            task.setDarkPath(m_choice.dark);
            task.prepareDark();
        });
    }
    if (!m_choice.flat.isEmpty()) {
        addStep(m_choice.flat, averagedFlatName, [this](MlvDumpTask &task) {
            task.setFlatPath(m_choice.flat);
            task.prepareFlat();
        });
    }
    if (!m_choice.flat.isEmpty() && !m_choice.flatDark.isEmpty()) {
        addStep(m_choice.flatDark, averagedFlatDarkName, [this](MlvDumpTask &task) {
            task.setFlatDarkPath(m_choice.flatDark);
            task.prepareFlatDark();
        });
        addStep(m_choice.flat, substractedFlatName, [this](MlvDumpTask &task) {
            task.setFlatPath(m_choice.flat);
            task.setFlatDarkPath(m_choice.flatDark);
            task.substractFlatDark();
        });
    }
    // A tool that ended without having said so would be waited for for ever.
    connect(&NotificationCenter::defaultCenter(), &NotificationCenter::posted, this, [this] {
        QMetaObject::invokeMethod(this, &Calibration::checkTool, Qt::QueuedConnection);
    });
}

Calibration::~Calibration() = default;

void Calibration::addStep(const QString &recording, QLatin1String output,
                          std::function<void(MlvDumpTask &)> run)
{
    m_steps.push_back({recording, inTemporaryDirectory(output), std::move(run)});
}

void Calibration::start()
{
    next();
}

void Calibration::stop()
{
    m_ended = true;
    if (m_task)
        m_task->stop(false);
}

void Calibration::next()
{
    if (m_ended)
        return;
    if (m_steps.empty()) {
        end(QString());
        return;
    }
    Q_EMIT averaging(m_steps.front().recording);
    m_task = MlvDumpTask::mlvDumpTask();
    m_task->setDelegate(this);
    m_steps.front().run(*m_task);
    QMetaObject::invokeMethod(this, &Calibration::checkTool, Qt::QueuedConnection);
}

void Calibration::stepFinished()
{
    const Step step = m_steps.front();
    if (!QFile::exists(step.output)) {
        end(QStringLiteral("%1 could not be averaged").arg(QFileInfo(step.recording).fileName()));
        return;
    }
    m_steps.pop_front();
    // It is in the middle of a call to this object, and its tool may not have exited yet.
    const std::shared_ptr<MlvDumpTask> done = std::move(m_task);
    QMetaObject::invokeMethod(
        this,
        [this, done] {
            done->stop(false);
            next();
        },
        Qt::QueuedConnection);
}

void Calibration::checkTool()
{
    if (m_task && !m_task->isRunning() && !m_steps.empty()) {
        end(QStringLiteral("mlv_dump ended before it had averaged %1")
                .arg(QFileInfo(m_steps.front().recording).fileName()));
    }
}

void Calibration::error(const QString &error, MlvDumpTask &)
{
    end(QStringLiteral("%1: %2").arg(QFileInfo(m_steps.front().recording).fileName(),
                                     errorOf(error)));
}

/// The tool that reports is in the middle of a call to this object; it is stopped afterwards.
void Calibration::end(const QString &error)
{
    if (m_ended)
        return;
    m_ended = true;
    QMetaObject::invokeMethod(
        this,
        [this, error] {
            stop();
            Q_EMIT ended(error);
        },
        Qt::QueuedConnection);
}

} // namespace filmwright

#include "moc_calibration.cpp"
