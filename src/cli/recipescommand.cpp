// SPDX-License-Identifier: MIT
#include "cli/recipescommand.h"

#include "cli/commandline.h"
#include "cli/missingtools.h"
#include "encoding/ffmpegtask.h"
#include "encoding/recipes.h"
#include "runner/resources.h"

#include <QCommandLineParser>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace filmwright {

namespace {

QJsonObject objectOf(const RecipeFile &file)
{
    const Recipe &recipe = file.recipe;
    return {
        {QStringLiteral("recipe"), recipe.id},
        {QStringLiteral("name"), recipe.name},
        {QStringLiteral("description"), recipe.description},
        {QStringLiteral("extension"), recipe.extension},
        {QStringLiteral("suffix"), recipe.suffix},
        {QStringLiteral("develop"), QJsonArray::fromStringList(recipe.develop)},
        {QStringLiteral("video"), QJsonArray::fromStringList(recipe.video)},
        {QStringLiteral("sound"), QJsonArray::fromStringList(recipe.sound)},
        {QStringLiteral("path"), recipe.path},
        {QStringLiteral("problem"), file.error.isEmpty() ? QJsonValue() : file.error},
    };
}

void printAsJson(const QList<RecipeFile> &recipes)
{
    QJsonArray objects;
    for (const RecipeFile &file : recipes)
        objects << objectOf(file);
    printLine(QString::fromUtf8(QJsonDocument(objects).toJson().trimmed()));
}

void printAsText(const QList<RecipeFile> &recipes)
{
    for (const RecipeFile &file : recipes) {
        const Recipe &recipe = file.recipe;
        printLine(QStringLiteral("%1 %2").arg(
            recipe.id.leftJustified(14),
            file.error.isEmpty() ? QStringLiteral("%1 (%2): %3")
                                       .arg(recipe.name, recipe.extension, recipe.description)
                                 : QStringLiteral("can't be used: %1").arg(file.error)));
    }
}

} // namespace

int runRecipes(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral(
            "Lists the recipes by which movies can be made: the bundled ones and your own in %1.")
            .arg(recipeFolders().constFirst()));
    const QString json = QStringLiteral("json");
    parser.addOption({json, QStringLiteral("Print JSON.")});
    if (const auto status = readArguments(parser, QStringLiteral("recipes [options]"), arguments))
        return *status;
    if (!checkTools({ffmpegName}))
        return ExitUnusable;
    QList<RecipeFile> recipes = foundRecipes();
    const auto ffmpeg = FFmpegTask::ffmpegTask();
    const QMap<QString, CapabilityList> encoders = ffmpeg->readEncoders();
    for (RecipeFile &file : recipes)
        if (file.error.isEmpty())
            file.error = ffmpeg->recipeError(file.recipe, encoders);
    if (parser.isSet(json))
        printAsJson(recipes);
    else
        printAsText(recipes);
    return ExitSuccess;
}

} // namespace filmwright
