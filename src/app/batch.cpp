// SPDX-License-Identifier: MIT
// The batch: every recording of the queue, one after the other, in the order of the list.
#include "app/appdelegate.h"
#include "app/plaintext.h"
#include "app/previewpane.h"
#include "app/progressindicator.h"
#include "app/queuetableview.h"
#include "app/statusline.h"
#include "desktop/desktopnotification.h"
#include "desktop/displaysleep.h"
#include "desktop/launcherprogress.h"
#include "runner/readabletext.h"
#include "runner/systemlog.h"
#include "sluice/slpipeline.h"
#include "ui_mainwindow.h"
#include "ui_preferences.h"

#include <QFileInfo>

#include <algorithm>
#include <utility>

namespace filmwright {

namespace {

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
        m_alerts.runAlert(QStringLiteral("Calibration integrity"),
                          QStringLiteral("PLease check your calibration files."),
                          QStringLiteral("Ok"));
        return;
    }
    const bool blends =
        std::any_of(m_projectList->cbegin(), m_projectList->cend(),
                    [](const auto &project) { return project->blendsAlternatingRows(); });
    if (!checkTools(MLVProjectController::toolNames(blends, chosenRecipe())) || !takeRecipe() ||
        !checkMovieFolder())
        return;

    enableButtons(false);
    m_working = true;
    m_stopped = false;
    ++m_batchNumber;
    m_batchMovies = {};
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
    m_stopped = true;
    m_waitsForCalibration = false;
    for (const auto &project : *m_projectList)
        m_runs.at(project.get())->stop();
    m_globalProgress = -1.0;
    m_ui->progressIndicator->setDoubleValue(m_ui->progressIndicator->maxValue());
    m_ui->progressIndicator->stopAnimation();
    m_statusTimer.stop();
    m_progress.setProject(nullptr);
    showPart(std::nullopt);
    updateRecordingMenu();
    tellStopped();
}

