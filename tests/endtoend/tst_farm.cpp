// SPDX-License-Identifier: MIT
// The lines of docs/farm.md: a folder of recordings shared out among machines.

#include "commandline.h"
#include "sample.h"
#include "support/sshmachines.h"
#include "support/testprogram.h"

#include <QDir>
#include <QFile>
#include <QTest>

class TestFarm : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void parallelOverSshSharesTheFolderOut();
    void arrayJobConvertsOneRecordingATask();

private:
    QString path(const QString &name) const { return m_folder->filePath(name); }
    QStringList paths(const QStringList &names, const QString &suffix) const
    {
        QStringList paths;
        for (const QString &name : names)
            paths << path(name + suffix);
        return paths;
    }
    QStringList entries() const
    {
        return QDir(path(QStringLiteral("footage"))).entryList(QDir::Files | QDir::Hidden);
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

namespace {

const QString recordingSuffix = QStringLiteral(".MLV");
const QString movieSuffix = QStringLiteral(".mov");

/// The rows of GNU parallel's log without the heading: sequence, host, start, runtime, sent,
/// received, exit value, signal, command.
QList<QStringList> jobs(const QString &log)
{
    QFile file(log);
    QList<QStringList> rows;
    if (file.open(QIODevice::ReadOnly))
        for (const QString &line :
             QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts).mid(1))
            rows << line.split(QLatin1Char('\t'));
    return rows;
}

} // namespace

void TestFarm::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    for (const char *folder : {"footage", "tmp"})
        QVERIFY(QDir(m_folder->path()).mkdir(QString::fromUtf8(folder)));
}

void TestFarm::parallelOverSshSharesTheFolderOut()
{
    const SshMachines machines({QStringLiteral("TMPDIR=") + path(QStringLiteral("tmp"))});
    if (!machines.skipReason().isEmpty())
        QSKIP(qPrintable(machines.skipReason()));
    const QStringList names{QStringLiteral("footage/a take"), QStringLiteral("footage/b"),
                            QStringLiteral("footage/Übung"), QStringLiteral("footage/z 100%")};
    for (const QString &name : names)
        QVERIFY(
            writeSample(path(name + recordingSuffix), QStringLiteral("--size 128x72 --frames 3")));
    const QString broken = path(QStringLiteral("footage/broken.MLV"));
    QVERIFY(QFile(broken).open(QIODevice::WriteOnly));

    const QString log = path(QStringLiteral("log"));
    const QString list = path(QStringLiteral("recordings"));
    QFile file(list);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write((paths(names, recordingSuffix) << broken).join(QLatin1Char('\n')).toUtf8() + '\n');
    file.close();
    CommandLine cli;
    const QStringList arguments{QStringLiteral("--will-cite"),
                                QStringLiteral("--ssh"),
                                machines.ssh().join(QLatin1Char(' ')),
                                QStringLiteral("--sshlogin"),
                                QStringLiteral("one,two"),
                                QStringLiteral("--jobs"),
                                QStringLiteral("1"),
                                QStringLiteral("--joblog"),
                                log,
                                QStringLiteral("--resume-failed"),
                                QStringLiteral("--arg-file"),
                                list,
                                cli.program,
                                QStringLiteral("convert"),
                                QStringLiteral("{}")};
    cli.program = QStringLiteral("parallel");
    QVERIFY(cli.run(arguments));
    QCOMPARE(cli.status(), 1); // the number of jobs that failed
    QStringList printed = cli.output();
    printed.sort();
    QStringList movies = paths(names, movieSuffix);
    movies.sort();
    QCOMPARE(printed, movies);
    QStringList hosts;
    for (const QStringList &job : jobs(log))
        hosts << job.value(1);
    hosts.removeDuplicates();
    hosts.sort();
    QCOMPARE(hosts, QStringList({QStringLiteral("one"), QStringLiteral("two")}));
    QCOMPARE(entries().filter(QStringLiteral("unfinished")), QStringList());
    QCOMPARE(QDir(path(QStringLiteral("tmp"))).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
             QStringList());

    // The same line again does only what failed.
    QVERIFY(writeSample(broken, QStringLiteral("--size 128x72 --frames 3")));
    QVERIFY(cli.run(arguments));
    QCOMPARE(cli.status(), 0);
    QCOMPARE(cli.output(), QStringList{path(QStringLiteral("footage/broken.mov"))});
}

/// The scheduler's part: it starts the script once for every number.
void TestFarm::arrayJobConvertsOneRecordingATask()
{
    const QStringList names{QStringLiteral("footage/a take"), QStringLiteral("footage/b")};
    for (const QString &name : names)
        QVERIFY(
            writeSample(path(name + recordingSuffix), QStringLiteral("--size 128x72 --frames 3")));
    CommandLine cli;
    const QString script = QStringLiteral(FARM_SCRIPT);
    const QString program = QFileInfo(cli.program).path();
    cli.environment.insert(QStringLiteral("PATH"),
                           program + QLatin1Char(':') + qEnvironmentVariable("PATH"));
    cli.environment.insert(QStringLiteral("FOOTAGE"), path(QStringLiteral("footage")));
    cli.program = QStringLiteral("sh");
    for (int task = 1; task <= names.size(); ++task) {
        cli.environment.insert(QStringLiteral("SLURM_ARRAY_TASK_ID"), QString::number(task));
        QVERIFY(cli.run({script}));
        QCOMPARE(cli.status(), 0);
        QCOMPARE(cli.output(), QStringList{path(names.at(task - 1) + movieSuffix)});
    }
    cli.environment.insert(QStringLiteral("SLURM_ARRAY_TASK_ID"), QStringLiteral("3"));
    QVERIFY(cli.run({script}));
    QCOMPARE(cli.status(), 2);
    QCOMPARE(cli.messages(), QStringList{QStringLiteral("no recording has the number 3")});
}

FILMWRIGHT_TEST(TestFarm, QCoreApplication)
#include "tst_farm.moc"
