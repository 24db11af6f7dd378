// SPDX-License-Identifier: MIT
#pragma once

#include "encoding/recipe.h"

namespace filmwright {

/// Where recipes are looked for: filmwright/recipes in the person's configuration folder
/// ($XDG_CONFIG_HOME), then ../share/filmwright/recipes beside the program. Of two recipes of one
/// name the first counts.
QStringList recipeFolders();

/// Every recipe that is found, those with errors too, in the order of their ids.
QList<RecipeFile> foundRecipes();

/// The recipe of that id, or the one in that file: a name with a slash or with the extension
/// ".recipe" is a file's.
RecipeFile findRecipe(const QString &nameOrFile);

} // namespace filmwright
