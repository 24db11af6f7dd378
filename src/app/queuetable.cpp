// SPDX-License-Identifier: MIT
// What the queue table shows, newest recording first, and what can be done with its rows.
#include "app/appdelegate.h"
#include "app/detailswindow.h"
#include "app/developmentdialog.h"
#include "app/progressindicator.h"
#include "app/progresstablecellview.h"
#include "app/queuetableview.h"
#include "app/showinfindertablecellview.h"
#include "app/statusline.h"
#include "desktop/filereveal.h"
#include "project/recordingfacts.h"
#include "runner/fixedtext.h"
#include "runner/resources.h"
#include "ui_mainwindow.h"

#include <QDesktopServices>
#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <cmath>
#include <limits>
#include <tuple>

namespace filmwright {

namespace {

/// No decimals: f/2.8 shows as f/3.
QString apertureText(float aperture)
{
    return fixedText(static_cast<double>(aperture), 0);
}

/// "+1", "-0.5".
QString signedExposureText(double exposure)
{
    return (exposure > 0 ? QStringLiteral("+") : QString()) + exposureValueText(exposure);
}

/// "5600 K", "WB auto", "WB 2.1,1,1.4".
QString whiteBalanceText(const QString &choice)
{
    bool isTemperature = false;
    std::ignore = choice.toDouble(&isTemperature);
    return isTemperature ? choice + QStringLiteral(" K") : QStringLiteral("WB ") + choice;
}

/// In seconds; a shutter of 0 shows a number without meaning.
QString shutterText(double seconds)
{
    if (seconds >= 1.0)
        return fixedText(seconds, 1) + QStringLiteral(" sec");
    const double parts =
        std::min<double>(std::round(1.0 / seconds), std::numeric_limits<int>::max());
    return QStringLiteral("1/%1 sec").arg(static_cast<int>(parts));
}

QString exposureText(const MLVProjectController &project)
{
    const RawCorrections &chosen = project.rawCorrections();
    const QString exposure =
        chosen.exposure == 0 ? QString()
                             : QStringLiteral(", %1 EV").arg(signedExposureText(chosen.exposure));
    const QString white = chosen.whiteBalance.isEmpty()
                              ? QString()
                              : QStringLiteral(", ") + whiteBalanceText(chosen.whiteBalance);
    const QString lens =
        QStringLiteral("%1 f/%2").arg(project.focal(), apertureText(project.aperture()));
    if (project.shutter() == 0 && project.iso() == 0) // the recording doesn't tell
        return QStringLiteral("Unknown exposure%1%2\n%3").arg(exposure, white, lens);
    return QStringLiteral("%1%2\nISO %3%4\n%5")
        .arg(shutterText(project.shutter()), exposure, QString::number(project.iso()), white, lens);
}

QString fileText(const MLVProjectController &project)
{
    QString name = QFileInfo(project.mlvPath()).fileName();
    if (project.mlvProjectMode() == MLVProjectModeReadingData)
        return name;
    return QStringLiteral("%1\n%2\n%3 frames")
        .arg(name, project.resolution(), QString::number(project.videoFrames()));
}

QString cameraText(const MLVProjectController &project)
{
    const QString lens = project.lens().isEmpty() ? QStringLiteral("Unknow lens") : project.lens();
    return QStringLiteral("%1\n%2").arg(project.camera(), lens);
}

/// What was chosen for this recording alone.
QStringList choicesFor(const MLVProjectController &project)
{
    QStringList choices;
    if (project.dualISO())
        choices << QStringLiteral("HDR");
    if (project.blendsAlternatingRows())
        choices << QStringLiteral("Dual ISO");
    if (!project.frameSelection().isWhole())
        choices << QStringLiteral("Frames %1").arg(project.frameSelection().text());
    return choices;
}

/// What the last run of a recording was calibrated with, which may not be what is chosen now.
QStringList calibrationTexts(const CalibrationChoice &calibration)
{
    QStringList texts;
    const auto add = [&texts](const QString &text, const QString &path) {
        if (!path.isEmpty())
            texts << text.arg(QFileInfo(path).fileName());
    };
    add(QStringLiteral("Dark: %1"), calibration.dark);
    add(QStringLiteral("Flat: %1"), calibration.flat);
    if (!calibration.flat.isEmpty())
        add(QStringLiteral("Flat dark: %1"), calibration.flatDark);
    return texts;
}

/// One step of the bar for each finished stage. The range is set when the metadata is read; the
/// later modes rely on it.
void showMode(ProgressIndicator &bar, MLVProjectMode mode)
{
    const auto show = [&bar](double value, bool works) {
        bar.setIndeterminate(false);
        bar.setDoubleValue(value);
        if (works)
            bar.startAnimation();
        else
            bar.stopAnimation();
    };
    switch (mode) {
    case MLVProjectModeReadingData:
        bar.setIndeterminate(true);
        bar.startAnimation();
        break;
    case MLVProjectModeReady:
        bar.setMinValue(0.0);
        bar.setMaxValue(3.0);
        show(0, false);
        break;
    case MLVProjectModeIdle:
    case MLVProjectModePending:
        show(0, false);
        break;
    case MLVProjectModeExtracting:
        show(0, true);
        break;
    case MLVProjectModeRGBConversion:
        show(1, true);
        break;
    case MLVProjectModeBuildingMovie:
        show(2, true);
        break;
    case MLVProjectModeFinished:
        show(3, false);
        break;
    }
}

} // namespace

int AppDelegate::numberOfRowsInTableView(QueueTableView &) const
{
    return m_projectList ? static_cast<int>(m_projectList->size()) : 0;
}

MLVProjectController &AppDelegate::projectAtRow(int row) const
{
    return *m_projectList->at(m_projectList->size() - 1 - static_cast<std::size_t>(row));
}

int AppDelegate::rowOf(std::size_t place) const
{
    return static_cast<int>(m_projectList->size() - 1 - place);
}

const RecordingRun &AppDelegate::runOf(const MLVProjectController &project) const
{
    return *m_runs.at(&project);
}

QString AppDelegate::objectValueForTableColumn(const QString &column, int row) const
{
    const MLVProjectController &project = projectAtRow(row);
    const bool read = project.mlvProjectMode() != MLVProjectModeReadingData;
    if (column == QLatin1String("File"))
        return fileText(project);
    if (column == QLatin1String("Camera"))
        return read ? cameraText(project) : QLatin1String("");
    if (column == QLatin1String("Exposure"))
        return read ? exposureText(project) : QLatin1String("");
    return {};
}

QString AppDelegate::stateText(const MLVProjectController &project) const
{
    const QString verification = m_verifications.stateText(project.mlvPath());
    if (m_working || verification.isEmpty())
        return project.state();
    return project.mlvProjectMode() == MLVProjectModeFinished
               ? QStringLiteral("%1. %2").arg(project.state(), verification)
               : verification;
}

QWidget *AppDelegate::viewForTableColumn(QueueTableView &tableView, const QString &column, int row)
{
    MLVProjectController &project = projectAtRow(row);
    if (column == QLatin1String("State")) {
        auto *view = tableView.makeView<ProgressTableCellView>(column, row);
        view->textField()->setText(stateText(project));
        view->setController(&project);
        view->setChoices(choicesFor(project));
        const RecordingOutcome &outcome = runOf(project).outcome();
        const CheckResult checked =
            m_verifications.result(project.mlvPath()).value_or(CheckResult());
        view->setOutcome(
            outcome.result == RecordingOutcome::Finished,
            (outcome.errors() + checked.errors()).join(QLatin1Char('\n')),
            (misfits(project) + outcome.notes + checked.remarks).join(QLatin1Char('\n')));
        showMode(*view->progressIndicator(), project.mlvProjectMode());
        return view;
    }
    if (column == QLatin1String("Show")) {
        auto *view = tableView.makeView<ShowInFinderTableCellView>(column, row);
        view->setController(&project);
        connect(view, &ShowInFinderTableCellView::notShown, m_ui->statusTextField,
                &StatusLine::tell, Qt::UniqueConnection);
        return view;
    }
    return nullptr;
}

void AppDelegate::willDisplayCell(QLabel &cell, const QString &forTableColumn, int row) const
{
    if (forTableColumn == QLatin1String("State"))
        cell.setText(m_projectList->at(static_cast<std::size_t>(row))->state());
}

QString AppDelegate::toolTipForTableColumn(const QString &column, int row) const
{
    const MLVProjectController &project = projectAtRow(row);
    if (column == QLatin1String("File"))
        return QDir::toNativeSeparators(project.mlvPath());
    if (column == QLatin1String("State")) {
        const RecordingRun &run = runOf(project);
        QStringList texts = QStringList{project.state()} + choicesFor(project);
        texts += run.outcome().errors() + misfits(project) + run.outcome().notes +
                 calibrationTexts(run.settings().calibration);
        if (const QString state = m_verifications.stateText(project.mlvPath()); !state.isEmpty())
            texts << state;
        if (const auto checked = m_verifications.result(project.mlvPath()))
            texts += checked->sentences();
        return texts.join(QLatin1Char('\n'));
    }
    return objectValueForTableColumn(column, row);
}

std::vector<MLVProjectController *> AppDelegate::selectedProjects() const
{
    std::vector<MLVProjectController *> projects;
    for (const int row : m_ui->queueTableView->selectedRows())
        projects.push_back(&projectAtRow(row));
    return projects;
}

void AppDelegate::updateRecordingMenu()
{
    const std::vector<MLVProjectController *> selected = selectedProjects();
    const bool any = !selected.empty();
    const bool one = selected.size() == 1;
    const auto all = [&](bool (MLVProjectController::*isSet)() const) {
        return any && std::all_of(selected.cbegin(), selected.cend(),
                                  [isSet](const auto *project) { return (project->*isSet)(); });
    };
    m_ui->playMovieMenuItem->setEnabled(one && !movieOf(*selected.front()).isEmpty());
    m_ui->showMenuItem->setEnabled(one);
    m_ui->detailsMenuItem->setEnabled(one);
    updateDetails();
    m_ui->verifyMenuItem->setEnabled(any && !m_working);
    m_ui->stopVerifyingMenuItem->setEnabled(m_verifications.isRunning());
    m_ui->removeMenuItem->setEnabled(any && !m_working);
    m_ui->removeFinishedMenuItem->setEnabled(!m_working && m_projectList &&
                                             !finishedProjects().empty());
    m_ui->undoRemovalMenuItem->setEnabled(!m_working && !m_removed.empty());
    m_ui->mergeNeighboursMenuItem->setEnabled(any && !m_working);
    m_ui->mergeNeighboursMenuItem->setChecked(all(&MLVProjectController::dualISO));
    m_ui->developmentMenuItem->setEnabled(any && !m_working);
    m_ui->blendRowsMenuItem->setEnabled(any && !m_working);
    m_ui->blendRowsMenuItem->setChecked(all(&MLVProjectController::blendsAlternatingRows));
    updatePreview();
}

/// Shows the choices of the first of the selected recordings.
void AppDelegate::chooseDevelopment()
{
    const std::vector<MLVProjectController *> selected = selectedProjects();
    if (selected.empty() || m_working)
        return;
    m_developmentDialog->setChoices(selected.front()->rawCorrections());
    m_developmentDialog->open();
}

/// The queue may have changed while the dialog was open.
void AppDelegate::takeDevelopment()
{
    if (m_working)
        return;
    for (MLVProjectController *project : selectedProjects())
        project->setRawCorrections(m_developmentDialog->appliedTo(project->rawCorrections()));
    m_ui->queueTableView->reloadData();
    updatePreview();
}

void AppDelegate::playMovie()
{
    const std::vector<MLVProjectController *> selected = selectedProjects();
    if (!selected.empty())
        play(movieOf(*selected.front()));
}

void AppDelegate::play(const QString &movie)
{
    if (!movie.isEmpty() && !QDesktopServices::openUrl(QUrl::fromLocalFile(movie))) {
        m_ui->statusTextField->tell(
            QStringLiteral("No program was found that plays %1").arg(QFileInfo(movie).fileName()));
    }
}

/// The movie of this queue's last run; empty when there is none.
QString AppDelegate::movieOf(const MLVProjectController &project) const
{
    const QString movie = project.mlvProjectMode() == MLVProjectModeFinished
                              ? project.moviePath()
                              : runOf(project).outcome().movie;
    return QFileInfo::exists(movie) ? movie : QString();
}

void AppDelegate::showDetails()
{
    m_details->show(); // before it is filled: what is hidden isn't kept up to date
    updateDetails();
    m_details->raise();
}

/// It follows the selection; without one it stays.
void AppDelegate::updateDetails()
{
    if (!m_details->isVisible())
        return;
    const std::vector<MLVProjectController *> selected = selectedProjects();
    if (selected.size() != 1)
        return;
    const MLVProjectController &project = *selected.front();
    QList<RecordingFact> facts = recordingFacts(project.metadata());
    const RecordingRun &run = runOf(project);
    const CheckResult checked = m_verifications.result(project.mlvPath()).value_or(CheckResult());
    QStringList warnings = run.outcome().errors() + misfits(project) + run.outcome().notes +
                           project.warnings() + project.notes() + checked.sentences();
    warnings.removeDuplicates();
    const auto add = [&facts](const QString &name, const QStringList &values) {
        if (!values.isEmpty())
            facts << RecordingFact{name, values.join(QLatin1Char('\n'))};
    };
    add(QStringLiteral("Chosen"), choicesFor(project));
    add(QStringLiteral("Calibration"), calibrationTexts(run.settings().calibration));
    add(QStringLiteral("Warnings"), warnings);
    add(QStringLiteral("File"), {QDir::toNativeSeparators(project.mlvPath())});
    m_details->showRecording(QFileInfo(project.mlvPath()).fileName(), facts, logOf(project));
}

/// The last lines of each tool, each behind the tool's name.
QStringList AppDelegate::logOf(const MLVProjectController &project) const
{
    QMap<QString, QStringList> printed = runOf(project).outcome().toolLines;
    if (printed.isEmpty())
        printed = project.lastToolLines();
    QStringList log;
    for (auto tool = printed.cbegin(); tool != printed.cend(); ++tool)
        for (const QString &line : tool.value())
            log << QStringLiteral("%1: %2").arg(tool.key(), line);
    return log;
}

/// The commands for rows alone: Start would begin the whole batch.
void AppDelegate::showRowMenu(const QPoint &place)
{
    m_rowMenu->clear();
    bool behindBatch = false; // the first separator is that of the batch's commands
    for (QAction *action : m_ui->recordingMenu->actions()) {
        if (behindBatch)
            m_rowMenu->addAction(action);
        behindBatch = behindBatch || action->isSeparator();
    }
    updateRecordingMenu();
    m_rowMenu->popup(m_ui->queueTableView->viewport()->mapToGlobal(place));
}

void AppDelegate::verifySelected()
{
    if (m_working || !checkTools({mlvDumpName}))
        return;
    QStringList recordings;
    for (const MLVProjectController *project : selectedProjects())
        recordings << project->mlvPath();
    m_verifications.add(recordings);
}

void AppDelegate::verificationChanged()
{
    m_ui->queueTableView->reloadData();
    m_ui->stopVerifyingMenuItem->setEnabled(m_verifications.isRunning());
    if (m_working)
        return;
    const QString status = m_verifications.statusText();
    m_ui->statusTextField->setStatus(status.isEmpty() ? QStringLiteral("Verification ended")
                                                      : status);
}

void AppDelegate::showSelected()
{
    const std::vector<MLVProjectController *> selected = selectedProjects();
    if (!selected.empty())
        revealFile(selected.front()->mlvPath(), this,
                   [this](const QString &error) { m_ui->statusTextField->tell(error); });
}

} // namespace filmwright
