// SPDX-License-Identifier: MIT
// What the movies of the next batch are to be, and where they go.
#include "app/appdelegate.h"
#include "encoding/recipes.h"
#include "ui_mainwindow.h"

#include <QFileInfo>

namespace filmwright {

/// The second item always asks; a cancelled choice leaves what was chosen.
void AppDelegate::chooseMovieFolder(int index)
{
    if (index == 0) {
        m_movieFolder.clear();
    } else {
        const QString folder = m_panel.folder(QStringLiteral("Choose the folder of the movies"));
        if (!folder.isEmpty())
            m_movieFolder = folder;
    }
    WindowMemory::setMovieFolder(m_movieFolder);
    showMovieFolder();
}

void AppDelegate::showMovieFolder()
{
    QComboBox &popUp = *m_ui->movieFolderPopUpButton;
    const bool inFolder = !m_movieFolder.isEmpty();
    popUp.setItemText(1, inFolder
                             ? QStringLiteral("in %1…").arg(QFileInfo(m_movieFolder).fileName())
                             : QStringLiteral("in folder…"));
    popUp.setToolTip(m_movieFolder);
    popUp.setCurrentIndex(inFolder ? 1 : 0);
}

/// A disk that isn't there is told before the batch.
bool AppDelegate::checkMovieFolder()
{
    const QFileInfo folder(m_movieFolder);
    if (m_movieFolder.isEmpty() || (folder.isDir() && folder.isWritable()))
        return true;
    m_alerts.runAlert(QStringLiteral("The folder of the movies can't be written"), m_movieFolder,
                      QStringLiteral("Ok"));
    return false;
}

/// Format and quality have no say where there is a recipe.
void AppDelegate::enableFormats()
{
    const QComboBox &recipes = *m_ui->movieRecipePopUpButton;
    const bool enable = recipes.isEnabled() && recipes.currentIndex() == 0;
    m_ui->movieFormatPopUpButton->setEnabled(enable);
    m_ui->movieQualityPopUpButton->setEnabled(enable);
}

void AppDelegate::fillRecipes()
{
    QComboBox &popUp = *m_ui->movieRecipePopUpButton;
    const QList<RecipeFile> recipes = foundRecipes();
    for (const RecipeFile &file : recipes) {
        popUp.addItem(file.recipe.name, file.recipe.id);
        popUp.setItemData(popUp.count() - 1,
                          file.problem.isEmpty() ? file.recipe.description : file.problem,
                          Qt::ToolTipRole);
    }
}

/// The chosen recipe is the batch's. Its file is read anew: it may have been mended since.
bool AppDelegate::takeRecipe()
{
    m_recipe.reset();
    const QString chosen = m_ui->movieRecipePopUpButton->currentData().toString();
    if (chosen.isEmpty())
        return true;
    const RecipeFile file = findRecipe(chosen);
    const QString problem = file.problem.isEmpty()
                                ? lackOf(FFmpegTask::ffmpegTask()->readEncoders(), file.recipe)
                                : file.problem;
    if (problem.isEmpty())
        m_recipe = file.recipe;
    else
        m_alerts.runAlert(QStringLiteral("The recipe %1 can't be used").arg(file.recipe.name),
                          problem, QStringLiteral("Ok"));
    return problem.isEmpty();
}

} // namespace filmwright