/// A calibration that is being averaged is the next recording's.
void AppDelegate::launchWorkForNextController()
{
    if (m_preprocessTask) {
        m_waitsForCalibration = true;
        return;
    }
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
ConversionSettings AppDelegate::settingsFor(const MLVProjectController &controller) const
{
    ConversionSettings settings;
    settings.format = selectedValue(*m_ui->movieFormatPopUpButton);
    settings.quality = selectedValue(*m_ui->movieQualityPopUpButton);
    settings.recipe = m_recipe;
    settings.destination.folder = m_movieFolder;
    settings.calibration = calibration();
    settings.corrections = controller.rawCorrections();
    settings.corrections.pixelRepair =
        m_ui->repairPixelsCheckBox->isChecked() ? QStringLiteral("auto") : QString();
    settings.corrections.repairsColumns = m_ui->repairColumnsCheckBox->isChecked();
    settings.frames = controller.frameSelection();
    settings.mergesNeighbours = controller.dualISO();
    settings.blendsAlternatingRows = controller.blendsAlternatingRows();
    settings.workers = m_prefUi->prefWorkersField->value();
    settings.keepsUnfinishedWork = true; // until the window is closed
    return settings;
}

void AppDelegate::launch(MLVProjectController &controller)
{
    RecordingRun &run = *m_runs.at(&controller);
    m_batch.push_back(&run);
    watchProgress(controller);
    run.start(settingsFor(controller), m_batchMovies);
    m_ui->queueTableView->scrollTo(
        m_ui->queueTableView->model()->index(rowOf(m_batch.size() - 1), 0));
    showStatus();
}

void AppDelegate::watchProgress(const MLVProjectController &controller)
{
    std::vector<RecordingWork> upcoming;
    for (auto place = m_projectList->size(); place > m_batch.size(); --place) {
        const MLVProjectController &project = *m_projectList->at(place - 1);
        // One that is broken takes no time, and nothing is known of it.
        const bool broken =
            !project.unusableError().isEmpty() || !runOf(project).outcome().failure.isEmpty();
        if (project.videoFrames() > 0 || !broken)
            upcoming.push_back(workOf(project));
    }
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
    showPart(std::nullopt);
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
    m_ui->movieRecipePopUpButton->setEnabled(enable);
    m_ui->movieFolderPopUpButton->setEnabled(enable);
    m_ui->repairPixelsCheckBox->setEnabled(enable);
    m_ui->repairColumnsCheckBox->setEnabled(enable);
    enableFormats();
}

bool AppDelegate::checkCalibrationIntegrity() const
{
    return calibration().isReady();
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

void AppDelegate::controllerUpdated(MLVProjectController &)
{
    endReadingWhenAllAreRead();
    m_ui->queueTableView->reloadData();
    updateDetails();
    updatePreview();
}

void AppDelegate::endReadingWhenAllAreRead()
{
    if (!m_readingData ||
        std::any_of(m_projectList->cbegin(), m_projectList->cend(), [](const auto &project) {
            return project->mlvProjectMode() == MLVProjectModeReadingData;
        }))
        return;
    m_readingData = false;
    m_ui->sourceItem->setEnabled(true);
    m_ui->startStopItem->setEnabled(!m_projectList->empty());
    queueChanged();
    tellMisfits();
}

void AppDelegate::imageRGBReceived(const QImage &image, MLVProjectController &)
{
    m_ui->previewPane->showConverted(image);
}

void AppDelegate::controllerWorkFinished(MLVProjectController &)
{
    launchWorkForNextController();
}

/// The toggle isn't guarded: an error while nothing runs, from a recording that is being read,
/// starts a batch. What it toggles is the batch in which the error came, or its absence; by the
/// time of the answer there may be another.
void AppDelegate::controllerWorkError(const QString &error)
{
    if (const QString name = recordingWithError(error); !name.isEmpty()) {
        const QString sentence = QStringLiteral("%1: %2").arg(name, errorOf(error));
        m_ui->statusTextField->tell(sentence);
        if (m_working && !m_window->isActiveWindow())
            showDesktopNotification(QStringLiteral("The batch stops"), sentence);
    }
    m_alerts.whenNoneIsOpen([this, error, batch = m_batchNumber, working = m_working] {
        m_alerts.runAlert(QStringLiteral("Process aborted"), withoutDirectives(error),
                          QStringLiteral("Ok"));
        if (batch == m_batchNumber && working == m_working)
            start();
    });
}

/// The alert doesn't name it: its text is the tool's, which prints no paths.
QString AppDelegate::recordingWithError(const QString &error) const
{
    const auto found =
        std::find_if(m_runs.cbegin(), m_runs.cend(), [sentence = errorOf(error)](const auto &run) {
            return run.second->isPending() && run.second->outcome().failure.error == sentence;
        });
    return found == m_runs.cend() ? QString()
                                  : QFileInfo(found->second->outcome().recording).fileName();
}

/// A recording that ended without its movie costs only itself. After an error line the batch waits
/// for the person's answer.
void AppDelegate::runEnded(const RecordingRun &run)
{
    m_ui->queueTableView->reloadData();
    updateRecordingMenu();
    if (m_stopped)
        tellStopped();
    else if (!m_working)
        tellResult();
    else if (!m_batch.empty() && &run == m_batch.back() && !run.outcome().failure.concernsBatch)
        launchWorkForNextController();
}

void AppDelegate::tellStopped()
{
    const auto written = std::count_if(m_batch.cbegin(), m_batch.cend(), [](const auto *run) {
        return run->outcome().result == RecordingOutcome::Finished;
    });
    m_ui->statusTextField->setStatus(
        QStringLiteral("Stopped: %1 of %2 movies written").arg(written).arg(m_projectList->size()));
}

void AppDelegate::showStatus()
{
    if (m_batch.empty())
        return;
    const Progress progress = m_progress.update();
    QString status =
        QStringLiteral("%1 of %2, %3: %4")
            .arg(QString::number(m_batch.size()), QString::number(m_projectList->size()),
                 percentText(progress.part, 1), stageName(progress.stage));
    if (progress.frames > 0)
        status += QStringLiteral(", ") + progressText(progress);
    m_ui->statusTextField->setStatus(status,
                                     QFileInfo(m_batch.back()->outcome().recording).fileName());
    showPart(progress.part);
}

/// Where a window that isn't looked at can be seen all the same; without a value no batch runs.
void AppDelegate::showPart(std::optional<double> part)
{
    const QString name = QStringLiteral("Filmwright");
    const QString title = part ? QStringLiteral("%1 – %2").arg(percentText(*part, 1), name) : name;
    if (title == m_window->windowTitle())
        return;
    m_window->setWindowTitle(title);
    showLauncherProgress(part);
}

/// At the end of a batch, once the last word on each of its recordings is spoken.
void AppDelegate::tellResult()
{
    if (m_working || m_stopped || m_batch.empty() ||
        std::any_of(m_batch.cbegin(), m_batch.cend(),
                    [](const auto *run) { return run->isPending(); }))
        return;
    QStringList errors;
    for (const RecordingRun *run : m_batch) {
        if (const QStringList told = run->outcome().errors(); !told.isEmpty())
            errors << QStringLiteral("%1: %2").arg(QFileInfo(run->outcome().recording).fileName(),
                                                   told.constFirst());
    }
    const std::size_t recordings = std::exchange(m_batch, {}).size();
    QString result = recordings == 1 ? QStringLiteral("1 movie written")
                                     : QStringLiteral("%1 movies written").arg(recordings);
    if (!errors.isEmpty()) {
        result = QStringLiteral("%1 of %2 recordings have no whole movie")
                     .arg(errors.size())
                     .arg(recordings);
    }
    m_ui->statusTextField->setStatus(result);
    if (!m_window->isActiveWindow())
        showDesktopNotification(QStringLiteral("Filmwright"), result);
    if (!errors.isEmpty()) {
        m_alerts.whenNoneIsOpen([this, result, errors] {
            m_alerts.runAlert(result, shortened(errors).join(QLatin1Char('\n')),
                              QStringLiteral("Ok"));
        });
    }
}

} // namespace filmwright
