// SPDX-License-Identifier: MIT
#include "encoding/recipes.h"

#include "runner/files.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

namespace filmwright {

namespace {

const QString extension = QStringLiteral(".recipe");

/// The files, by the ids of their recipes.
QMap<QString, QString> recipeFiles()
{
    QMap<QString, QString> files;
    const QStringList folders = recipeFolders();
    for (const QString &folder : folders) {
        const QStringList names = folderEntries(folder);
        for (const QString &name : names) {
            const QString id = name.chopped(name.endsWith(extension) ? extension.size() : 0);
            if (id != name && !id.isEmpty() && !files.contains(id))
                files.insert(id, QDir(folder).filePath(name));
        }
    }
    return files;
}

} // namespace

QStringList recipeFolders()
{
    const QString own = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
    const QDir programs(QCoreApplication::applicationDirPath());
    return {QDir(own).filePath(QStringLiteral("filmwright/recipes")),
            QDir::cleanPath(programs.filePath(QStringLiteral("../share/filmwright/recipes")))};
}

QList<RecipeFile> foundRecipes()
{
    QList<RecipeFile> recipes;
    const QMap<QString, QString> files = recipeFiles();
    for (const QString &path : files)
        recipes << readRecipe(path);
    return recipes;
}

RecipeFile findRecipe(const QString &nameOrFile)
{
    if (nameOrFile.contains(QLatin1Char('/')) || nameOrFile.endsWith(extension))
        return readRecipe(QFileInfo(nameOrFile).absoluteFilePath());
    const QMap<QString, QString> files = recipeFiles();
    if (files.contains(nameOrFile))
        return readRecipe(files.value(nameOrFile));
    RecipeFile missing;
    missing.recipe.id = nameOrFile;
    missing.error = QStringLiteral("there is no recipe \"%1\"; there are %2")
                        .arg(nameOrFile, QStringList(files.keys()).join(QStringLiteral(", ")));
    return missing;
}

} // namespace filmwright
