// SPDX-License-Identifier: MIT
// What happens when the disk is full: small file systems of their own, mounted in memory where only
// the run sees them.

#include "commandline.h"
#include "sample.h"
#include "support/mounting.h"
#include "support/testprogram.h"
#include "support/toolfolder.h"

#include <QDir>
#include <QFile>
#include <QMap>
#include <QRegularExpression>
#include <QTest>

namespace {

const QString clipForDisk = QStringLiteral("--size 320x192 --frames 4 --no-sound");

const QStringList rawFrames{QStringLiteral("--recipe"), QStringLiteral("cinema-dng")};

/// Writes until nothing is free any more.
const QString fill = QStringLiteral("head -c 80M /dev/zero > %1/fill 2>/dev/null");

} // namespace

class TestSpace : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void recordingThatDoesNotFitIsRefused();
    void fullWhileFramesAreConverted_data();
    void fullWhileFramesAreConverted();
    void fullWhileFramesAreExtracted();
    void fullWhileTheMovieIsWritten_data();
    void fullWhileTheMovieIsWritten();
    void framesThatFlowFitWhereAllWouldNot();
    void movieOfARecipeThatDoesNotFitIsRefused();
    void movieWithoutRoomIsStoppedWhileItGrows();
    void fullWhileAFlowingMovieIsWritten();
    void fullWhileFlowingFramesAreConverted();
    void rawFramesThatDoNotFitAreRefused();
    void rawFramesNeedNoTemporarySpace();
    void fullWhileRawFramesAreWritten();

private:
    /// A copy of a sample that is written once for all tests.
    QString clip(const QString &name, const QString &options)
    {
        QString &sample = m_samples[options];
        if (sample.isEmpty()) {
            sample = m_sampleFolder.filePath(QStringLiteral("%1.MLV").arg(m_samples.size()));
            [&] { QVERIFY(writeSample(sample, options)); }();
        }
        const QString path = m_folder->filePath(name);
        [&] { QVERIFY(QFile::copy(sample, path)); }();
        return path;
    }
    QString movie(const QString &name) const { return m_folder->filePath(name); }

    /// Runs filmwright-cli with a file system of 50 MiB in the folder (by default in the temporary
    /// one), into which the recording is copied, if any. Lists afterwards what is left there.
    bool run(CommandLine &cli, const QStringList &arguments, const QString &folder = {},
             const QString &recording = {})
    {
        const QString script =
            QStringLiteral("folder=${1:-$TMPDIR}; mount -t tmpfs -o size=50m,mode=0700 tmpfs "
                           "\"$folder\" || exit 99; "
                           "test -z \"$2\" || cp \"$2\" \"$folder\"; shift 2; \"$@\"; status=$?; "
                           "ls -A \"$folder\"; exit $status");
        const QString program = cli.program;
        const QStringList prefix = Mounting::here().prefix;
        cli.program = prefix.first();
        const bool ended = cli.run(prefix.mid(1) +
                                   QStringList{QStringLiteral("sh"), QStringLiteral("-c"), script,
                                               QStringLiteral("sh"), folder, recording, program,
                                               QStringLiteral("convert")} +
                                   arguments);
        [&cli] { QVERIFY2(cli.status() != 99, "no file system can be mounted here"); }();
        return ended;
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    QTemporaryDir m_sampleFolder;
    QMap<QString, QString> m_samples; ///< by their options
};

void TestSpace::init()
{
    if (Mounting::here().prefix.isEmpty())
        QSKIP(qPrintable(Mounting::here().skipReason));
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(QDir(m_folder->path()).mkdir(QStringLiteral("small")));
}

void TestSpace::recordingThatDoesNotFitIsRefused()
{
    const QStringList recordings{
        clip(QStringLiteral("a.MLV"), QStringLiteral("--size 1920x1080 --frames 6 --no-sound")),
        clip(QStringLiteral("b.MLV"), clipForDisk)};
    CommandLine cli;
    QVERIFY(run(cli, recordings));
    QCOMPARE(cli.status(), 1);
    QCOMPARE(cli.output(), QStringList{movie(QStringLiteral("b.mov"))});
    const QStringList messages = cli.messages();
    QCOMPARE(messages.at(0), QStringLiteral("a.MLV: reading"));
    const QString start = QStringLiteral("a.MLV: failed: its frames need 59.20 MB, but only 52.4");
    const QString middle = QStringLiteral(" MB are free in the temporary folder ");
    const QString end = QStringLiteral("; make room there or choose another temporary folder");
    QVERIFY2(messages.at(1).startsWith(start), qPrintable(messages.at(1)));
    QVERIFY2(messages.at(1).contains(middle), qPrintable(messages.at(1)));
    QVERIFY2(messages.at(1).endsWith(end), qPrintable(messages.at(1)));
    QVERIFY(!QFile::exists(movie(QStringLiteral("a.mov"))));
    QCOMPARE(Movie::probe(movie(QStringLiteral("b.mov"))).frames(), 4);
}

