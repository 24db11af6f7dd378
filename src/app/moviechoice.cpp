// SPDX-License-Identifier: MIT
// What the movies of the next batch are to be, and where they go.
#include "app/appdelegate.h"
#include "app/plaintext.h"
#include "encoding/recipes.h"
#include "runner/readabletext.h"
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
    tellChoice();
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

/// What each choice makes, by the other one.
void AppDelegate::describeFormats()
{
    QComboBox &formats = *m_ui->movieFormatPopUpButton;
    QComboBox &qualities = *m_ui->movieQualityPopUpButton;
    const auto describe = [](QComboBox &popUp, int index, const QString &description) {
        popUp.setItemData(index, description, Qt::ToolTipRole);
        if (index == popUp.currentIndex())
            popUp.setToolTip(description);
    };
    for (int format = 0; format < formats.count(); ++format)
        describe(formats, format, movieDescription(format, qualities.currentIndex()));
    for (int quality = 0; quality < qualities.count(); ++quality)
        describe(qualities, quality, movieDescription(formats.currentIndex(), quality));
}

void AppDelegate::fillRecipes()
{
    QComboBox &popUp = *m_ui->movieRecipePopUpButton;
    const QList<RecipeFile> recipes = foundRecipes();
    for (const RecipeFile &file : recipes) {
        popUp.addItem(file.recipe.name, file.recipe.id);
        popUp.setItemData(popUp.count() - 1,
                          file.error.isEmpty() ? file.recipe.description : file.error,
                          Qt::ToolTipRole);
    }
}

std::optional<Recipe> AppDelegate::chosenRecipe() const
{
    const QString chosen = m_ui->movieRecipePopUpButton->currentData().toString();
    return chosen.isEmpty() ? std::nullopt : std::optional(findRecipe(chosen).recipe);
}

/// By what is chosen now.
std::vector<MovieRoom> AppDelegate::upcomingMovies() const
{
    const std::optional<Recipe> recipe = chosenRecipe();
    std::vector<MovieRoom> movies;
    for (const auto &project : *m_projectList) {
        ConversionSettings settings = settingsFor(*project);
        settings.recipe = recipe;
        movies.push_back({moviePathFor(project->mlvPath(), settings, project->metadata()),
                          movieBytes(project->metadata(), settings), settings.recipe.has_value()});
    }
    return movies;
}

/// What a person should know before Start: what is replaced, and how large raw movies are, which
/// alone are known before they are made.
QString AppDelegate::describeStart()
{
    const std::vector<MovieRoom> movies = upcomingMovies();
    QStringList replaced;
    double bytes = 0;
    for (const MovieRoom &movie : movies) {
        if (QFileInfo::exists(movie.path))
            replaced << movie.path;
        bytes += movie.bytes;
    }
    QString toolTip = QStringLiteral("Start or stop making the movies");
    if (bytes > 0)
        toolTip += QStringLiteral("; they take %1").arg(readableFileSize(bytes));
    if (!replaced.isEmpty()) {
        toolTip += QStringLiteral("\nThese are replaced:\n%1")
                       .arg(shortened(replaced).join(QLatin1Char('\n')));
    }
    m_ui->startStopItem->setToolTip(shownAsItStands(toolTip));
    if (const QString error = movieSpaceError(movies); !error.isEmpty())
        return QStringLiteral(": %1").arg(error);
    if (replaced.isEmpty())
        return {};
    return replaced.size() == 1 ? QStringLiteral(", Start replaces 1 movie")
                                : QStringLiteral(", Start replaces %1 movies").arg(replaced.size());
}

/// What Start does depends on it.
void AppDelegate::tellChoice()
{
    if (m_projectList && !m_projectList->empty())
        queueChanged();
}

/// The chosen recipe is the batch's. Its file is read anew: it may have been mended since.
bool AppDelegate::takeRecipe()
{
    m_recipe.reset();
    const QString chosen = m_ui->movieRecipePopUpButton->currentData().toString();
    if (chosen.isEmpty())
        return true;
    const RecipeFile file = findRecipe(chosen);
    const QString error =
        file.error.isEmpty() ? FFmpegTask::ffmpegTask()->recipeError(file.recipe) : file.error;
    if (error.isEmpty())
        m_recipe = file.recipe;
    else
        m_alerts.runAlert(QStringLiteral("The recipe %1 can't be used").arg(file.recipe.name),
                          error, QStringLiteral("Ok"));
    return error.isEmpty();
}

} // namespace filmwright
