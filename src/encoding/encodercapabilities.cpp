// SPDX-License-Identifier: MIT
#include "encoding/encodercapabilities.h"

#include "runner/systemlog.h"

#include <QRegularExpression>

namespace filmwright {

namespace {

QStringList fieldsOf(const QString &line)
{
    return removeExcessWhitespace(line).split(QLatin1Char(' '));
}

/// `kind` is the letter of ffmpeg's first flag column, `name` the kind's word in the log.
CapabilityList encodersIn(const QStringList &lines, QLatin1Char kind, const QString &name)
{
    CapabilityList encoders;
    bool tableBegun = false;
    for (const QString &line : lines) {
        if (line.startsWith(QLatin1String(" ------")))
            tableBegun = true;
        if (!tableBegun || line.indexOf(kind) != 1)
            continue;
        const QString normalized = removeExcessWhitespace(line);
        const QStringList fields = normalized.split(QLatin1Char(' '));
        if (fields.size() < 3) {
            systemLog(QStringLiteral("Unable to parse %1 encoder line: \"%2\"").arg(name, line));
            continue;
        }
        // The first occurrence counts, even one inside the flags: deliberately simple.
        const qsizetype titleAt = normalized.indexOf(fields.at(1)) + fields.at(1).size() + 1;
        encoders << CapabilityRecord{{QStringLiteral("NAME"), fields.at(1)},
                                     {QStringLiteral("TITLE"), normalized.mid(titleAt)}};
    }
    return encoders;
}

} // namespace

CapabilityList pixFmtsIn(const QStringList &lines)
{
    CapabilityList formats;
    for (const QString &line : lines) {
        if (!line.startsWith(QLatin1String("IO")))
            continue;
        const QStringList fields = fieldsOf(line);
        if (fields.size() != 4) {
            systemLog(QStringLiteral("Unable to parse PixFmts line: \"%1\"").arg(line));
            continue;
        }
        // Bits a pixel take the column of the components: readers of the list count on it.
        formats << CapabilityRecord{{QStringLiteral("NAME"), fields.at(1)},
                                    {QStringLiteral("NB_COMPONENTS"), fields.at(2)},
                                    {QStringLiteral("BITS_PER_PIXEL"), fields.at(2)}};
    }
    return formats;
}

CapabilityList videoEncodersIn(const QStringList &lines)
{
    return encodersIn(lines, QLatin1Char('V'), QStringLiteral("video"));
}

CapabilityList audioEncodersIn(const QStringList &lines)
{
    return encodersIn(lines, QLatin1Char('A'), QStringLiteral("audio"));
}

QStringList supportedPixFmtsIn(const QStringList &lines)
{
    const QLatin1String label("Supported pixel formats:");
    for (const QString &line : lines)
        if (const QString entry = line.trimmed(); entry.startsWith(label))
            return entry.mid(label.size()).split(QLatin1Char(' '), Qt::SkipEmptyParts);
    return {};
}

QString removeExcessWhitespace(const QString &text)
{
    static const QRegularExpression blanks(QStringLiteral("[ ]+"));
    return QString(text).replace(blanks, QStringLiteral(" ")).trimmed();
}

} // namespace filmwright