void TestSpace::fullWhileFramesAreConverted_data()
{
    QTest::addColumn<QString>("jobs");
    QTest::newRow("one job") << "1";
    QTest::newRow("three jobs") << "3";
}

void TestSpace::fullWhileFramesAreConverted()
{
    QFETCH(QString, jobs);
    ToolFolder tools;
    tools.addTool(
        QStringLiteral("dcraw"),
        QStringLiteral("for f; do :; done; case $f in */a.MLV/*1.dng) %1;; esac; exec %2 "
                       "\"$@\"")
            .arg(fill.arg(QStringLiteral("\"${f%/*}\"")), realTool(QStringLiteral("dcraw"))));
    CommandLine cli;
    QVERIFY(run(cli, {QStringLiteral("--jobs"), jobs, clip(QStringLiteral("a.MLV"), clipForDisk),
                      clip(QStringLiteral("b.MLV"), clipForDisk)}));
    QCOMPARE(cli.status(), 1);
    QCOMPARE(cli.output(), QStringList{movie(QStringLiteral("b.mov"))});
    const QStringList failures = cli.messages().filter(QStringLiteral("failed: "));
    QCOMPARE(failures.size(), 1);
    QVERIFY2(failures.first().startsWith(
                 QStringLiteral("a.MLV: failed: no space left in the temporary folder ")),
             qPrintable(failures.first()));
    QVERIFY2(failures.first().endsWith(QStringLiteral(": dcraw could not write a frame")),
             qPrintable(failures.first()));
    QVERIFY(!QFile::exists(movie(QStringLiteral("a.mov"))));
    QCOMPARE(Movie::probe(movie(QStringLiteral("b.mov"))).frames(), 4);
}

void TestSpace::fullWhileFramesAreExtracted()
{
    ToolFolder tools;
    tools.addTool(
        QStringLiteral("mlv_dump"),
        QStringLiteral("for f; do :; done; case $*$f in *--dng*/a.MLV/tmp) %1;; esac; "
                       "exec %2 \"$@\"")
            .arg(fill.arg(QStringLiteral("\"${f%/*}\"")), realTool(QStringLiteral("mlv_dump"))));
    CommandLine cli;
    QVERIFY(run(cli, {clip(QStringLiteral("a.MLV"), clipForDisk),
                      clip(QStringLiteral("b.MLV"), clipForDisk)}));
    QCOMPARE(cli.status(), 1);
    QCOMPARE(cli.output(), QStringList{movie(QStringLiteral("b.mov"))});
    const QStringList failures = cli.messages().filter(QStringLiteral("failed: "));
    QCOMPARE(failures.size(), 1);
    QVERIFY2(failures.first().startsWith(
                 QStringLiteral("a.MLV: failed: no space left in the temporary folder ")),
             qPrintable(failures.first()));
}

void TestSpace::fullWhileTheMovieIsWritten_data()
{
    QTest::addColumn<QString>("format");
    QTest::addColumn<int>("room"); // kilobytes that are left to the movie
    for (const int room : {0, 4, 16}) {
        QTest::addRow("mov, %d kB left", room) << "mov" << room;
        QTest::addRow("avi, %d kB left", room) << "avi" << room;
    }
}

/// ffmpeg's status is 0 when only the end of a movie could not be written.
void TestSpace::fullWhileTheMovieIsWritten()
{
    QFETCH(QString, format);
    QFETCH(int, room);
    ToolFolder tools;
    const QString folder = m_folder->filePath(QStringLiteral("small"));
    tools.addTool(QStringLiteral("ffmpeg"),
                  QStringLiteral("%1; truncate -s -%2K %3/fill; exec %4 \"$@\"")
                      .arg(fill.arg(folder))
                      .arg(room)
                      .arg(folder, realTool(QStringLiteral("ffmpeg"))));
    CommandLine cli;
    QVERIFY(run(cli, {QStringLiteral("--format"), format, folder + QStringLiteral("/a.MLV")},
                folder, clip(QStringLiteral("a.MLV"), clipForDisk)));
    QCOMPARE(cli.status(), 1);
    QCOMPARE(cli.output(), (QStringList{QStringLiteral("a.MLV"), QStringLiteral("fill")}));
    const QString start =
        QStringLiteral("a.MLV: failed: no space left in the movie's folder %1: ").arg(folder);
    const QStringList failures = cli.messages().filter(QStringLiteral("failed: "));
    QCOMPARE(failures.size(), 1);
    QVERIFY2(failures.first().startsWith(start), qPrintable(failures.first()));
}

