// SPDX-License-Identifier: MIT
// The three calibration recordings, their averages in the temporary directory, and the offer to
// put an average in the place of its recording.
#include "app/appdelegate.h"
#include "app/filedrop.h"
#include "app/progressindicator.h"
#include "app/queuetableview.h"
#include "app/statusline.h"
#include "mlvdump/mlvdumparguments.h"
#include "project/recordingfiles.h"
#include "runner/readabletext.h"
#include "runner/resources.h"
#include "runner/systemlog.h"
#include "runner/taskwrapper.h"
#include "runner/temporarydirectory.h"
#include "runner/wholefiles.h"
#include "ui_calibrationhelp.h"
#include "ui_mainwindow.h"
#include "ui_preprocessing.h"

#include <QFileInfo>
#include <QSaveFile>

#include <array>
#include <chrono>

using namespace std::chrono_literals;

namespace filmwright {

/// What tells the three apart.
struct AppDelegate::CalibrationKind
{
    QString AppDelegate::*path;
    CustomTextField *Ui::MainWindow::*field;
    void (MlvDumpTask::*setPath)(const QString &path);
    void (MlvDumpTask::*average)();
    QLatin1String averageName;
    QLatin1String panelTitle;
    QLatin1String questionTitle;
    QLatin1String question;
};

const AppDelegate::CalibrationKind AppDelegate::darkKind{
    &AppDelegate::m_darkPath,
    &Ui::MainWindow::darkTextField,
    &MlvDumpTask::setDarkPath,
    &MlvDumpTask::prepareDark,
    averagedDarkName,
    QLatin1String("Choose the dark recording"),
    QLatin1String("Dark ready"),
    QLatin1String("Overwrite original MLV file with averaged dark in order to save disk space "
                  "(%@->%@)?")};

const AppDelegate::CalibrationKind AppDelegate::flatKind{
    &AppDelegate::m_flatPath,
    &Ui::MainWindow::flatTextField,
    &MlvDumpTask::setFlatPath,
    &MlvDumpTask::prepareFlat,
    averagedFlatName,
    QLatin1String("Choose the flat recording"),
    QLatin1String("Flat ready"),
    QLatin1String("Overwrite original MLV file with averaged flat in order to save disk space "
                  "(%@->%@)?")};

const AppDelegate::CalibrationKind AppDelegate::flatDarkKind{
    &AppDelegate::m_flatDarkPath, &Ui::MainWindow::flatDarkTextField, &MlvDumpTask::setFlatDarkPath,
    &MlvDumpTask::prepareFlatDark, averagedFlatDarkName,
    QLatin1String("Choose the dark recording of the flat"), QLatin1String("Flat Dark ready"),
    // It speaks of a dark, as the question about the dark does.
    QLatin1String("Overwrite original MLV file with averaged dark in order to save disk space "
                  "(%@->%@)?")};

namespace {

/// Lets the sheet's animation stop before the question comes.
constexpr auto pauseBeforeQuestion = 100ms;

/// Puts a copy of `source` in the place of `target` in one step: whatever fails, `target` is the
/// one or the other.
bool replaceFile(const QString &target, const QString &source)
{
    QFile average(source);
    QSaveFile replacement(target);
    if (!average.open(QIODevice::ReadOnly) || !replacement.open(QIODevice::WriteOnly))
        return false;
    std::array<char, 1 << 16> buffer;
    qint64 length = 0;
    while ((length = average.read(buffer.data(), buffer.size())) > 0)
        replacement.write(buffer.data(), length);
    if (length < 0)
        replacement.cancelWriting();
    return commitFile(replacement);
}

} // namespace

/// The task may be in the middle of a call when its last owner lets go.
std::shared_ptr<MlvDumpTask> AppDelegate::makeCalibrationTask()
{
    std::shared_ptr<MlvDumpTask> made(MlvDumpTask::mlvDumpTask().release(), [](MlvDumpTask *task) {
        task->setDelegate(nullptr);
        task->deleteLater();
    });
    made->setDelegate(this);
    return made;
}

void AppDelegate::openDark()
{
    openCalibration(darkKind);
}

void AppDelegate::openFlatField()
{
    openCalibration(flatKind);
}

void AppDelegate::openFlatDarkField()
{
    openCalibration(flatDarkKind);
}

void AppDelegate::openCalibration(const CalibrationKind &kind)
{
    const QString path = m_panel.recording(kind.panelTitle);
    if (!path.isEmpty())
        takeCalibration(kind, path);
}

void AppDelegate::takeCalibration(const CalibrationKind &kind, const QString &path)
{
    if (!checkTools({mlvDumpName}))
        return;
    this->*kind.path = path;
    (m_ui.get()->*kind.field)->setStringValue(QFileInfo(path).fileName());
    m_lastCalibration = &kind;
    showPreprocessingPanel(QStringLiteral("Averaging frames"));
    readCalibration(path);
    const std::shared_ptr<MlvDumpTask> task = makeCalibrationTask();
    m_preprocessTask = task;
    (task.get()->*kind.setPath)(path);
    (task.get()->*kind.average)();
}

/// One recording, dropped on the field that is to have it.
void AppDelegate::takeCalibrationDrops()
{
    for (const CalibrationKind *kind : {&darkKind, &flatKind, &flatDarkKind}) {
        const auto isRecording = [](const QList<QUrl> &urls) {
            return urls.size() == 1 && isRecordingName(urls.constFirst().toLocalFile()) &&
                   !QFileInfo(urls.constFirst().toLocalFile()).isDir();
        };
        new FileDrop(*(m_ui.get()->*kind->field), isRecording,
                     [this, kind](const QList<QUrl> &urls) {
                         takeCalibration(*kind, urls.constFirst().toLocalFile());
                         return true;
                     });
    }
}

void AppDelegate::showPreprocessingPanel(const QString &text)
{
    m_preprocessUi->preprocessProgress->setIndeterminate(true);
    m_preprocessUi->preprocessProgress->startAnimation();
    m_preprocessUi->preprocessTextField->setText(text);
    m_preprocessUi->preprocessButtons->show();
    m_preprocessPanel->open();
}

void AppDelegate::hidePreprocessingPanel()
{
    m_preprocessUi->preprocessProgress->stopAnimation();
    m_preprocessPanel->setResult(0);
    m_preprocessPanel->hide();
    updatePreview();
}

void AppDelegate::processingDarkFinished(MlvDumpTask &task)
{
    averagingFinished(task, darkKind);
    launchAfterCalibration();
}

void AppDelegate::processingFlatFinished(MlvDumpTask &task)
{
    averagingFinished(task, flatKind);
    substractWhenComplete();
    launchAfterCalibration();
}

void AppDelegate::processingFlatDarkFinished(MlvDumpTask &task)
{
    averagingFinished(task, flatDarkKind);
    substractWhenComplete();
    launchAfterCalibration();
}

/// The recording whose turn came while its calibration was being averaged.
void AppDelegate::launchAfterCalibration()
{
    if (m_preprocessTask || !std::exchange(m_waitsForCalibration, false))
        return;
    QMetaObject::invokeMethod(
        this,
        [this, batch = m_batchNumber] {
            if (m_working && batch == m_batchNumber)
                launchWorkForNextController();
        },
        Qt::QueuedConnection);
}

void AppDelegate::averagingFinished(MlvDumpTask &task, const CalibrationKind &kind)
{
    const std::shared_ptr<MlvDumpTask> finished = std::exchange(m_preprocessTask, nullptr);
    if (!task.error().isEmpty()) {
        (this->*kind.path).clear();
        (m_ui.get()->*kind.field)->setStringValue(QString());
        m_ui->queueTableView->reloadData();
        hidePreprocessingPanel();
    } else if (task.videoFrames() >= 2) {
        m_preprocessUi->preprocessProgress->stopAnimation();
        m_preprocessUi->preprocessButtons->hide(); // too late: a question lies on the sheet
        QTimer::singleShot(pauseBeforeQuestion, this, [this, finished, &kind] {
            m_alerts.whenNoneIsOpen(
                [this, finished, &kind] { askUserForOverwrite(*finished, kind); });
        });
    } else if (task.videoFrames() == 1) {
        hidePreprocessingPanel();
    } else {
        // The sheet stays: only the person can tell what to do without a frame.
        QFile::remove(task.extractionDirectory() + kind.averageName);
    }
}

void AppDelegate::substractWhenComplete()
{
    if (m_flatPath.isEmpty() || m_flatDarkPath.isEmpty())
        return;
    showPreprocessingPanel(QStringLiteral("Substracting flat dark from flat."));
    const std::shared_ptr<MlvDumpTask> task = makeCalibrationTask();
    m_preprocessTask = task;
    task->setFlatDarkPath(m_flatDarkPath);
    task->setFlatPath(m_flatPath);
    task->substractFlatDark();
}

void AppDelegate::processingFlatDarkSubstractionFinished(MlvDumpTask &task)
{
    if (task.videoFrames() == 0)
        QFile::remove(task.extractionDirectory() + substractedFlatName);
    m_preprocessTask.reset();
    hidePreprocessingPanel();
    launchAfterCalibration();
}

void AppDelegate::askUserForDarkVOverwrite(const MlvDumpTask &task)
{
    askUserForOverwrite(task, darkKind);
}

void AppDelegate::askUserForFlatOverwrite(const MlvDumpTask &task)
{
    askUserForOverwrite(task, flatKind);
}

void AppDelegate::askUserForFlatDarkVOverwrite(const MlvDumpTask &task)
{
    askUserForOverwrite(task, flatDarkKind);
}

void AppDelegate::askUserForOverwrite(const MlvDumpTask &task, const CalibrationKind &kind)
{
    const QString average = task.extractionDirectory() + kind.averageName;
    const QString recording = task.mlvPath();
    if (!QFileInfo::exists(average)) { // cancelled in the meantime
        hidePreprocessingPanel();
        return;
    }
    QString message = kind.question;
    for (const QString &path : {recording, average}) {
        message.replace(message.indexOf(QLatin1String("%@")), 2,
                        readableFileSize(static_cast<double>(QFileInfo(path).size())));
    }
    if (m_alerts.runAlert(kind.questionTitle, message, QStringLiteral("No"),
                          QStringLiteral("Yes")) == 0) {
        m_preprocessUi->preprocessProgress->startAnimation();
        m_preprocessUi->preprocessTextField->setText(QStringLiteral("Replacing original file."));
        m_preprocessUi->preprocessTextField->repaint();
        if (!replaceFile(recording, average))
            m_ui->statusTextField->tell(QStringLiteral("%1 could not be replaced; it is as it was")
                                            .arg(QFileInfo(recording).fileName()));
    }
    hidePreprocessingPanel();
}

void AppDelegate::fieldDeleted(CustomTextField &field)
{
    if (&field == m_ui->darkTextField) {
        m_darkPath.clear();
        QFile::remove(inTemporaryDirectory(averagedDarkName));
    } else if (&field == m_ui->flatTextField) {
        m_flatPath.clear();
        QFile::remove(inTemporaryDirectory(averagedFlatName));
        QFile::remove(inTemporaryDirectory(substractedFlatName));
    } else if (&field == m_ui->flatDarkTextField) {
        m_flatDarkPath.clear();
        QFile::remove(inTemporaryDirectory(averagedFlatDarkName));
        QFile::remove(inTemporaryDirectory(substractedFlatName));
    }
    m_ui->queueTableView->reloadData();
    updatePreview();
}

void AppDelegate::error(const QString &error, MlvDumpTask &forTask)
{
    if (forTask.processMode() == MlvDumpModeMeta) // the averaging meets the same
        return;
    m_alerts.whenNoneIsOpen([this, error] {
        m_alerts.runAlert(QStringLiteral("Process aborted"), withoutDirectives(error),
                          QStringLiteral("Ok"));
    });
}

/// A tool that dies without a word would leave the sheet up for ever.
void AppDelegate::checkPreprocessTask()
{
    if (!m_preprocessTask || m_preprocessTask->isRunning())
        return;
    const bool told = !m_preprocessTask->error().isEmpty();
    cancelPreprocessing();
    if (told)
        return;
    m_alerts.whenNoneIsOpen([this] {
        m_alerts.runAlert(QStringLiteral("Process aborted"),
                          QStringLiteral("mlv_dump ended before the calibration was ready."),
                          QStringLiteral("Ok"));
    });
}

/// Takes back the choice that led to what is being worked on.
void AppDelegate::cancelPreprocessing()
{
    if (const std::shared_ptr<MlvDumpTask> task = std::exchange(m_preprocessTask, nullptr)) {
        task->setDelegate(nullptr);
        task->stop(false);
    }
    if (m_lastCalibration)
        (m_ui.get()->*m_lastCalibration->field)->deleteClicked();
    hidePreprocessingPanel();
    launchAfterCalibration();
}

void AppDelegate::showCalibrationHelp()
{
    m_calibrationHelpPanel->open();
}

void AppDelegate::hideCalibrationHelp()
{
    m_calibrationHelpPanel->hide();
    m_calibrationHelpPanel->setResult(0);
}

} // namespace filmwright
