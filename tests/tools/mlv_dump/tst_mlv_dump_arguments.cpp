// SPDX-License-Identifier: MIT
#include "recordingbuilder.h"
#include "toolrun.h"

#include "support/fulldisk.h"
#include "support/testprogram.h"

#include <QDir>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

/// How runs end, whatever the arguments and the input.
class TestMlvDumpArguments : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void failedRunsEndAsTheirKindDoes_data();
    void failedRunsEndAsTheirKindDoes();
    void pathsThatContainTheMarksChangeNothing();
    void fullDiskIsAnError();
    void missingFolderIsAnError();
    void versionAndHelp();
    void recordingWithoutOptionsIsJustRead();

private:
    QString out(const char *name) const { return m_folder->filePath(QLatin1String(name)); }
    static ProgramRun dump(const QStringList &arguments)
    {
        return runBuilt(QStringLiteral("mlv_dump"), arguments);
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void TestMlvDumpArguments::failedRunsEndAsTheirKindDoes_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("mark");
    QTest::addColumn<bool>("printsLastLines");
    const QString none = QStringLiteral("/nowhere/a.MLV");
    const QString error = QStringLiteral("[ERROR] ");
    const QString unusable = QStringLiteral("[UNUSABLE] ");
    const auto row = [](const char *name, const QStringList &arguments, int status,
                        const QString &mark, bool lines) {
        QTest::newRow(name) << arguments << status << mark << lines;
    };
    row("no arguments", {}, 2, error, true);
    row("unknown option", {QStringLiteral("--fast"), none}, 2, error, true);
    row("unknown option of a frame run", {QStringLiteral("--dng"), QStringLiteral("-x")}, 2, error,
        false);
    row("report of a missing file", {QStringLiteral("-m"), QStringLiteral("-v"), none}, 1, unusable,
        true);
    row("average of a missing file",
        {QStringLiteral("-a"), none, QStringLiteral("-o"), QStringLiteral("b.mlv")}, 1, error,
        true);
    row("subtraction from a missing file",
        {QStringLiteral("-s"), none, QStringLiteral("-o"), QStringLiteral("b.mlv"), none}, 1, error,
        true);
    row("frames of a missing file",
        {QStringLiteral("--dng"), none, QStringLiteral("-o"), QStringLiteral("tmp")}, 1, unusable,
        false);
    row("frames with a missing dark",
        {QStringLiteral("--dng"), testData(QStringLiteral("recordings/plain14.MLV")),
         QStringLiteral("-s"), none, QStringLiteral("-o"), QStringLiteral("tmp")},
        1, error, false);
    row("report of a folder", {QStringLiteral("-m"), QStringLiteral("-v"), QStringLiteral("/")}, 1,
        unusable, true);
    row("report of another kind of file",
        {QStringLiteral("-m"), QStringLiteral("-v"),
         testData(QStringLiteral("recordings/README.md"))},
        1, unusable, true);
    row("frames of a chunk alone",
        {QStringLiteral("--dng"), testData(QStringLiteral("recordings/split.M00")),
         QStringLiteral("-o"), QStringLiteral("tmp")},
        1, unusable, false);
}

void TestMlvDumpArguments::failedRunsEndAsTheirKindDoes()
{
    QFETCH(QStringList, arguments);
    QFETCH(int, status);
    QFETCH(QString, mark);
    QFETCH(bool, printsLastLines);
    const auto run = dump(arguments);
    QCOMPARE(run.status, status);
    const QStringList marked =
        run.lines.filter(QRegularExpression(QStringLiteral("\\[(ERROR|UNUSABLE)\\]")));
    QCOMPARE(marked.size(), 1);
    QVERIFY(marked.first().startsWith(mark));
    QVERIFY(!run.hasLineWith(QStringLiteral("/nowhere")));
    if (printsLastLines) {
        QCOMPARE(run.lastTwoLines(),
                 (QStringList{QStringLiteral("Processed 0 video frames at 0.00 FPS (0.00 s)"),
                              QStringLiteral("Done")}));
    } else {
        QVERIFY(!run.hasLineWith(QStringLiteral("Processed")));
        QVERIFY(!run.hasLineWith(QStringLiteral("Done")));
    }
}

