// SPDX-License-Identifier: MIT
#include "mlvdump/mlvdumparguments.h"

#include "runner/workingfiles.h"

#include <stdexcept>

namespace filmwright {

QStringList metaArguments(const QString &mlvPath)
{
    return {QStringLiteral("-m"), QStringLiteral("-v"), mlvPath};
}

QStringList frameArguments(const QString &mlvPath, qint64 index, const QString &darkPath,
                           const QString &flatPath, const QString &directory,
                           const QStringList &more, const FrameSelection &selection)
{
    if (mlvPath.isNull())
        throw std::invalid_argument("No recording to extract frames from");
    QStringList arguments{
        QStringLiteral("--dng"), mlvPath, QStringLiteral("--no-cs"), QStringLiteral("-f"),
        selection.isWhole() ? QStringLiteral("%1-%1").arg(index) : selection.range()};
    if (!darkPath.isEmpty())
        arguments << QStringLiteral("-s") << darkPath;
    if (!flatPath.isEmpty())
        arguments << QStringLiteral("-t") << flatPath;
    arguments << more;
    if (!selection.isWhole())
        arguments << QStringLiteral("--renumber");
    arguments << QStringLiteral("-o") << directory + extractedStem;
    return arguments;
}

QStringList averageArguments(const QString &recording, const QString &output)
{
    return {QStringLiteral("-a"), recording, QStringLiteral("-o"), output};
}

QStringList flatDarkSubstractionArguments(const QString &directory)
{
    return {QStringLiteral("-s"), directory + averagedFlatDarkName, QStringLiteral("-o"),
            directory + substractedFlatName, directory + averagedFlatName};
}

QString frameName(quint64 number)
{
    return QStringLiteral("%1%2.dng").arg(extractedStem).arg(number, 6, 10, QLatin1Char('0'));
}

} // namespace filmwright