/// Six frames of 12 megabytes on a disk of 50.
void TestSpace::framesThatFlowFitWhereAllWouldNot()
{
    const QString recording =
        clip(QStringLiteral("a.MLV"), QStringLiteral("--size 1920x1080 --frames 6 --no-sound"));
    CommandLine cli;
    QVERIFY(run(cli, {QStringLiteral("--recipe"), QStringLiteral("prores-lt"), recording}));
    QCOMPARE(cli.status(), 0);
    QCOMPARE(cli.output(), QStringList{movie(QStringLiteral("a.mov"))});
    QCOMPARE(Movie::probe(movie(QStringLiteral("a.mov"))).frames(), 6);
}

void TestSpace::movieOfARecipeThatDoesNotFitIsRefused()
{
    const QString folder = m_folder->filePath(QStringLiteral("small"));
    const QString recording =
        clip(QStringLiteral("a.MLV"), QStringLiteral("--size 1920x1080 --frames 20 --no-sound"));
    CommandLine cli;
    QVERIFY(run(cli,
                {QStringLiteral("--recipe"), QStringLiteral("ffv1"), QStringLiteral("--output"),
                 folder, recording},
                folder));
    QCOMPARE(cli.status(), 1);
    QCOMPARE(cli.output(), QStringList());
    QCOMPARE(cli.messages().constLast(),
             QStringLiteral("a.MLV: failed: its movie needs about 82.94 MB, but only 52.43 MB are "
                            "free in %1")
                 .arg(folder));
}

/// Its size isn't known beforehand. It gets two fifths of its frames and then no more: so many have
/// room, and it is for what is still to come that the run has to end.
void TestSpace::movieWithoutRoomIsStoppedWhileItGrows()
{
    constexpr int bytesOfFrame = 320 * 192 * 3;
    QFile recipe(m_folder->filePath(QStringLiteral("proxy.recipe")));
    QVERIFY(recipe.open(QIODevice::WriteOnly));
    recipe.write("[Recipe]\nExtension=mov\nVideo=-c:v prores_ks -profile:v proxy\n");
    recipe.close();
    const QString folder = m_folder->filePath(QStringLiteral("small"));
    ToolFolder tools;
    tools.addTool(QStringLiteral("ffmpeg"),
                  QStringLiteral("case $* in *pipe:0*) %1; truncate -s -1300K %2/fill; "
                                 "{ head -c $((60 * %4)); for n in $(seq 60); do head -c %4; "
                                 "sleep 0.1; done; exec sleep 600; } | exec %3 \"$@\";; esac; "
                                 "exec %3 \"$@\"")
                      .arg(fill.arg(folder), folder, realTool(QStringLiteral("ffmpeg")))
                      .arg(bytesOfFrame));
    CommandLine cli;
    QVERIFY(run(
        cli,
        {QStringLiteral("--recipe"), recipe.fileName(), QStringLiteral("--buffer"),
         QStringLiteral("10000000"), QStringLiteral("--output"), folder,
         clip(QStringLiteral("a.MLV"), QStringLiteral("--size 320x192 --frames 300 --no-sound"))},
        folder));
    QCOMPARE(cli.status(), 1);
    QCOMPARE(cli.output(), QStringList{QStringLiteral("fill")});
    static const QRegularExpression reason(
        QStringLiteral("^a.MLV: failed: the rest of its movie needs about ([\\d.]+) MB, but only "
                       "([\\d.]+) KB are free in %1$")
            .arg(folder));
    const QRegularExpressionMatch said = reason.match(cli.messages().constLast());
    QVERIFY2(said.hasMatch(), qPrintable(cli.messages().constLast()));
}

