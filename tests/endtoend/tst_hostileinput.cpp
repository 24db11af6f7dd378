// SPDX-License-Identifier: MIT
// Names and files that nobody would choose.

#include "commandline.h"
#include "sample.h"

#include "support/testprogram.h"

#include <QDir>
#include <QFile>
#include <QTest>

#include <sys/stat.h>

class TestHostileInput : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void strangeName_data();
    void strangeName();
    void nameThatIsNoTextFailsAlone();
    void pipeWithARecordingsNameIsNotWaitedFor();
    void recordingOfAnAveragesName();
    void linksInUnfinishedWorkAreNotFollowed();
    void closedStandardOutputCostsNoMovie();

private:
    QString path(const QString &name) const { return m_folder->filePath(name); }
    QString clip(const QString &name) const
    {
        [](const QString &target) {
            QVERIFY(writeSample(target, QStringLiteral("--size 128x72 --frames 2 --no-sound")));
        }(path(name));
        return path(name);
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void TestHostileInput::strangeName_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("newline") << QStringLiteral("two\nlines");
    QTest::newRow("line end and escape") << QStringLiteral("a\r\x1b[2J");
    QTest::newRow("quotes") << QStringLiteral("'\"`\"'");
    QTest::newRow("leading dash") << QStringLiteral("-y");
    QTest::newRow("percent") << QStringLiteral("%06d%n%s");
    QTest::newRow("backslash") << QStringLiteral("a\\b\\");
    QTest::newRow("protocol") << QStringLiteral("concat:a|b");
    QTest::newRow("glob") << QStringLiteral("*?[a-z]{1,2}");
    QTest::newRow("dots") << QStringLiteral("..");
    QTest::newRow("dot") << QStringLiteral(".");
    QTest::newRow("nothing but the extension") << QString();
    QTest::newRow("255 bytes") << QString(251, QLatin1Char('a'));
    QTest::newRow("255 bytes of UTF-8") << QString(125, QChar(0xe4)) + QLatin1Char('a');
}

void TestHostileInput::strangeName()
{
    QFETCH(QString, name);
    // In its own folder, so that the shell's and our idea of the name can't differ.
    const QString recording = clip(name + QStringLiteral(".MLV"));
    const QString movie = path(name + QStringLiteral(".mov"));
    CommandLine cli;
    for (const bool keepsWork : {false, true}) {
        const QStringList options =
            keepsWork ? QStringList{QStringLiteral("--temp-dir"), path(QStringLiteral("w"))}
                      : QStringList();
        QVERIFY(cli.run(QStringList{convert} + options + QStringList{m_folder->path()}));
        QCOMPARE(cli.output(), movie.split(QLatin1Char('\n')));
        QCOMPARE(cli.status(), 0);
        QCOMPARE(Movie::probe(movie).frames(), 2);
        QVERIFY(QFile::remove(movie));
        QCOMPARE(cli.temporaryEntries(), QStringList());
        // Nothing of the run is left beside the recording.
        QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files | QDir::Hidden).size(), 1);
    }
}

void TestHostileInput::nameThatIsNoTextFailsAlone()
{
    clip(QStringLiteral("b.MLV"));
    const QByteArray folder = QFile::encodeName(m_folder->path());
    const QByteArray odd = folder + "/a\xff.MLV";
    QCOMPARE(rename((folder + "/b.MLV").constData(), odd.constData()), 0);
    const QString good = clip(QStringLiteral("c.MLV"));
    CommandLine cli;
    QVERIFY(cli.run({convert, m_folder->path()}));
    QCOMPARE(cli.status(), 1);
    QCOMPARE(cli.output(), QStringList{path(QStringLiteral("c.mov"))});
    QCOMPARE(cli.messages().constFirst(),
             QStringLiteral("a\uFFFD.MLV: failed: its name is no UTF-8 text; rename it"));
    QCOMPARE(cli.table().size(), 3);
    QVERIFY(cli.run({convert, good, QStringLiteral("/nowhere/a\uFFFD.MLV")}));
    QCOMPARE(cli.status(), 2);
    QCOMPARE(remove(odd.constData()), 0); // Qt can't remove what it can't name
}

void TestHostileInput::pipeWithARecordingsNameIsNotWaitedFor()
{
    QCOMPARE(mkfifo(QFile::encodeName(path(QStringLiteral("a.MLV"))).constData(), S_IRWXU), 0);
    clip(QStringLiteral("b.MLV"));
    CommandLine cli;
    QVERIFY(cli.run({convert, m_folder->path()}));
    QCOMPARE(cli.status(), 1);
    QCOMPARE(cli.output(), QStringList{path(QStringLiteral("b.mov"))});
    const QStringList failures = cli.messages().filter(QStringLiteral("a.MLV: failed: "));
    QCOMPARE(failures.size(), 1);
}

void TestHostileInput::recordingOfAnAveragesName()
{
    clip(QStringLiteral("a.MLV"));
    const QString dark = clip(QStringLiteral("dark.mlv"));
    CommandLine cli;
    QVERIFY(cli.run({convert, QStringLiteral("--dark"), dark, m_folder->path()}));
    QCOMPARE(cli.status(), 1);
    QCOMPARE(cli.output(), QStringList{path(QStringLiteral("a.mov"))});
    QVERIFY(cli.messages().contains(
        QStringLiteral("dark.mlv: failed: an averaged calibration recording is kept under its "
                       "name; rename it")));
    QVERIFY(cli.run({convert, m_folder->path()}));
    QCOMPARE(cli.status(), 0);
}

void TestHostileInput::linksInUnfinishedWorkAreNotFollowed()
{
    const QString recording = clip(QStringLiteral("a.MLV"));
    const QString precious = path(QStringLiteral("precious"));
    QFile file(precious);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("a letter");
    file.close();
    const QString base = path(QStringLiteral("base"));
    const QString work = base + QStringLiteral("/FilmwrightTmp/a.MLV");
    QVERIFY(QDir().mkpath(work));
    QVERIFY(QFile::link(precious, work + QStringLiteral("/tmp000000.dng")));
    QVERIFY(QFile::link(precious, work + QStringLiteral("/tmp000000.tiff")));
    CommandLine cli;
    QVERIFY(cli.run({convert, QStringLiteral("--temp-dir"), base, recording}));
    QCOMPARE(cli.status(), 0);
    QCOMPARE(Movie::probe(path(QStringLiteral("a.mov"))).frames(), 2);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), QByteArray("a letter"));
}

void TestHostileInput::closedStandardOutputCostsNoMovie()
{
    clip(QStringLiteral("a.MLV"));
    clip(QStringLiteral("b.MLV"));
    CommandLine cli;
    const QString program = cli.program;
    cli.program = QStringLiteral("bash");
    QVERIFY(cli.run({QStringLiteral("-c"),
                     QStringLiteral("\"$0\" convert \"$1\" | true; exit ${PIPESTATUS[0]}"), program,
                     m_folder->path()}));
    QCOMPARE(cli.status(), 0);
    for (const char *movie : {"a.mov", "b.mov"})
        QCOMPARE(Movie::probe(path(QString::fromUtf8(movie))).frames(), 2);
}

FILMWRIGHT_TEST(TestHostileInput, QCoreApplication)
#include "tst_hostileinput.moc"
