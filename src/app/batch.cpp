// SPDX-License-Identifier: MIT
// The batch: every recording of the queue, one after the other, in the order of the list.
#include "app/appdelegate.h"
#include "app/imageview.h"
#include "app/progressindicator.h"
#include "app/queuetableview.h"
#include "desktop/desktopnotification.h"
#include "desktop/displaysleep.h"
#include "mlvdump/mlvdumparguments.h"
#include "project/projectmonitor.h"
#include "project/spacecheck.h"
#include "project/worknote.h"
#include "runner/temporarydirectory.h"
#include "sluice/slpipeline.h"
#include "ui_mainwindow.h"
#include "ui_preferences.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <utility>

namespace filmwright {

namespace {

QString inTemporaryDirectory(const QString &name)
{
    return QDir(temporaryDirectory()).filePath(name);
}

/// As many lines as an alert has room for on any screen; the rows of the queue have them all.
QStringList shortened(QStringList lines)
{
    constexpr qsizetype longest = 15;
    if (lines.size() <= longest)
        return lines;
    const auto left = lines.size() - longest;
    return lines.mid(0, longest) << AppDelegate::tr("… and %1 more").arg(left);
}

/// A movie format or quality of a pop-up: the first item stands for 0, any other for 1.
qint32 selectedValue(const QComboBox &popUp)
{
    return popUp.currentIndex() == 0 ? 0 : 1;
}

} // namespace

void AppDelegate::start()
{
    if (m_ui->startStopItem->text() == QLatin1String("Start"))
        startBatch();
    else
        stopBatch();
}

void AppDelegate::startBatch()
{
    if (!checkCalibrationIntegrity()) {
        runAlert(QStringLiteral("Calibration integrity"),
                 QStringLiteral("PLease check your calibration files."), QStringLiteral("Ok"));
        return;
    }
    const bool blends =
        std::any_of(m_projectList->cbegin(), m_projectList->cend(),
                    [](const auto &project) { return project->blendsAlternatingRows(); });
    if (!checkTools(MLVProjectController::toolNames(blends)))
        return;

    enableButtons(false);
    m_working = true;
    updateRecordingMenu();
    avoidSleep();
    m_projectControllerPipeline = std::make_unique<SLPipeline>();
    m_projectControllerPipeline->setDataType(QMetaType::fromType<MLVProjectController *>());
    m_projectControllerPipeline->setMode(SLOutletModeInput);
    m_batch.clear();
    for (const auto &project : *m_projectList) {
        project->readyToGo();
        m_projectControllerPipeline->setValue(QVariant::fromValue(project.get()));
    }
    m_globalProgress = -1.0;
    ProgressIndicator &bar = *m_ui->progressIndicator;
    bar.setMinValue(0.0);
    bar.setMaxValue(static_cast<double>(m_projectList->size()));
    bar.setDoubleValue(0.0);
    bar.startAnimation();
    m_statusTimer.start();
    launchWorkForNextController();
}

void AppDelegate::stopBatch()
{
    enableButtons(true);
    m_working = false;
    allowSleep();
    for (const auto &project : *m_projectList)
        project->stop();
    m_batch.clear();
    m_globalProgress = -1.0;
    m_ui->progressIndicator->setDoubleValue(m_ui->progressIndicator->maxValue());
    m_ui->progressIndicator->stopAnimation();
    m_statusTimer.stop();
    m_progress.setProject(nullptr);
    updateRecordingMenu();
    m_ui->statusTextField->setText(tr("Stopped"));
}

void AppDelegate::launchWorkForNextController()
{
    const QVariant next = m_projectControllerPipeline->value();
    if (!next.isValid()) {
        endBatch();
        return;
    }
    auto &controller = *next.value<MLVProjectController *>();
    launch(controller);
    m_globalProgress += 1.0;
    m_ui->progressIndicator->setDoubleValue(m_globalProgress);
    m_ui->queueTableView->reloadData();
}

/// The pop-ups and the calibration are read anew for every project: both may have changed.
void AppDelegate::launch(MLVProjectController &controller)
{
    controller.setMovieFormat(selectedValue(*m_ui->movieFormatPopUpButton));
    controller.setMovieQuality(selectedValue(*m_ui->movieQualityPopUpButton));
    controller.setConversionWorkers(m_prefUi->prefWorkersField->value());
    const QString none = QLatin1String("");
    controller.setDarkPath(m_darkPath.isEmpty() ? none : inTemporaryDirectory(averagedDarkName));
    if (m_flatPath.isEmpty())
        controller.setFlatPath(none);
    else if (m_flatDarkPath.isEmpty())
        controller.setFlatPath(inTemporaryDirectory(averagedFlatName));
    else
        controller.setFlatPath(inTemporaryDirectory(substractedFlatName));

    m_batch.push_back(&controller);
    m_failures.watch(controller);
    watchProgress(controller);
    const QString problem = spaceProblem(controller);
    if (!problem.isEmpty()) {
        skip(controller, problem);
        return;
    }
    claimUnfinishedWork({controller.mlvPath(),
                         {m_darkPath, m_flatPath, m_flatDarkPath},
                         controller.blendsAlternatingRows()},
                        controller.extractionDirectory());
    controller.launchDNGExtraction();
    showStatus();
}

/// Goes on with the next recording, after the current event.
void AppDelegate::skip(MLVProjectController &controller, const QString &reason)
{
    m_failures.forget(controller);
    m_failures.note(controller, reason);
    controller.stop();
    QMetaObject::invokeMethod(
        this,
        [this, skipped = &controller] {
            if (m_working && m_batch.back() == skipped)
                launchWorkForNextController();
        },
        Qt::QueuedConnection);
}

void AppDelegate::watchProgress(const MLVProjectController &controller)
{
    std::vector<RecordingWork> upcoming;
    for (auto project = m_projectList->size(); project > m_batch.size(); --project)
        upcoming.push_back(workOf(*m_projectList->at(project - 1)));
    m_progress.setProject(&controller);
    m_progress.setUpcoming(std::move(upcoming));
}

void AppDelegate::endBatch()
{
    enableButtons(true);
    m_working = false;
    m_ui->progressIndicator->setDoubleValue(m_ui->progressIndicator->maxValue());
    m_ui->progressIndicator->stopAnimation();
    allowSleep();
    m_statusTimer.stop();
    m_progress.setProject(nullptr);
    updateRecordingMenu();
    m_ui->queueTableView->reloadData();
    tellResult();
}

void AppDelegate::enableButtons(bool enable)
{
    m_ui->sourceItem->setEnabled(enable);
    m_ui->startStopItem->setIcon(
        QIcon(enable ? QStringLiteral(":/images/Encode") : QStringLiteral(":/images/stopencode")));
    m_ui->startStopItem->setText(enable ? QStringLiteral("Start") : QStringLiteral("Stop"));
    m_ui->movieFormatPopUpButton->setEnabled(enable);
    m_ui->movieQualityPopUpButton->setEnabled(enable);
}

bool AppDelegate::checkCalibrationIntegrity() const
{
    if (!m_darkPath.isEmpty() && !QFileInfo::exists(inTemporaryDirectory(averagedDarkName)))
        return false;
    if (!m_flatPath.isEmpty() && m_flatDarkPath.isEmpty() &&
        !QFileInfo::exists(inTemporaryDirectory(averagedFlatName)))
        return false;
    if (m_flatPath.isEmpty() || m_flatDarkPath.isEmpty())
        return true;
    return QFileInfo::exists(inTemporaryDirectory(substractedFlatName));
}

void AppDelegate::avoidSleep()
{
    if (m_assertionID == 0) {
        m_assertionID = inhibitDisplaySleep(QStringLiteral("Working on MLV extraction."));
        m_suspendInhibitor.inhibit(QStringLiteral("Working on MLV extraction."));
    }
}

void AppDelegate::allowSleep()
{
    if (m_assertionID != 0) {
        uninhibitDisplaySleep(m_assertionID);
        m_assertionID = 0;
    }
    m_suspendInhibitor.release();
}

void AppDelegate::controllerUpdated(MLVProjectController &controller)
{
    m_failures.controllerUpdated(controller);
    endReadingWhenAllAreRead();
    m_ui->queueTableView->reloadData();
}

void AppDelegate::endReadingWhenAllAreRead()
{
    if (!m_readingData ||
        std::any_of(m_projectList->cbegin(), m_projectList->cend(), [](const auto &project) {
            return project->mlvProjectMode() == MLVProjectModeReadingData;
        }))
        return;
    m_ui->sourceItem->setEnabled(true);
    m_ui->startStopItem->setEnabled(!m_projectList->empty());
    m_readingData = false;
    m_ui->statusTextField->setText(
        m_projectList->size() == 1 ? tr("1 recording in the queue")
                                   : tr("%1 recordings in the queue").arg(m_projectList->size()));
}

void AppDelegate::imageRGBReceived(const QImage &image, MLVProjectController &forController)
{
    m_failures.imageRGBReceived(image, forController);
    m_ui->imageView->setImage(image);
}

void AppDelegate::controllerWorkFinished(MLVProjectController &controller)
{
    m_failures.controllerWorkFinished(controller);
    launchWorkForNextController();
}

/// The toggle isn't guarded: an error while nothing runs, from a recording that is being read,
/// starts a batch. What it toggles is the state in which the error came.
void AppDelegate::controllerWorkError(const QString &error)
{
    if (m_working)
        m_failures.note(*m_batch.back(), reasonOf(error));
    const QString label = m_ui->startStopItem->text();
    whenNoAlertIsOpen([this, error, label] {
        runAlert(QStringLiteral("Process aborted"), error, QStringLiteral("Ok"));
        if (m_ui->startStopItem->text() == label)
            start();
    });
}

/// A recording that ended without its movie costs only itself.
void AppDelegate::projectJudged(MLVProjectController &project, bool stuck)
{
    m_ui->queueTableView->reloadData();
    if (stuck)
        project.stop();
    if (!m_working)
        tellResult();
    else if (stuck && &project == m_batch.back())
        launchWorkForNextController();
}

void AppDelegate::showStatus()
{
    if (m_batch.empty())
        return;
    const Progress progress = m_progress.update();
    QString status = QStringLiteral("%1: %2").arg(QFileInfo(m_batch.back()->mlvPath()).fileName(),
                                                  stageName(progress.stage));
    if (progress.frames > 0)
        status += QStringLiteral(", ") + progressText(progress);
    m_ui->statusTextField->setText(status);
}

/// At the end of a batch, once the last word on each of its recordings is spoken.
void AppDelegate::tellResult()
{
    if (m_batch.empty() || m_ui->progressIndicator->isAnimating())
        return;
    QStringList failures;
    for (const MLVProjectController *project : m_batch) {
        if (m_failures.isPending(*project))
            return;
        const QString failure = m_failures.failure(*project);
        if (!failure.isEmpty()) {
            failures << QStringLiteral("%1: %2").arg(QFileInfo(project->mlvPath()).fileName(),
                                                     failure.section(QLatin1Char('\n'), 0, 0));
        }
    }
    const std::size_t recordings = std::exchange(m_batch, {}).size();
    QString result =
        recordings == 1 ? tr("1 movie written") : tr("%1 movies written").arg(recordings);
    if (!failures.isEmpty()) {
        result = tr("%1 of %2 recordings have no whole movie").arg(failures.size()).arg(recordings);
    }
    m_ui->statusTextField->setText(result);
    if (!m_window->isActiveWindow())
        showDesktopNotification(QStringLiteral("Filmwright"), result);
    if (!failures.isEmpty()) {
        whenNoAlertIsOpen([this, result, failures] {
            runAlert(result, shortened(failures).join(QLatin1Char('\n')), QStringLiteral("Ok"));
        });
    }
}

} // namespace filmwright
