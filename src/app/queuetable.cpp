// SPDX-License-Identifier: MIT
// What the queue table shows, newest recording first, and what can be done with its rows.
#include "app/appdelegate.h"
#include "app/progressindicator.h"
#include "app/progresstablecellview.h"
#include "app/queuetableview.h"
#include "app/showinfindertablecellview.h"
#include "desktop/filereveal.h"
#include "runner/fixedtext.h"
#include "ui_mainwindow.h"

#include <QDesktopServices>
#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <cmath>
#include <limits>

namespace filmwright {

namespace {

QString exposureText(const MLVProjectController &project)
{
    const double seconds = project.shutter();
    QString shutter = fixedText(seconds, 1) + QStringLiteral(" sec");
    if (seconds < 1.0) {
        // A shutter of 0 shows a number without meaning.
        const double parts =
            std::min<double>(std::round(1.0 / seconds), std::numeric_limits<int>::max());
        shutter = QStringLiteral("1/%1 sec").arg(static_cast<int>(parts));
    }
    // No decimals: f/2.8 shows as f/3.
    return QStringLiteral("%1\nISO %2\n%3 f/%4")
        .arg(shutter, QString::number(project.iso()), project.focal(),
             fixedText(static_cast<double>(project.aperture()), 0));
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
        const RecordingOutcome &outcome = runOf(project).outcome();
        const CheckResult checked =
            m_verifications.result(project.mlvPath()).value_or(CheckResult());
        view->setOutcome(outcome.result == RecordingOutcome::Finished,
                         (outcome.problems() + checked.problems()).join(QLatin1Char('\n')),
                         (outcome.notes + checked.remarks).join(QLatin1Char('\n')));
        showMode(*view->progressIndicator(), project.mlvProjectMode());
        return view;
    }
    if (column == QLatin1String("Show")) {
        auto *view = tableView.makeView<ShowInFinderTableCellView>(column, row);
        view->setController(&project);
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
        QStringList texts{project.state()};
        texts += run.outcome().problems() + run.outcome().notes +
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
    m_ui->playMovieMenuItem->setEnabled(
        one && selected.front()->mlvProjectMode() == MLVProjectModeFinished &&
        QFileInfo::exists(selected.front()->moviePath()));
    m_ui->showMenuItem->setEnabled(one);
    m_ui->verifyMenuItem->setEnabled(any && !m_working);
    m_ui->stopVerifyingMenuItem->setEnabled(m_verifications.isRunning());
    m_ui->removeMenuItem->setEnabled(any && !m_working);
    m_ui->mergeNeighboursMenuItem->setEnabled(any && !m_working);
    m_ui->mergeNeighboursMenuItem->setChecked(all(&MLVProjectController::dualISO));
    m_ui->blendRowsMenuItem->setEnabled(any && !m_working);
    m_ui->blendRowsMenuItem->setChecked(all(&MLVProjectController::blendsAlternatingRows));
}

void AppDelegate::playMovie()
{
    const std::vector<MLVProjectController *> selected = selectedProjects();
    if (!selected.empty())
        QDesktopServices::openUrl(QUrl::fromLocalFile(selected.front()->moviePath()));
}

void AppDelegate::verifySelected()
{
    if (m_working || !checkTools({QStringLiteral("mlv_dump")}))
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
    m_ui->statusTextField->setText(status.isEmpty() ? QStringLiteral("Verification ended")
                                                    : status);
}

void AppDelegate::showSelected()
{
    const std::vector<MLVProjectController *> selected = selectedProjects();
    if (!selected.empty())
        revealFile(selected.front()->mlvPath());
}

} // namespace filmwright
