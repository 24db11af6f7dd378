// SPDX-License-Identifier: MIT
#include "cli/exitstatus.h"

#include <QFile>

#include <cstdio>

namespace filmwright {

void printError(const QString &error)
{
    const QByteArray line = "filmwright-cli: " + printable(error).toUtf8() + '\n';
    std::fwrite(line.constData(), 1, static_cast<std::size_t>(line.size()), stderr);
}

void printLine(const QString &line)
{
    const QByteArray bytes = QFile::encodeName(line) + '\n';
    std::fwrite(bytes.constData(), 1, static_cast<std::size_t>(bytes.size()), stdout);
    std::fflush(stdout);
}

QString printable(QString text)
{
    for (QChar &character : text)
        if (!character.isPrint() && !character.isSurrogate())
            character = QChar(QChar::ReplacementCharacter);
    return text;
}

} // namespace filmwright
