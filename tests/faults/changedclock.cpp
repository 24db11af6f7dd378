// SPDX-License-Identifier: MIT
#include "changedclock.h"
#include "support/programrun.h"

#include <QDateTime>
#include <QProcess>
#include <QSaveFile>
#include <QTemporaryDir>
#include <QTest>

namespace {

const QLatin1String preload("LD_PRELOAD");

/// The program `faketime` knows where the library is that it loads.
QString library()
{
    const Ended faketime =
        runProgram(QStringLiteral("faketime"), {QStringLiteral("-f"), QStringLiteral("+0"),
                                                QStringLiteral("printenv"), preload});
    return QString::fromLocal8Bit(faketime.output).trimmed();
}

QString knownLibrary()
{
    static const QString known = library();
    return known;
}

qint64 daysAheadOf(const ChangedClock &clock)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    clock.addTo(environment);
    QProcess date;
    date.setProcessEnvironment(environment);
    date.start(QStringLiteral("date"), {QStringLiteral("+%s")});
    date.waitForFinished();
    const auto told =
        QDateTime::fromSecsSinceEpoch(date.readAllStandardOutput().trimmed().toLongLong());
    return QDateTime::currentDateTime().daysTo(told);
}

} // namespace

bool ChangedClock::isPossible()
{
    static const bool possible = [] {
        const QTemporaryDir folder;
        const ChangedClock clock(folder.filePath(QStringLiteral("clock")));
        clock.set("+400d");
        return daysAheadOf(clock) == 400;
    }();
    return possible;
}

ChangedClock::ChangedClock(const QString &file)
    : m_file(file)
{
}

void ChangedClock::addTo(QProcessEnvironment &environment) const
{
    environment.insert(preload, knownLibrary());
    environment.insert(QStringLiteral("FAKETIME_TIMESTAMP_FILE"), m_file);
    // No clock changes when a file was written last.
    environment.insert(QStringLiteral("NO_FAKE_STAT"), QStringLiteral("1"));
    environment.insert(QStringLiteral("FAKETIME_NO_CACHE"), QStringLiteral("1"));
    environment.insert(QStringLiteral("FAKETIME_DONT_FAKE_MONOTONIC"), QStringLiteral("1"));
}

void ChangedClock::set(const char *offset) const
{
    QSaveFile file(m_file); // a program may look at it at any moment
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(offset);
    QVERIFY(file.commit());
}
