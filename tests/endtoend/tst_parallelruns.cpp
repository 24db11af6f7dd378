// SPDX-License-Identifier: MIT
// Several runs at the same time.

#include "commandline.h"
#include "sample.h"
#include "support/testprogram.h"
#include "support/toolfolder.h"

#include <QDir>
#include <QFile>
#include <QTest>

class TestParallelRuns : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void eightRecordingsFourAtATime();
    void secondRunOnTheSameRecordingLeavesTheFirstAlone();

private:
    QString path(const QString &name) const { return m_folder->filePath(name); }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void TestParallelRuns::eightRecordingsFourAtATime()
{
    // Some of the same name in different folders; every one of another length.
    QStringList recordings;
    for (const char *name : {"a.MLV", "b.MLV", "c.MLV", "d.MLV", "other/a.MLV", "other/b.MLV",
                             "third/a.MLV", "third/d.MLV"})
        recordings << path(QString::fromUtf8(name));
    for (qsizetype number = 0; number < recordings.size(); ++number) {
        QVERIFY(QDir().mkpath(QFileInfo(recordings.at(number)).path()));
        QVERIFY(writeSample(recordings.at(number),
                            QStringLiteral("--size 128x72 --frames %1").arg(number + 3)));
    }
    CommandLine cli;
    const QStringList command{cli.program, QStringLiteral("convert"), QStringLiteral("{}"),
                              QStringLiteral(":::")};
    cli.program = QStringLiteral("parallel");
    QVERIFY(cli.run(
        QStringList{QStringLiteral("--will-cite"), QStringLiteral("--jobs"), QStringLiteral("4")} +
        command + recordings));
    QCOMPARE(cli.status(), 0);
    QStringList movies;
    for (const QString &recording : recordings)
        movies << recording.chopped(4) + QStringLiteral(".mov");
    QStringList printed = cli.output();
    printed.sort();
    QCOMPARE(printed, movies);
    for (qsizetype number = 0; number < movies.size(); ++number)
        QCOMPARE(Movie::probe(movies.at(number)).frames(), int(number + 3));
    QCOMPARE(cli.temporaryEntries(), QStringList());
    QCOMPARE(QDir(path(QStringLiteral("third"))).entryList(QDir::Files | QDir::Hidden),
             (QStringList{QStringLiteral("a.MLV"), QStringLiteral("a.mov"), QStringLiteral("d.MLV"),
                          QStringLiteral("d.mov")}));
}

void TestParallelRuns::secondRunOnTheSameRecordingLeavesTheFirstAlone()
{
    const QString recording = path(QStringLiteral("clip.MLV"));
    QVERIFY(writeSample(recording, QStringLiteral("--size 128x72 --frames 4")));
    ToolFolder tools;
    tools.addTool(QStringLiteral("ffmpeg"),
                  QStringLiteral("for m; do :; done; echo begun > \"$m\"\n"
                                 "while [ ! -e '%1' ]; do sleep 0.05; done\n"
                                 "rm -f \"$m\"; exec %2 \"$@\"")
                      .arg(path(QStringLiteral("go")), realTool(QStringLiteral("ffmpeg"))));
    CommandLine first;
    first.start({QStringLiteral("convert"), recording});
    QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(path(QStringLiteral("clip.mov"))), 60000);

    CommandLine second;
    QVERIFY(second.run({QStringLiteral("convert"), recording}));
    QCOMPARE(second.status(), 1);
    QCOMPARE(second.output(), QStringList());
    QCOMPARE(
        second.messages(),
        (QStringList{
            QStringLiteral("clip.MLV: reading"), QStringLiteral("clip.MLV: extracting, 4 frames"),
            QStringLiteral("clip.MLV: failed: its movie is being written by another run")}));
    QCOMPARE(second.temporaryEntries(), QStringList());

    QVERIFY(QFile(path(QStringLiteral("go"))).open(QIODevice::WriteOnly));
    QVERIFY(first.waitForEnd());
    QCOMPARE(first.status(), 0);
    QCOMPARE(first.output(), QStringList{path(QStringLiteral("clip.mov"))});
    QCOMPARE(Movie::probe(path(QStringLiteral("clip.mov"))).frames(), 4);
}

FILMWRIGHT_TEST(TestParallelRuns, QCoreApplication)
#include "tst_parallelruns.moc"
