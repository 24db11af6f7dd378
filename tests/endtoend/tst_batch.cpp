// SPDX-License-Identifier: MIT
// Several recordings in one run, some of them bad.

#include "commandline.h"
#include "sample.h"
#include "support/testprogram.h"
#include "support/toolfolder.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTest>

namespace {

const QString smallClip = QStringLiteral("--size 128x72 --frames 3 --no-sound");

} // namespace

class TestBatch : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void badRecordingDoesNotHoldUpTheOthers();
    void folderIsSearched();
    void fileThatIsNoRecordingIsNamed();
    void secondRecordingOfTheSameMovieIsRefused();
    void frameThatCannotBeConvertedFailsTheRecording();
    void failingEncoderFailsTheRecording();
    void progressIsOneLineAStage();
    void progressForScriptsIsOneObjectALine();
    void recordingThatIsCutOffIsTold();
    void quietRunTellsFailuresOnly();
    void tableTellsWhatBecameOfEachRecording();
    void reportTellsWhatTheToolsSaid();
    void reportThatCannotBeWrittenIsSaidBeforeAnyWork();
    void keptTemporaryFilesAreNamed();
    void nothingToConvert();
    void strangeFileNames();

private:
    QString clip(const QString &name)
    {
        const QString path = m_folder->filePath(name);
        [](const QString &target) { QVERIFY(writeSample(target, smallClip)); }(path);
        return path;
    }
    QString bad(const QString &name)
    {
        QFile file(m_folder->filePath(name));
        if (file.open(QIODevice::WriteOnly))
            file.write("this is a letter, not a recording, though its name says so\n");
        return file.fileName();
    }
    QString movie(const QString &name) const { return m_folder->filePath(name); }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void TestBatch::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
}

void TestBatch::badRecordingDoesNotHoldUpTheOthers()
{
    const QStringList recordings{clip(QStringLiteral("1.MLV")), bad(QStringLiteral("2.MLV")),
                                 clip(QStringLiteral("3.MLV"))};
    CommandLine cli;
    QVERIFY(cli.run(QStringList{convert} + recordings));
    QCOMPARE(cli.status(), 1);
    QCOMPARE(cli.output(),
             (QStringList{movie(QStringLiteral("1.mov")), movie(QStringLiteral("3.mov"))}));
    const QStringList failures = cli.messages().filter(QStringLiteral("failed"));
    QCOMPARE(failures.size(), 1);
    QVERIFY2(failures.first().startsWith(QStringLiteral("2.MLV: failed: ")),
             qPrintable(failures.first()));
    QVERIFY(failures.first().size() > 20);
    QCOMPARE(Movie::probe(movie(QStringLiteral("3.mov"))).frames(), 3);
    QCOMPARE(cli.temporaryEntries(), QStringList());
}

void TestBatch::folderIsSearched()
{
    QVERIFY(QDir(m_folder->path()).mkpath(QStringLiteral("day/card")));
    clip(QStringLiteral("day/card/a.MLV"));
    clip(QStringLiteral("day/b.mlv"));
    CommandLine cli;
    QVERIFY(cli.run({convert, m_folder->path()}));
    QCOMPARE(cli.output(), (QStringList{movie(QStringLiteral("day/b.mov")),
                                        movie(QStringLiteral("day/card/a.mov"))}));
    QCOMPARE(cli.status(), 0);
}

void TestBatch::fileThatIsNoRecordingIsNamed()
{
    CommandLine cli;
    QVERIFY(cli.run({convert, bad(QStringLiteral("notes.txt")), clip(QStringLiteral("a.MLV"))}));
    QCOMPARE(cli.status(), 1);
    QVERIFY(
        cli.messages().contains(QStringLiteral("notes.txt: failed: its name doesn't end in .mlv")));
    QCOMPARE(cli.output(), QStringList{movie(QStringLiteral("a.mov"))});
}

void TestBatch::secondRecordingOfTheSameMovieIsRefused()
{
    CommandLine cli;
    QVERIFY(cli.run({convert, clip(QStringLiteral("a.MLV")), clip(QStringLiteral("a.mlv"))}));
    QCOMPARE(cli.status(), 1);
    QCOMPARE(cli.output(), QStringList{movie(QStringLiteral("a.mov"))});
    QCOMPARE(cli.messages().constLast(),
             QStringLiteral("a.mlv: failed: its movie would replace that of another recording, %1")
                 .arg(movie(QStringLiteral("a.mov"))));
}