void TestSpace::fullWhileAFlowingMovieIsWritten()
{
    ToolFolder tools;
    const QString folder = m_folder->filePath(QStringLiteral("small"));
    tools.addTool(QStringLiteral("ffmpeg"),
                  QStringLiteral("case $* in *pipe:0*) %1; truncate -s -16K %2/fill;; esac; "
                                 "exec %3 \"$@\"")
                      .arg(fill.arg(folder), folder, realTool(QStringLiteral("ffmpeg"))));
    CommandLine cli;
    QVERIFY(
        run(cli,
            {QStringLiteral("--recipe"), QStringLiteral("ffv1"), folder + QStringLiteral("/a.MLV")},
            folder, clip(QStringLiteral("a.MLV"), clipForDisk)));
    QCOMPARE(cli.status(), 1);
    QCOMPARE(cli.output(), (QStringList{QStringLiteral("a.MLV"), QStringLiteral("fill")}));
    QVERIFY2(
        cli.messages().constLast().startsWith(
            QStringLiteral("a.MLV: failed: no space left in the movie's folder %1: ").arg(folder)),
        qPrintable(cli.messages().constLast()));
}

void TestSpace::fullWhileFlowingFramesAreConverted()
{
    ToolFolder tools;
    tools.addTool(
        QStringLiteral("dcraw"),
        QStringLiteral("for f; do :; done; case $f in *1.dng) %1;; esac; exec %2 \"$@\"")
            .arg(fill.arg(QStringLiteral("\"${f%/*}\"")), realTool(QStringLiteral("dcraw"))));
    CommandLine cli;
    QVERIFY(run(cli, {QStringLiteral("--recipe"), QStringLiteral("ffv1"),
                      clip(QStringLiteral("a.MLV"), clipForDisk)}));
    QCOMPARE(cli.status(), 1);
    QVERIFY2(cli.messages().constLast().startsWith(
                 QStringLiteral("a.MLV: failed: no space left in the temporary folder ")),
             qPrintable(cli.messages().constLast()));
    QVERIFY(!QFile::exists(movie(QStringLiteral("a.avi"))));
}

void TestSpace::rawFramesThatDoNotFitAreRefused()
{
    const QString folder = m_folder->filePath(QStringLiteral("small"));
    const QString recording =
        clip(QStringLiteral("a.MLV"), QStringLiteral("--size 1920x1080 --frames 20 --no-sound"));
    CommandLine cli;
    QVERIFY(
        run(cli, rawFrames + QStringList{QStringLiteral("--output"), folder, recording}, folder));
    QCOMPARE(cli.status(), 1);
    QCOMPARE(cli.output(), QStringList());
    QCOMPARE(
        cli.messages().constLast(),
        QStringLiteral("a.MLV: failed: its frames need 72.74 MB, but only 52.43 MB are free in "
                       "the folder %1; make room there or choose another folder for the "
                       "movies")
            .arg(folder));
}

void TestSpace::rawFramesNeedNoTemporarySpace()
{
    const QString recording =
        clip(QStringLiteral("a.MLV"), QStringLiteral("--size 1920x1080 --frames 20 --no-sound"));
    CommandLine cli;
    QVERIFY(run(cli, rawFrames + QStringList{recording}));
    QCOMPARE(cli.status(), 0);
    QCOMPARE(cli.output(), QStringList{movie(QStringLiteral("a"))});
    QCOMPARE(QDir(movie(QStringLiteral("a"))).entryList(QDir::Files).size(), 20);
}

void TestSpace::fullWhileRawFramesAreWritten()
{
    const QString folder = m_folder->filePath(QStringLiteral("small"));
    ToolFolder tools;
    tools.addTool(QStringLiteral("mlv_dump"),
                  QStringLiteral("case $* in *--dng*) %1; truncate -s -400K %2/fill;; esac; "
                                 "exec %3 \"$@\"")
                      .arg(fill.arg(folder), folder, realTool(QStringLiteral("mlv_dump"))));
    CommandLine cli;
    QVERIFY(run(cli, rawFrames + QStringList{folder + QStringLiteral("/a.MLV")}, folder,
                clip(QStringLiteral("a.MLV"), clipForDisk)));
    QCOMPARE(cli.status(), 1);
    QCOMPARE(cli.output(), (QStringList{QStringLiteral("a.MLV"), QStringLiteral("fill")}));
    const QString start =
        QStringLiteral("a.MLV: failed: no space left in the movie's folder %1: ").arg(folder);
    QVERIFY2(cli.messages().constLast().startsWith(start), qPrintable(cli.messages().constLast()));
}

FILMWRIGHT_TEST(TestSpace, QCoreApplication)
#include "tst_space.moc"
