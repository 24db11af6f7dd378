// SPDX-License-Identifier: MIT
// A recipe's file is an INI file as QSettings reads it. QSettings tells no lines and takes some
// slips for something else, so the lines are looked at before.
#include "encoding/recipe.h"
#include "encoding/recipearguments.h"
#include "encoding/shellwords.h"

#include <QFile>
#include <QFileInfo>
#include <QSettings>
#include <QStringDecoder>

#include <algorithm>

namespace filmwright {

namespace {

constexpr qint64 mostBytes = 65536;

/// What is wrong on a line; line 0: with the file.
struct LineError
{
    QString text{};
    int line = 0;
};

const QStringList &fields()
{
    static const QStringList names{QStringLiteral("Name"),      QStringLiteral("Description"),
                                   QStringLiteral("Extension"), QStringLiteral("Suffix"),
                                   QStringLiteral("Develop"),   QStringLiteral("Video"),
                                   QStringLiteral("Sound"),     QStringLiteral("FastStart")};
    return names;
}

/// A value that QSettings takes as it stands: quotes stand around the whole of it or nowhere.
QString quotingError(const QString &value)
{
    bool quoted = false;
    for (qsizetype i = 0; i < value.size(); ++i) {
        const QChar character = value.at(i);
        if (character == QLatin1Char('\\')) {
            if (++i == value.size())
                return QStringLiteral("a value can't go on in the next line");
        } else if (character == QLatin1Char(';') && !quoted) {
            return {}; // a comment follows
        } else if (character == QLatin1Char('"')) {
            const bool atEdge =
                quoted ? value.mid(i + 1).section(QLatin1Char(';'), 0, 0).trimmed().isEmpty()
                       : i == 0;
            if (!atEdge) {
                return QStringLiteral(
                    "bad quoting: inside a value write ' instead of \", or the whole value "
                    "in \" with \\\" inside");
            }
            quoted = !quoted;
        }
    }
    return quoted ? QStringLiteral("bad quoting: a \" is not closed") : QString();
}

/// The lines of the fields, by their names.
using FieldLines = QMap<QString, int>;

QString fieldError(const QString &line, const FieldLines &lines)
{
    const qsizetype equals = line.indexOf(QLatin1Char('='));
    if (equals < 0)
        return QStringLiteral("neither a section, a comment nor a field with its value");
    const QString name = line.left(equals).trimmed();
    if (!fields().contains(name))
        return QStringLiteral("unknown field \"%1\"; there are %2")
            .arg(name, fields().join(QStringLiteral(", ")));
    if (lines.contains(name))
        return QStringLiteral("%1 is there twice").arg(name);
    const QString value = line.mid(equals + 1).trimmed();
    // QSettings would make a value of another type of it.
    if (value.startsWith(QLatin1Char('@')))
        return QStringLiteral("a value can't begin with @");
    return quotingError(value);
}

LineError errorInLines(const QString &content, FieldLines &lines)
{
    bool inSection = false;
    int number = 0;
    const QStringList all = content.split(QLatin1Char('\n'));
    for (const QString &raw : all) {
        ++number;
        const QString line = raw.trimmed();
        if (line.isEmpty() || line.startsWith(QLatin1Char(';')) ||
            line.startsWith(QLatin1Char('#')))
            continue;
        if (line.startsWith(QLatin1Char('['))) {
            if (line != QLatin1String("[Recipe]") || inSection)
                return {QStringLiteral("the only section is [Recipe]"), number};
            inSection = true;
            continue;
        }
        if (!inSection)
            return {QStringLiteral("[Recipe] is missing above"), number};
        if (const QString error = fieldError(line, lines); !error.isEmpty())
            return {error, number};
        lines.insert(line.section(QLatin1Char('='), 0, 0).trimmed(), number);
    }
    return inSection ? LineError{} : LineError{QStringLiteral("[Recipe] is missing"), 0};
}

/// QSettings makes a list of a value with commas.
QString valueOf(const QSettings &settings, const QString &field)
{
    const QString comma =
        field == QLatin1String("Description") ? QStringLiteral(", ") : QStringLiteral(",");
    return settings.value(QStringLiteral("Recipe/") + field).toStringList().join(comma);
}

bool hasControlCharacter(const QString &value)
{
    return std::any_of(value.cbegin(), value.cend(),
                       [](QChar character) { return !character.isPrint(); });
}

QString extensionError(const QString &extension)
{
    const QStringList known{QStringLiteral("mov"), QStringLiteral("mp4"), QStringLiteral("avi"),
                            QStringLiteral("dng")};
    if (known.contains(extension))
        return {};
    return QStringLiteral("Extension is one of %1, not \"%2\"")
        .arg(known.join(QStringLiteral(", ")), extension);
}

QString suffixError(const QString &suffix)
{
    constexpr qsizetype longest = 40;
    return suffix.contains(QLatin1Char('/')) || suffix.size() > longest
               ? QStringLiteral("Suffix is a part of a file's name, at most %1 letters")
                     .arg(longest)
               : QString();
}

/// Takes the values over, field by field; the first that is wrong is told.
class FieldReader
{
public:
    FieldReader(const QSettings &settings, const FieldLines &lines)
        : m_settings(settings)
        , m_lines(lines)
    {
    }