void TestBatch::frameThatCannotBeConvertedFailsTheRecording()
{
    ToolFolder tools;
    tools.addTool(
        QStringLiteral("dcraw"),
        QStringLiteral("for f; do :; done; case $f in *1.dng) exit 1;; esac; exec %1 \"$@\"")
            .arg(realTool(QStringLiteral("dcraw"))));
    CommandLine cli;
    QVERIFY(cli.run({convert, clip(QStringLiteral("a.MLV"))}));
    QCOMPARE(cli.status(), 1);
    QCOMPARE(cli.messages().constLast(),
             QStringLiteral("a.MLV: failed: dcraw converted only 2 of 3 frames"));
    QVERIFY(!QFile::exists(movie(QStringLiteral("a.mov"))));
    QCOMPARE(cli.temporaryEntries(), QStringList());
}

void TestBatch::failingEncoderFailsTheRecording()
{
    ToolFolder tools;
    tools.addTool(
        QStringLiteral("ffmpeg"),
        QStringLiteral("for m; do :; done; echo half > \"$m\"; echo 'disk full'; exit 1"));
    CommandLine cli;
    QVERIFY(cli.run({convert, clip(QStringLiteral("a.MLV"))}));
    QCOMPARE(cli.status(), 1);
    QCOMPARE(cli.output(), QStringList());
    QCOMPARE(cli.messages().constLast(),
             QStringLiteral("a.MLV: failed: ffmpeg ended with status 1: disk full"));
    QVERIFY(!QFile::exists(movie(QStringLiteral("a.mov"))));
}

void TestBatch::progressIsOneLineAStage()
{
    CommandLine cli;
    QVERIFY(cli.run({convert, clip(QStringLiteral("a.MLV"))}));
    QCOMPARE(cli.messages(), (QStringList{QStringLiteral("a.MLV: reading"),
                                          QStringLiteral("a.MLV: extracting, 3 frames"),
                                          QStringLiteral("a.MLV: converting, 3 frames"),
                                          QStringLiteral("a.MLV: encoding, 3 frames"),
                                          QStringLiteral("a.mov: finished")}));
}

void TestBatch::progressForScriptsIsOneObjectALine()
{
    const QString good = clip(QStringLiteral("a.MLV"));
    const QString broken = bad(QStringLiteral("b.MLV"));
    CommandLine cli;
    QVERIFY(cli.run({convert, QStringLiteral("--progress"), QStringLiteral("json"),
                     QStringLiteral("--keep-temp"), good, broken}));
    QCOMPARE(cli.status(), 1);
    QStringList stages;
    const QStringList lines = cli.messages();
    for (const QString &line : lines) {
        const QJsonObject object = QJsonDocument::fromJson(line.toUtf8()).object();
        QVERIFY2(!object.isEmpty(), qPrintable(line));
        if (object.contains(QStringLiteral("message")))
            continue;
        const QString stage = object.value(QStringLiteral("stage")).toString();
        QCOMPARE(object.value(QStringLiteral("recording")).toString(),
                 stages.contains(QStringLiteral("finished")) ? broken : good);
        if (stage == QStringLiteral("converting"))
            QCOMPARE(object.value(QStringLiteral("frames")).toInt(), 3);
        if (stage == QStringLiteral("finished"))
            QCOMPARE(object.value(QStringLiteral("movie")).toString(), cli.output().value(0));
        if (stages.isEmpty() || stages.constLast() != stage)
            stages << stage;
    }
    QCOMPARE(stages, (QStringList{QStringLiteral("reading"), QStringLiteral("extracting"),
                                  QStringLiteral("converting"), QStringLiteral("encoding"),
                                  QStringLiteral("finished"), QStringLiteral("reading"),
                                  QStringLiteral("failed")}));
    QVERIFY(lines.filter(QStringLiteral("temporary files are kept in")).size() == 1);
}

void TestBatch::recordingThatIsCutOffIsTold()
{
    const QString recording = clip(QStringLiteral("a.MLV"));
    QVERIFY(QFile::resize(recording, QFileInfo(recording).size() - 1000));
    CommandLine cli;
    QVERIFY(cli.run({convert, QStringLiteral("--quiet"), recording}));
    QCOMPARE(cli.status(), 0);
    QCOMPARE(cli.messages().size(), 1);
    QVERIFY2(cli.messages().first().startsWith(
                 QStringLiteral("a.MLV: chunk 1 of the recording is cut off: ")),
             qPrintable(cli.messages().first()));
    QCOMPARE(Movie::probe(movie(QStringLiteral("a.mov"))).frames(), 2);
}

void TestBatch::quietRunTellsFailuresOnly()
{
    CommandLine cli;
    QVERIFY(cli.run({convert, QStringLiteral("--quiet"), clip(QStringLiteral("a.MLV")),
                     bad(QStringLiteral("notes.txt"))}));
    QCOMPARE(cli.messages(),
             QStringList{QStringLiteral("notes.txt: failed: its name doesn't end in .mlv")});
    QCOMPARE(cli.table(), QStringList());
}

