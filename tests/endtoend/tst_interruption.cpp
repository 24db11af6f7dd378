// SPDX-License-Identifier: MIT
// What a run leaves behind when it is interrupted or killed, and how the next one goes on.

#include "commandline.h"
#include "sample.h"
#include "support/processes.h"
#include "support/testprogram.h"
#include "support/toolfolder.h"

#include <QDir>
#include <QFile>
#include <QTest>

#include <csignal>

namespace {

constexpr int framesOfClip = 5;

/// The tool notes its process id and never ends; `before` is what it does first.
QString hanging(const QString &before = {})
{
    return QStringLiteral("for last; do :; done; %1 echo $$ > \"$0.pid\"; exec sleep 1000")
        .arg(before);
}

/// The tool works like the real one except in the case of this shell pattern of its last argument.
QString hangingAt(const QString &name, const QString &pattern, const QString &before)
{
    return QStringLiteral("for last; do :; done; case $last in %1) %2;; esac; exec %3 \"$@\"")
        .arg(pattern, hanging(before), realTool(name));
}

const QString dcraw = QStringLiteral("dcraw");
const QString ffmpeg = QStringLiteral("ffmpeg");

} // namespace

class TestInterruption : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup() { m_tools.reset(); }

    void interruptionDuringEachStage_data();
    void interruptionDuringEachStage();
    void interruptionEndsTheToolsOfAllJobs();
    void everyEndingSignalInterrupts_data();
    void everyEndingSignalInterrupts();
    void interruptedConversionGoesOnWhereItStopped();
    void interruptedEncodingConvertsNothingAgain();
    void killedConversionGoesOnWhereItStopped();
    void killedRunTakesItsToolsAlong();
    void leftoversOfAKilledRunAreRemovedByTheNext();
    void movieOfAKilledRunIsRemovedByTheNext();
    void unfinishedWorkOfANamesakeIsNotUsed();

private:
    bool waitForTool(const QString &name)
    {
        return QTest::qWaitFor([&] { return toolId(name) > 0; }, 60000);
    }
    qint64 toolId(const QString &name) const
    {
        QFile file(m_tools->path() + QLatin1Char('/') + name + QStringLiteral(".pid"));
        return file.open(QIODevice::ReadOnly) ? file.readAll().trimmed().toLongLong() : 0;
    }
    qsizetype conversions() const { return m_tools->calls(dcraw).size(); }
    qsizetype extractions() const
    {
        return std::ranges::count_if(m_tools->calls(mlvDump), [](const QStringList &arguments) {
            return arguments.first() == QLatin1String("--dng");
        });
    }
    QStringList convertIn(const QString &base) const
    {
        return {QStringLiteral("convert"), QStringLiteral("--temp-dir"), base, m_clip};
    }
    void passThrough(const QString &name)
    {
        m_tools->addTool(name, QStringLiteral("exec %1 \"$@\"").arg(realTool(name)));
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<ToolFolder> m_tools;
    QString m_clip;
    QString m_movie;
};

void TestInterruption::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_tools = std::make_unique<ToolFolder>();
    m_clip = m_folder->filePath(QStringLiteral("clip.MLV"));
    m_movie = m_folder->filePath(QStringLiteral("clip.mov"));
    QVERIFY(writeSample(m_clip, QStringLiteral("--size 128x72 --frames %1").arg(framesOfClip)));
    for (const QString &tool : {mlvDump, dcraw, ffmpeg})
        passThrough(tool);
}

void TestInterruption::interruptionDuringEachStage_data()
{
    QTest::addColumn<QString>("tool");
    QTest::addColumn<QString>("script");
    QTest::addColumn<QStringList>("options");
    QTest::newRow("averaging") << mlvDump << hangingAt(mlvDump, QStringLiteral("*/dark.mlv"), {})
                               << QStringList{QStringLiteral("--dark"), QStringLiteral("CLIP")};
    QTest::newRow("reading") << mlvDump << hanging() << QStringList();
    QTest::newRow("extracting") << mlvDump
                                << hangingAt(mlvDump, QStringLiteral("*/tmp"),
                                             QStringLiteral("echo half > \"${last}000000.dng\";"))
                                << QStringList();
    QTest::newRow("converting") << dcraw
                                << hangingAt(dcraw, QStringLiteral("*2.dng"),
                                             QStringLiteral("echo half > \"${last%.dng}.tiff\";"))
                                << QStringList();
    QTest::newRow("encoding") << ffmpeg << hanging(QStringLiteral("echo half > \"$last\";"))
                              << QStringList();
}