void TestMlvDumpArguments::pathsThatContainTheMarksChangeNothing()
{
    QVERIFY(QDir(m_folder->path()).mkdir(QStringLiteral("Done [ERROR][UNUSABLE] %s\n")));
    const QDir folder(out("Done [ERROR][UNUSABLE] %s\n"));
    const auto path = RecordingBuilder().addRawInfo().addFrame(0, 3000).write(
        folder.filePath(QStringLiteral("Done [ERROR][UNUSABLE].MLV")));
    const QList<QStringList> runs{{QStringLiteral("-m"), QStringLiteral("-v"), path},
                                  {QStringLiteral("-a"), path, QStringLiteral("-o"),
                                   folder.filePath(QStringLiteral("Done.mlv"))},
                                  {QStringLiteral("--dng"), path, QStringLiteral("-o"),
                                   folder.filePath(QStringLiteral("Done [ERROR][UNUSABLE]"))}};
    for (const auto &arguments : runs) {
        const auto run = dump(arguments);
        QCOMPARE(run.status, 0);
        QVERIFY(!run.hasLineWith(QStringLiteral("[ERROR]")));
        QVERIFY(!run.hasLineWith(QStringLiteral("[UNUSABLE]")));
        QCOMPARE(run.lines.filter(QStringLiteral("Done")), QStringList{QStringLiteral("Done")});
    }
    QVERIFY(folder.exists(QStringLiteral("Done [ERROR][UNUSABLE]000000.dng")));
}

void TestMlvDumpArguments::fullDiskIsAnError()
{
    const auto path = RecordingBuilder().addRawInfo().addFrame(0, 3000).write(out("a.MLV"));
    const FullDisk disk(1000);
    const auto run = dump({QStringLiteral("--dng"), path, QStringLiteral("-o"), out("tmp")});
    QCOMPARE(run.status, 1);
    QVERIFY(run.hasLineWith(QStringLiteral("[ERROR] A file can't be written: File too large")));
    QVERIFY(!run.hasLineWith(QStringLiteral("Done")));
}

void TestMlvDumpArguments::missingFolderIsAnError()
{
    const auto path = RecordingBuilder().addRawInfo().addFrame(0, 3000).write(out("a.MLV"));
    const auto run =
        dump({QStringLiteral("--dng"), path, QStringLiteral("-o"), out("missing/tmp")});
    QCOMPARE(run.status, 1);
    QVERIFY(run.hasLineWith(QStringLiteral("[ERROR] A file can't be written")));
    const auto averaged =
        dump({QStringLiteral("-a"), path, QStringLiteral("-o"), out("missing/b.mlv")});
    QCOMPARE(averaged.status, 1);
    QCOMPARE(averaged.lastTwoLines(),
             (QStringList{QStringLiteral("Processed 0 video frames at 25.00 FPS (0.00 s)"),
                          QStringLiteral("Done")}));
}

void TestMlvDumpArguments::versionAndHelp()
{
    const auto version = dump({QStringLiteral("--version")});
    QCOMPARE(version.status, 0);
    QCOMPARE(version.lines.size(), 1);
    QVERIFY(version.lines[0].startsWith(QStringLiteral("mlv_dump (Filmwright) ")));
    const auto help = dump({QStringLiteral("--help")});
    QCOMPARE(help.status, 0);
    for (const char *option : {"-m", "-v", "--dng", "--no-cs", "-f", "-a", "-s", "-t", "-o"})
        QVERIFY(help.hasLineWith(QLatin1String(option) + QLatin1Char(' ')));
}

void TestMlvDumpArguments::recordingWithoutOptionsIsJustRead()
{
    const auto run = dump({testData(QStringLiteral("recordings/plain14.MLV"))});
    QCOMPARE(run.status, 0);
    QCOMPARE(run.lines,
             (QStringList{QStringLiteral("Processed 4 video frames at 25.00 FPS (0.16 s)"),
                          QStringLiteral("Done")}));
}

FILMWRIGHT_TEST(TestMlvDumpArguments, QCoreApplication)
#include "tst_mlv_dump_arguments.moc"
