// SPDX-License-Identifier: MIT
#include "project/moviedestination.h"

#include "mlvdump/mlvdumpreport.h"
#include "project/conversionsettings.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QMap>
#include <QRegularExpression>

namespace filmwright {

namespace {

const QRegularExpression &placeholder()
{
    static const QRegularExpression expression(QStringLiteral("\\{([^{}]*)\\}"));
    return expression;
}

const QStringList &placeholders()
{
    static const QStringList names{QStringLiteral("name"), QStringLiteral("date"),
                                   QStringLiteral("time"), QStringLiteral("camera"),
                                   QStringLiteral("recipe")};
    return names;
}

/// A recording's texts are not to be trusted with paths.
QString harmless(const QString &value)
{
    static const QRegularExpression other(QStringLiteral("[^\\p{L}\\p{N} ._+-]"));
    const QString part = QString(value).replace(other, QStringLiteral("_")).trimmed();
    return part.isEmpty() ? QStringLiteral("unknown") : part;
}

QString dateOf(const MlvMetadata &metadata)
{
    return QDate::fromString(metadata.date, QStringLiteral("dd.MM.yyyy")).toString(Qt::ISODate);
}

/// Without colons, which other systems' files can't have.
QString timeOf(const MlvMetadata &metadata)
{
    return metadata.time.section(QLatin1Char(' '), 0, 0)
        .replace(QLatin1Char(':'), QLatin1Char('-'));
}

QString nameByPattern(const QString &recording, const ConversionSettings &settings,
                      const MlvMetadata &metadata)
{
    const QString extension = movieExtensions().value(settings.format, QStringLiteral("mov"));
    const QMap<QString, QString> values{
        {QStringLiteral("name"), QFileInfo(recording).completeBaseName()},
        {QStringLiteral("date"), harmless(dateOf(metadata))},
        {QStringLiteral("time"), harmless(timeOf(metadata))},
        {QStringLiteral("camera"), harmless(metadata.camera)},
        {QStringLiteral("recipe"), settings.recipe ? settings.recipe->id : extension},
    };
    // In one go: a value that looks like a placeholder is none.
    const QString &pattern = settings.destination.pattern;
    QString name;
    qsizetype done = 0;
    auto matches = placeholder().globalMatch(pattern);
    while (matches.hasNext()) {
        const QRegularExpressionMatch match = matches.next();
        name += pattern.mid(done, match.capturedStart() - done) + values.value(match.captured(1));
        done = match.capturedEnd();
    }
    return name + pattern.mid(done);
}

} // namespace

bool MovieDestination::isKnownBeforeReading() const
{
    static const QRegularExpression told(QStringLiteral("\\{(date|time|camera)\\}"));
    return existing != ExistingMovie::Keep && !pattern.contains(told);
}

QString patternError(const QString &pattern)
{
    if (pattern.isEmpty() || pattern.startsWith(QLatin1Char('.')))
        return QStringLiteral("a movie's name can't be empty or begin with a point");
    if (pattern.contains(QLatin1Char('/')) || pattern.contains(QChar(0)))
        return QStringLiteral("\"%1\" is no name of a file; --output names the folder")
            .arg(pattern);
    auto matches = placeholder().globalMatch(pattern);
    while (matches.hasNext()) {
        const QRegularExpressionMatch match = matches.next();
        if (!placeholders().contains(match.captured(1))) {
            return QStringLiteral("there is no %1; there are {%2}")
                .arg(match.captured(), placeholders().join(QStringLiteral("}, {")));
        }
    }
    if (QString(pattern).remove(placeholder()).contains(QRegularExpression(QStringLiteral("[{}]"))))
        return QStringLiteral("a { or } is not closed");
    return {};
}

QString moviePathFor(const QString &recording, const ConversionSettings &settings,
                     const MlvMetadata &metadata)
{
    const MovieDestination &destination = settings.destination;
    const QFileInfo file(recording);
    QString stem = recording;
    if (!destination.pattern.isEmpty()) {
        // The extension is what is replaced.
        const QString name = nameByPattern(recording, settings, metadata) + QStringLiteral(".MLV");
        stem = QFileInfo(recording).dir().filePath(name);
    }
    if (!destination.folder.isEmpty())
        stem = QDir(destination.folder).filePath(QFileInfo(stem).fileName());
    return settings.recipe ? moviePathFor(stem, *settings.recipe)
                           : moviePathFor(stem, settings.format);
}

QString freeMoviePath(const QString &moviePath, MovieKind kind)
{
    const QString extension =
        kind == MovieKind::Folder ? QString() : QLatin1Char('.') + QFileInfo(moviePath).suffix();
    const QString stem = moviePath.chopped(extension.size());
    QString free = moviePath;
    for (int number = 2; QFileInfo::exists(free); ++number)
        free = QStringLiteral("%1-%2%3").arg(stem).arg(number).arg(extension);
    return free;
}

} // namespace filmwright