void TestInterruption::interruptionDuringEachStage()
{
    QFETCH(QString, tool);
    QFETCH(QString, script);
    QFETCH(QStringList, options);
    options.replaceInStrings(QStringLiteral("CLIP"), m_clip);
    m_tools->addTool(tool, script);
    CommandLine cli;
    cli.start(QStringList{QStringLiteral("convert")} + options + QStringList{m_clip});
    QVERIFY(waitForTool(tool));
    QVERIFY(processRuns(toolId(tool)));
    cli.sendSignal(SIGINT);
    QVERIFY(cli.waitForEnd());
    QVERIFY(!cli.wasKilled());
    QCOMPARE(cli.status(), 130);
    QVERIFY(!processRuns(toolId(tool)));
    QCOMPARE(cli.output(), QStringList());
    QCOMPARE(cli.messages().constLast(), QStringLiteral("interrupted"));
    QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files),
             QStringList{QStringLiteral("clip.MLV")});
    QCOMPARE(cli.temporaryEntries(), QStringList());
}

void TestInterruption::interruptionEndsTheToolsOfAllJobs()
{
    m_tools->addTool(dcraw, QStringLiteral("while :; do sleep 1000; done"));
    const auto running = [this] { return processesWith(m_tools->path()).size(); };
    CommandLine cli;
    cli.start({QStringLiteral("convert"), QStringLiteral("--jobs"), QStringLiteral("8"), m_clip});
    // A shell that is about to become its sleep counts twice.
    QTRY_VERIFY_WITH_TIMEOUT(running() >= framesOfClip, 60000);
    cli.sendSignal(SIGINT);
    QVERIFY(cli.waitForEnd());
    QCOMPARE(cli.status(), 130);
    QCOMPARE(running(), 0);
    QCOMPARE(cli.temporaryEntries(), QStringList());
}

void TestInterruption::everyEndingSignalInterrupts_data()
{
    QTest::addColumn<int>("signal");
    QTest::newRow("interrupt") << SIGINT;
    QTest::newRow("terminate") << SIGTERM;
    QTest::newRow("hang-up") << SIGHUP;
}

void TestInterruption::everyEndingSignalInterrupts()
{
    QFETCH(int, signal);
    m_tools->addTool(ffmpeg, hanging());
    CommandLine cli;
    cli.start({QStringLiteral("convert"), m_clip});
    QVERIFY(waitForTool(ffmpeg));
    cli.sendSignal(signal);
    QVERIFY(cli.waitForEnd());
    QCOMPARE(cli.status(), 130);
    QVERIFY(!cli.wasKilled());
    QCOMPARE(cli.temporaryEntries(), QStringList());
}

void TestInterruption::interruptedConversionGoesOnWhereItStopped()
{
    const QString base = m_folder->filePath(QStringLiteral("work"));
    m_tools->addTool(dcraw, hangingAt(dcraw, QStringLiteral("*2.dng"),
                                      QStringLiteral("echo half > \"${last%.dng}.tiff\";")));
    CommandLine cli;
    cli.start(convertIn(base));
    QVERIFY(waitForTool(dcraw));
    cli.sendSignal(SIGINT);
    QVERIFY(cli.waitForEnd());
    QCOMPARE(cli.status(), 130);
    QCOMPARE(conversions(), 3);
    QCOMPARE(extractions(), 1);

    passThrough(dcraw);
    QVERIFY(cli.run(convertIn(base)));
    QCOMPARE(cli.output(), QStringList{m_movie});
    QCOMPARE(conversions(), 3 + 3); // the frame that was interrupted and the two behind it
    QCOMPARE(extractions(), 1);
    QCOMPARE(Movie::probe(m_movie).frames(), framesOfClip);
    QCOMPARE(Movie::probe(m_movie).sound.size(), 1);
    QCOMPARE(QDir(base).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
             QStringList());
}

void TestInterruption::interruptedEncodingConvertsNothingAgain()
{
    const QString base = m_folder->filePath(QStringLiteral("work"));
    m_tools->addTool(ffmpeg, hanging(QStringLiteral("echo half > \"$last\";")));
    CommandLine cli;
    cli.start(convertIn(base));
    QVERIFY(waitForTool(ffmpeg));
    cli.sendSignal(SIGINT);
    QVERIFY(cli.waitForEnd());
    QCOMPARE(conversions(), framesOfClip);

    passThrough(ffmpeg);
    QVERIFY(cli.run(convertIn(base)));
    QCOMPARE(cli.status(), 0);
    QCOMPARE(conversions(), framesOfClip);
    QCOMPARE(extractions(), 1);
    QCOMPARE(Movie::probe(m_movie).frames(), framesOfClip);
}

