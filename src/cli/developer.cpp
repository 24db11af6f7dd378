// SPDX-License-Identifier: MIT
#include "cli/developer.h"

#include <QMap>
#include <QProcess>

namespace filmwright {

namespace {

constexpr int timeLimit = 5000; // milliseconds, for a program of another kind that doesn't end

/// The lines of name and value, separated by an equals sign.
QMap<QString, QString> values(const QString &output)
{
    QMap<QString, QString> values;
    const QStringList lines = output.split(QLatin1Char('\n'));
    for (const QString &line : lines) {
        const qsizetype separator = line.indexOf(QLatin1Char('='));
        if (separator > 0)
            values.insert(line.left(separator), line.mid(separator + 1));
    }
    return values;
}

} // namespace

std::optional<Developer> askDeveloper(const QString &path)
{
    QProcess process;
    process.setStandardInputFile(QProcess::nullDevice());
    process.start(path, {QStringLiteral("--filmwright")});
    if (!process.waitForFinished(timeLimit)) {
        process.kill();
        process.waitForFinished();
        return std::nullopt;
    }
    const auto said = values(QString::fromLocal8Bit(process.readAllStandardOutput()));
    const QString program = said.value(QStringLiteral("program"));
    if (process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0 ||
        program.isEmpty())
        return std::nullopt;
    return Developer{program, said.value(QStringLiteral("covers")),
                     said.value(QStringLiteral("other"))};
}

QString describe(const Developer &developer)
{
    if (developer.covers.isEmpty())
        return QStringLiteral("FILMWRIGHT_DCRAW has %1 develop everything").arg(developer.other);
    const QString own = QStringLiteral("%1 develops %2").arg(developer.program, developer.covers);
    return developer.other.isEmpty()
               ? QStringLiteral("%1; no other dcraw was found, so other DNGs aren't developed")
                     .arg(own)
               : QStringLiteral("%1, and %2 the rest").arg(own, developer.other);
}

} // namespace filmwright
