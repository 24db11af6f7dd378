// SPDX-License-Identifier: MIT
#include "encoding/shellwords.h"

namespace filmwright {

namespace {

/// Inside double quotes a backslash stands for itself in front of any other character.
bool isEscapedInQuotes(QChar character)
{
    return QStringLiteral("\"\\$`").contains(character);
}

} // namespace

std::optional<QStringList> shellWords(const QString &line)
{
    QStringList words;
    QString word;
    bool inWord = false;
    QChar quote; // null outside of quotes
    for (qsizetype i = 0; i < line.size(); ++i) {
        const QChar character = line.at(i);
        if (character == QLatin1Char('\\') && quote != QLatin1Char('\'')) {
            if (++i == line.size())
                return std::nullopt;
            if (!quote.isNull() && !isEscapedInQuotes(line.at(i)))
                word += character;
            word += line.at(i);
            inWord = true;
        } else if (character == quote) {
            quote = QChar();
        } else if (quote.isNull() &&
                   (character == QLatin1Char('"') || character == QLatin1Char('\''))) {
            quote = character;
            inWord = true;
        } else if (quote.isNull() && character.isSpace()) {
            if (inWord)
                words << word;
            word.clear();
            inWord = false;
        } else {
            word += character;
            inWord = true;
        }
    }
    if (!quote.isNull())
        return std::nullopt;
    if (inWord)
        words << word;
    return words;
}

} // namespace filmwright