void TestBatch::tableTellsWhatBecameOfEachRecording()
{
    CommandLine cli;
    QVERIFY(cli.run({convert, clip(QStringLiteral("a.MLV")), bad(QStringLiteral("notes.txt"))}));
    QStringList table = cli.table();
    table.replaceInStrings(QRegularExpression(QStringLiteral("\\d+\\.\\d")), QStringLiteral("T.T"));
    QCOMPARE(
        table,
        (QStringList{
            QStringLiteral("recording  result    frames  seconds  reason"),
            QStringLiteral("a.MLV      finished       3      T.T"),
            QStringLiteral("notes.txt  failed                T.T  its name doesn't end in .mlv")}));
}

void TestBatch::reportTellsWhatTheToolsSaid()
{
    ToolFolder tools;
    tools.addTool(
        QStringLiteral("dcraw"),
        QStringLiteral("for f; do :; done; case $f in *1.dng) echo \"broken: $f\"; exit 1;; "
                       "esac; exec %1 \"$@\"")
            .arg(realTool(QStringLiteral("dcraw"))));
    const QString recording = clip(QStringLiteral("a.MLV"));
    CommandLine cli;
    QVERIFY(cli.run(
        {convert, QStringLiteral("--report"), movie(QStringLiteral("report.json")), recording}));
    QCOMPARE(cli.status(), 1);
    QFile file(movie(QStringLiteral("report.json")));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QJsonObject report = QJsonDocument::fromJson(file.readAll()).object();
    QCOMPARE(report.value(QStringLiteral("status")).toInt(), 1);
    const QJsonObject entry =
        report.value(QStringLiteral("recordings")).toArray().first().toObject();
    QCOMPARE(entry.value(QStringLiteral("recording")).toString(), recording);
    QCOMPARE(entry.value(QStringLiteral("result")).toString(), QStringLiteral("failed"));
    QCOMPARE(entry.value(QStringLiteral("reason")).toString(),
             QStringLiteral("dcraw converted only 2 of 3 frames"));
    const QJsonObject said = entry.value(QStringLiteral("tools")).toObject();
    QCOMPARE(said.keys(), (QStringList{QStringLiteral("dcraw"), QStringLiteral("mlv_dump")}));
    const QString words = said.value(QStringLiteral("dcraw")).toArray().last().toString();
    QVERIFY2(words.startsWith(QStringLiteral("broken: ")) &&
                 words.endsWith(QStringLiteral("tmp000001.dng")),
             qPrintable(words));
    QCOMPARE(said.value(QStringLiteral("mlv_dump")).toArray().last().toString(),
             QStringLiteral("Done"));
}

void TestBatch::reportThatCannotBeWrittenIsSaidBeforeAnyWork()
{
    CommandLine cli;
    QVERIFY(cli.run({convert, QStringLiteral("--report"), QStringLiteral("/no/such/report.json"),
                     clip(QStringLiteral("a.MLV"))}));
    QCOMPARE(cli.status(), 2);
    QCOMPARE(cli.messages(),
             QStringList{QStringLiteral("filmwright-cli: the report /no/such/report.json can't be "
                                        "written: No such file or directory")});
    QVERIFY(!QFile::exists(movie(QStringLiteral("a.mov"))));
}

void TestBatch::keptTemporaryFilesAreNamed()
{
    CommandLine cli;
    QVERIFY(cli.run({convert, QStringLiteral("--keep-temp"), clip(QStringLiteral("a.MLV"))}));
    const QString message = cli.table().constLast();
    const QString label = QStringLiteral("filmwright-cli: temporary files are kept in ");
    QVERIFY2(message.startsWith(label), qPrintable(message));
    const QDir kept(message.mid(label.size()) + QStringLiteral("/a.MLV"));
    QCOMPARE(kept.entryList({QStringLiteral("*.dng"), QStringLiteral("*.tiff")}).size(), 6);
}

void TestBatch::nothingToConvert()
{
    CommandLine cli;
    QVERIFY(cli.run({convert, m_folder->path()}));
    QCOMPARE(cli.status(), 2);
    QCOMPARE(cli.messages(), QStringList{QStringLiteral("filmwright-cli: no recordings found")});
}

void TestBatch::strangeFileNames()
{
    const QStringList names{
        QStringLiteral("-dash"),        QStringLiteral("100%d %s"),
        QStringLiteral("a 'b' \"c\""),  QStringLiteral("$(touch x);`y`"),
        QStringLiteral("Done [ERROR]"), QStringLiteral("\u00e4\u00f6\u00fc \U0001F3AC")};
    QStringList recordings;
    QStringList movies;
    for (const QString &name : names) {
        recordings << clip(name + QStringLiteral(".MLV"));
        movies << movie(name + QStringLiteral(".mov"));
    }
    CommandLine cli;
    QVERIFY(cli.run(QStringList{convert} + recordings));
    QCOMPARE(cli.output(), movies);
    QCOMPARE(cli.status(), 0);
}

FILMWRIGHT_TEST(TestBatch, QCoreApplication)
#include "tst_batch.moc"