void TestInterruption::killedConversionGoesOnWhereItStopped()
{
    const QString base = m_folder->filePath(QStringLiteral("work"));
    // The frame is left half written: the beginning of what the converter would have written.
    m_tools->addTool(
        dcraw, hangingAt(dcraw, QStringLiteral("*2.dng"),
                         QStringLiteral("%1 \"$@\"; t=\"${last%.dng}.tiff\"; "
                                        "head -c 5000 \"$t\" > \"$t.half\"; mv \"$t.half\" \"$t\";")
                             .arg(realTool(dcraw))));
    CommandLine cli;
    cli.start(convertIn(base));
    QVERIFY(waitForTool(dcraw));
    cli.sendSignal(SIGKILL);
    QVERIFY(cli.waitForEnd());
    QVERIFY(cli.wasKilled());
    QTRY_VERIFY(!processRuns(toolId(dcraw)));
    QCOMPARE(conversions(), 3);

    passThrough(dcraw);
    QVERIFY(cli.run(convertIn(base)));
    QCOMPARE(cli.output(), QStringList{m_movie});
    QCOMPARE(conversions(), 3 + 3);
    QCOMPARE(extractions(), 1);
    QCOMPARE(Movie::probe(m_movie).frames(), framesOfClip);
}

void TestInterruption::killedRunTakesItsToolsAlong()
{
    m_tools->addTool(ffmpeg, hanging());
    CommandLine cli;
    cli.start({QStringLiteral("convert"), m_clip});
    QVERIFY(waitForTool(ffmpeg));
    cli.sendSignal(SIGKILL);
    QVERIFY(cli.waitForEnd());
    QTRY_VERIFY(!processRuns(toolId(ffmpeg)));
}

void TestInterruption::leftoversOfAKilledRunAreRemovedByTheNext()
{
    m_tools->addTool(ffmpeg, hanging());
    CommandLine cli;
    cli.start({QStringLiteral("convert"), m_clip});
    QVERIFY(waitForTool(ffmpeg));
    cli.sendSignal(SIGKILL);
    QVERIFY(cli.waitForEnd());
    QVERIFY(!cli.temporaryEntries().isEmpty());

    passThrough(ffmpeg);
    QVERIFY(cli.run({QStringLiteral("convert"), m_clip}));
    QCOMPARE(cli.status(), 0);
    QCOMPARE(cli.temporaryEntries(), QStringList());
}

void TestInterruption::movieOfAKilledRunIsRemovedByTheNext()
{
    m_tools->addTool(ffmpeg, hanging(QStringLiteral("echo half > \"$last\";")));
    CommandLine cli;
    cli.start({QStringLiteral("convert"), m_clip});
    QVERIFY(waitForTool(ffmpeg));
    QVERIFY(QFile::exists(m_movie));
    cli.sendSignal(SIGKILL);
    QVERIFY(cli.waitForEnd());
    QVERIFY(QFile::exists(m_movie));

    // The next run doesn't come to its own movie, and is asked for another format besides.
    m_tools->addTool(dcraw, QStringLiteral("exit 1"));
    QVERIFY(cli.run(
        {QStringLiteral("convert"), QStringLiteral("--format"), QStringLiteral("avi"), m_clip}));
    QCOMPARE(cli.status(), 1);
    QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files | QDir::Hidden),
             QStringList{QStringLiteral("clip.MLV")});
}

void TestInterruption::unfinishedWorkOfANamesakeIsNotUsed()
{
    const QString base = m_folder->filePath(QStringLiteral("work"));
    m_tools->addTool(ffmpeg, hanging());
    CommandLine cli;
    cli.start(convertIn(base));
    QVERIFY(waitForTool(ffmpeg));
    cli.sendSignal(SIGINT);
    QVERIFY(cli.waitForEnd());
    QCOMPARE(conversions(), framesOfClip);

    QVERIFY(QDir(m_folder->path()).mkdir(QStringLiteral("other")));
    m_clip = m_folder->filePath(QStringLiteral("other/clip.MLV"));
    QVERIFY(writeSample(m_clip,
                        QStringLiteral("--size 128x72 --frames %1 --seed 2").arg(framesOfClip)));
    passThrough(ffmpeg);
    QVERIFY(cli.run(convertIn(base)));
    QCOMPARE(cli.status(), 0);
    QCOMPARE(extractions(), 2);
    QCOMPARE(conversions(), 2 * framesOfClip);
}

FILMWRIGHT_TEST(TestInterruption, QCoreApplication)
#include "tst_interruption.moc"
