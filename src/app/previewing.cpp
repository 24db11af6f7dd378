// SPDX-License-Identifier: MIT
// The preview: what of the queue it shows, and what is chosen there for the movie.
#include "app/appdelegate.h"
#include "app/developmentdialog.h"
#include "app/previewpane.h"
#include "app/queuetableview.h"
#include "ui_mainwindow.h"

namespace filmwright {

namespace {

/// Empty when frames can be seen.
QString noFramesError(const MLVProjectController &project)
{
    if (!project.unusableError().isEmpty() || project.metadata().movieFrames() > 0)
        return project.unusableError();
    return project.mlvProjectMode() == MLVProjectModeReadingData
               ? QStringLiteral("The recording is being read")
               : QStringLiteral("The recording has no frames");
}

} // namespace

void AppDelegate::connectPreview()
{
    PreviewPane &pane = *m_ui->previewPane;
    connect(m_ui->setInMenuItem, &QAction::triggered, &pane, &PreviewPane::setIn);
    connect(m_ui->setOutMenuItem, &QAction::triggered, &pane, &PreviewPane::setOut);
    connect(m_ui->clearMarksMenuItem, &QAction::triggered, &pane, &PreviewPane::clearMarks);
    connect(&pane, &PreviewPane::framesMarked, this, &AppDelegate::takeMarks);
    connect(m_ui->actualSizeMenuItem, &QAction::toggled, &pane, &PreviewPane::setActualSize);
    connect(&pane, &PreviewPane::actualSizeChanged, m_ui->actualSizeMenuItem, &QAction::setChecked);
    connect(m_ui->histogramMenuItem, &QAction::toggled, &pane, &PreviewPane::setHistogramShown);
    // Single letters belong to the table and the preview: elsewhere they are typed.
    for (QAction *action : {m_ui->setInMenuItem, m_ui->setOutMenuItem, m_ui->clearMarksMenuItem}) {
        action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
        m_ui->queueTableView->addAction(action);
        pane.addAction(action);
    }

    connect(m_developmentDialog.get(), &DevelopmentDialog::changed, this,
            &AppDelegate::updatePreview);
    connect(m_developmentDialog.get(), &QDialog::finished, this, &AppDelegate::updatePreview);
    connect(m_ui->movieRecipePopUpButton, &QComboBox::currentIndexChanged, this,
            &AppDelegate::updatePreview);
    for (const QCheckBox *box : {m_ui->repairPixelsCheckBox, m_ui->repairColumnsCheckBox})
        connect(box, &QCheckBox::toggled, this, &AppDelegate::updatePreview);
}

/// The first of those that are selected; null without one.
const MLVProjectController *AppDelegate::previewedProject() const
{
    const std::vector<MLVProjectController *> selected = selectedProjects();
    return selected.empty() ? nullptr : selected.front();
}

/// As its movie would be made now; while exposure and white balance are being chosen, with those.
ConversionSettings AppDelegate::previewSettings(const MLVProjectController &project) const
{
    ConversionSettings settings = settingsFor(project);
    if (!m_working)
        settings.recipe = chosenRecipe();
    if (!calibration().isReady())
        settings.calibration = {};
    if (m_developmentDialog->isVisible())
        settings.corrections = m_developmentDialog->appliedTo(settings.corrections);
    return settings;
}

/// Called after whatever may change what is seen.
void AppDelegate::updatePreview()
{
    PreviewPane &pane = *m_ui->previewPane;
    const MLVProjectController *project = previewedProject();
    const bool canBeMarked = project && !m_working && project->metadata().movieFrames() > 0;
    for (QAction *action : {m_ui->setInMenuItem, m_ui->setOutMenuItem, m_ui->clearMarksMenuItem})
        action->setEnabled(canBeMarked);
    if (!project) {
        pane.followWork(QStringLiteral("Select a recording to see its frames.\n"
                                       "During a batch, frames appear as they are converted."));
        return;
    }
    if (const QString error = noFramesError(*project); !error.isEmpty()) {
        pane.showError(error);
        return;
    }
    pane.showRecording({project->mlvPath(), project->metadata().movieFrames(),
                        static_cast<double>(project->fps()), project->frameSelection(),
                        previewSettings(*project)});
}

void AppDelegate::takeMarks(const FrameSelection &selection)
{
    const std::vector<MLVProjectController *> selected = selectedProjects();
    if (selected.empty() || m_working)
        return;
    selected.front()->setFrameSelection(selection);
    m_ui->queueTableView->reloadData();
    updatePreview();
}

} // namespace filmwright