    LineError read(Recipe &recipe)
    {
        recipe.name = take(QStringLiteral("Name"));
        recipe.description = take(QStringLiteral("Description"));
        recipe.extension = take(QStringLiteral("Extension"));
        fail(QStringLiteral("Extension"), extensionError(recipe.extension));
        if (recipe.keepsRawFrames()) {
            refuseOtherFields();
            return m_error;
        }
        recipe.suffix = take(QStringLiteral("Suffix"));
        fail(QStringLiteral("Suffix"), suffixError(recipe.suffix));
        recipe.develop = takeWords(QStringLiteral("Develop"));
        fail(QStringLiteral("Develop"), developmentError(recipe.develop));
        recipe.video = takeWords(QStringLiteral("Video"));
        fail(QStringLiteral("Video"), encodingError(recipe.video, QLatin1Char('v')));
        recipe.sound = takeWords(QStringLiteral("Sound"));
        if (!recipe.sound.isEmpty())
            fail(QStringLiteral("Sound"), encodingError(recipe.sound, QLatin1Char('a')));
        recipe.fastStart = takeSwitch(QStringLiteral("FastStart"));
        return m_error;
    }

private:
    void fail(const QString &field, const QString &error)
    {
        if (m_error.text.isEmpty() && !error.isEmpty())
            m_error = {error, m_lines.value(field)};
    }

    /// Raw frames are neither developed nor encoded.
    void refuseOtherFields()
    {
        const QStringList &all = fields();
        for (const QString &field : all.mid(all.indexOf(QStringLiteral("Extension")) + 1))
            if (!take(field).isEmpty())
                fail(field, QStringLiteral("with Extension=dng there is no %1").arg(field));
    }

    QString take(const QString &field)
    {
        QString value = valueOf(m_settings, field);
        if (hasControlCharacter(value))
            fail(field, QStringLiteral("%1 has a control character").arg(field));
        return value;
    }

    QStringList takeWords(const QString &field)
    {
        const auto words = shellWords(take(field));
        if (!words)
            fail(field, QStringLiteral("bad quoting: a ' or \" is not closed"));
        return words.value_or(QStringList());
    }

    bool takeSwitch(const QString &field)
    {
        const QString value = take(field);
        if (!value.isEmpty() && value != QLatin1String("true") && value != QLatin1String("false"))
            fail(field, QStringLiteral("%1 is true or false, not \"%2\"").arg(field, value));
        return value == QLatin1String("true");
    }

    const QSettings &m_settings;
    const FieldLines &m_lines;
    LineError m_error;
};

/// The file's text; an error when it can't be one.
LineError readContent(const QString &path, QString &content)
{
    QFile file(path);
    if (!QFileInfo(path).isFile())
        return {QStringLiteral("there is no such file")};
    if (!file.open(QIODevice::ReadOnly))
        return {QStringLiteral("it can't be read: %1").arg(file.errorString())};
    const QByteArray bytes = file.read(mostBytes + 1);
    if (bytes.size() > mostBytes)
        return {QStringLiteral("it is too long for a recipe")};
    QStringDecoder decoder(QStringDecoder::Utf8);
    content = decoder(bytes);
    // QSettings takes a lone carriage return for the end of a line.
    const bool isText = !decoder.hasError() && !content.contains(QChar(0)) &&
                        !QString(content).remove(QLatin1String("\r\n")).contains(QLatin1Char('\r'));
    return isText ? LineError{} : LineError{QStringLiteral("it is no text in UTF-8")};
}

LineError readFields(const QString &path, Recipe &recipe)
{
    QString content;
    LineError error = readContent(path, content);
    FieldLines lines;
    if (error.text.isEmpty())
        error = errorInLines(content, lines);
    if (!error.text.isEmpty())
        return error;
    const QSettings settings(path, QSettings::IniFormat);
    if (settings.status() != QSettings::NoError)
        return {QStringLiteral("it is no INI file")};
    return FieldReader(settings, lines).read(recipe);
}

} // namespace

RecipeFile readRecipe(const QString &path)
{
    RecipeFile file;
    file.recipe.path = path;
    file.recipe.id = QFileInfo(path).completeBaseName();
    const LineError error = readFields(path, file.recipe);
    if (file.recipe.name.isEmpty())
        file.recipe.name = file.recipe.id;
    if (error.text.isEmpty())
        return file;
    const QString place = error.line > 0 ? QStringLiteral("%1:%2").arg(path).arg(error.line) : path;
    file.error = QStringLiteral("%1: %2").arg(place, error.text);
    return file;
}

} // namespace filmwright
