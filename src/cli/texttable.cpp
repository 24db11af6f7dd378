// SPDX-License-Identifier: MIT
#include "cli/texttable.h"

#include <algorithm>

namespace filmwright {

namespace {

QString aligned(const QStringList &cells, const QList<qsizetype> &widths, const QList<int> &numbers)
{
    QString line;
    for (int column = 0; column < cells.size(); ++column) {
        const QString &cell = cells.at(column);
        const qsizetype width = widths.at(column);
        line +=
            (numbers.contains(column) ? cell.rightJustified(width) : cell.leftJustified(width)) +
            QLatin1String("  ");
    }
    while (line.endsWith(QLatin1Char(' ')))
        line.chop(1);
    return line;
}

} // namespace

QStringList textTable(const QList<QStringList> &rows, const QList<int> &numbers)
{
    QList<qsizetype> widths;
    for (const QStringList &cells : rows) {
        widths.resize(cells.size());
        for (qsizetype column = 0; column < cells.size(); ++column)
            widths[column] = std::max(widths.at(column), cells.at(column).size());
    }
    QStringList table;
    for (const QStringList &cells : rows)
        table << aligned(cells, widths, numbers);
    return table;
}

QString commonFolder(const QStringList &paths)
{
    const auto folderOf = [](const QString &path) {
        return path.left(path.lastIndexOf(QLatin1Char('/')) + 1);
    };
    if (paths.isEmpty())
        return {};
    QString common = folderOf(paths.constFirst());
    for (const QString &path : paths)
        while (!path.startsWith(common))
            common = folderOf(common.chopped(1));
    return common;
}

} // namespace filmwright
