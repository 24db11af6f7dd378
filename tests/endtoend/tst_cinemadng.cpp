// SPDX-License-Identifier: MIT
// Folders of raw frames and their sound, made by the real tools, and what readers say of them.

#include "commandline.h"
#include "metadata.h"
#include "sample.h"
#include "support/filecontent.h"
#include "support/programrun.h"
#include "support/testprogram.h"
#include "support/toolfolder.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QStandardPaths>
#include <QTest>

#include <csignal>

namespace {

constexpr int rawFrameCount = 6;

QStringList entriesOf(const QString &folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
}

} // namespace

class TestCinemaDng : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void folderOfFramesAndSound();
    void everyRate_data();
    void everyRate();
    void framesDevelopAsThoseOfAnOrdinaryRun_data();
    void framesDevelopAsThoseOfAnOrdinaryRun();
    void readersOpenTheFrames_data();
    void readersOpenTheFrames();
    void neighboursAreNotMerged();
    void neitherDcrawNorFfmpegIsNeeded();
    void existingFolder();
    void folderOfAPersonIsNotReplaced();
    void closedCardWithAnOutputFolder();
    void reportNamesTheFolder();
    void interruptedRunLeavesNothing();
    void killedRunLeavesAnUnfinishedFolderForTheNext();
    void secondRunOnTheSameFolderIsRefused();
    void damagedRecordingLeavesNothing();
    void keptWorkOfAnotherChoiceStays();

private:
    QString path(const QString &name) const { return m_folder->filePath(name); }
    QString clip() const { return path(QStringLiteral("clip.MLV")); }
    QString frame(int number) const
    {
        return path(QStringLiteral("clip/clip_%1.dng").arg(number, 6, 10, QLatin1Char('0')));
    }
    bool sample(const QString &options = {}) const
    {
        return writeSample(
            clip(), QStringLiteral("--size 320x192 --frames %1 ").arg(rawFrameCount) + options);
    }
    static QStringList arguments(const QStringList &more)
    {
        return QStringList{QStringLiteral("convert"), QStringLiteral("--recipe"),
                           QStringLiteral("cinema-dng")} +
               more;
    }
    QStringList names() const
    {
        QStringList all{QStringLiteral("clip.wav")};
        for (int number = 0; number < rawFrameCount; ++number)
            all << QFileInfo(frame(number)).fileName();
        return all;
    }
    /// An mlv_dump that begins its frames and doesn't come to their end, where others do.
    static void hang(ToolFolder &tools)
    {
        tools.addTool(
            QStringLiteral("mlv_dump"),
            QStringLiteral("case $* in *--dng*) while [ \"$1\" != -o ]; do shift; done\n"
                           "echo half > \"$2\"000000.dng; echo half > \"$2\"000001.dng.part\n"
                           "echo > \"$2\"; exec sleep 600;; esac; exec '%1' \"$@\"")
                .arg(realTool(QStringLiteral("mlv_dump"))));
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void TestCinemaDng::folderOfFramesAndSound()
{
    QVERIFY(sample());
    CommandLine cli;
    QVERIFY(cli.run(arguments({clip()})));
    QCOMPARE(cli.status(), 0);
    QCOMPARE(cli.output(), QStringList{path(QStringLiteral("clip"))});
    QCOMPARE(cli.messages(), (QStringList{QStringLiteral("clip.MLV: reading"),
                                          QStringLiteral("clip.MLV: extracting, 6 frames"),
                                          QStringLiteral("clip: finished")}));
    QCOMPARE(cli.temporaryEntries(), QStringList());
    QCOMPARE(entriesOf(m_folder->path()),
             (QStringList{QStringLiteral("clip"), QStringLiteral("clip.MLV")}));
    QCOMPARE(entriesOf(path(QStringLiteral("clip"))), names());
    // As everything else that the person makes.
    QVERIFY(QDir().mkdir(path(QStringLiteral("other"))));
    QCOMPARE(QFileInfo(path(QStringLiteral("clip"))).permissions(),
             QFileInfo(path(QStringLiteral("other"))).permissions());
}

void TestCinemaDng::everyRate_data()
{
    QTest::addColumn<double>("rate");
    QTest::addColumn<QString>("timeCode"); // of the last frame
    QTest::addColumn<int>("samples");
    QTest::addColumn<QString>("timeReference");
    // 14:30:00 is frame 52200 n, at n numbers a second.
    QTest::newRow("23.976") << 24000 / 1001.0 << "14:30:00.05" << 12012 << "2508105600";
    QTest::newRow("24") << 24.0 << "14:30:00.05" << 12000 << "2505600000";
    QTest::newRow("25") << 25.0 << "14:30:00.05" << 11520 << "2505600000";
    QTest::newRow("29.97") << 30000 / 1001.0 << "14:30:00.05" << 9610 << "2508105600";
    // Two frames share a number.
    QTest::newRow("50") << 50.0 << "14:30:00.02" << 5760 << "2505600000";
    QTest::newRow("59.94") << 60000 / 1001.0 << "14:30:00.02" << 4805 << "2508105600";
}

void TestCinemaDng::everyRate()
{
    QFETCH(double, rate);
    QFETCH(int, samples);
    const QString fps = QString::fromUtf8(QTest::currentDataTag());
    QVERIFY(sample(QStringLiteral("--fps ") + fps));
    CommandLine cli;
    QVERIFY(cli.run(arguments({clip()})));
    QCOMPARE(cli.status(), 0);
    const QJsonObject tags =
        exifOf(frame(rawFrameCount - 1), {QStringLiteral("-validate"), QStringLiteral("-warning")});
    QCOMPARE(text(tags, "Validate"), QStringLiteral("OK"));
    // It prints ten digits.
    const QJsonObject all = exifOf(frame(rawFrameCount - 1), {QStringLiteral("-n")});
    // exiftool shows no field bit.
    QTEST(text(exifOf(frame(rawFrameCount - 1)), "TimeCodes"), "timeCode");
    QVERIFY(std::abs(all.value(QStringLiteral("FrameRate")).toDouble() - rate) < 1e-7);
    QCOMPARE(text(all, "ReelName"), QStringLiteral("clip"));
    QCOMPARE(text(all, "UniqueCameraModel"), QStringLiteral("Filmwright Sample"));

    const QJsonObject sound = exifOf(path(QStringLiteral("clip/clip.wav")));
    QTEST(text(sound, "TimeReference"), "timeReference");
    QCOMPARE(text(sound, "DateTimeOriginal"), QStringLiteral("2026:03:21 14:30:00"));
    QCOMPARE(text(sound, "BwfxmlTape"), QStringLiteral("clip"));
    QCOMPARE(text(sound, "BwfxmlSpeedTimecodeFlag"), QStringLiteral("NDF"));
    QTEST(text(sound, "BwfxmlSpeedTimestampSamplesSinceMidnightLo"), "timeReference");
    QVERIFY(std::abs(sound.value(QStringLiteral("BwfxmlSpeedTimecodeRate")).toDouble() - rate) <
            1e-9);
    const QByteArray duration =
        outputOf(QStringLiteral("ffprobe"),
                 {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-show_entries"),
                  QStringLiteral("stream=duration_ts"), QStringLiteral("-of"),
                  QStringLiteral("csv=p=0"), path(QStringLiteral("clip/clip.wav"))});
    QCOMPARE(duration.trimmed(), QByteArray::number(samples));
}

void TestCinemaDng::framesDevelopAsThoseOfAnOrdinaryRun_data()
{
    QTest::addColumn<QString>("options");
    QTest::addColumn<QStringList>("choices");
    QTest::newRow("plain") << "" << QStringList();
    QTest::newRow("lossless") << "--compress lossless" << QStringList();
    QTest::newRow("12 bits, squeezed") << "--bits 12 --sampling 5x3" << QStringList();
    QTest::newRow("repaired") << "--hot 20"
                              << QStringList{QStringLiteral("--repair-pixels"),
                                             QStringLiteral("auto")};
    QTest::newRow("less a dark") << ""
                                 << QStringList{QStringLiteral("--dark"), QStringLiteral("CLIP")};
    QTest::newRow("blended") << "--dual-iso 100/800" << QStringList{QStringLiteral("--dual-iso")};
}

void TestCinemaDng::framesDevelopAsThoseOfAnOrdinaryRun()
{
    QFETCH(QString, options);
    QFETCH(QStringList, choices);
    QVERIFY(sample(options));
    choices.replaceInStrings(QStringLiteral("CLIP"), clip());
    CommandLine cli;
    QVERIFY(cli.run(arguments(choices + QStringList{clip()})));
    QCOMPARE(cli.status(), 0);
    const QTemporaryDir work;
    CommandLine ordinary;
    QVERIFY(ordinary.run(QStringList{QStringLiteral("convert"), QStringLiteral("--temp-dir"),
                                     work.path(), QStringLiteral("--keep-temp")} +
                         choices + QStringList{clip()}));
    for (int number = 0; number < rawFrameCount; ++number) {
        QCOMPARE(QProcess::execute(realTool(QStringLiteral("dcraw")),
                                   {QStringLiteral("-H"), QStringLiteral("3"), QStringLiteral("-q"),
                                    QStringLiteral("3"), QStringLiteral("-w"), QStringLiteral("-W"),
                                    QStringLiteral("-T"), QStringLiteral("-b"),
                                    QStringLiteral("4.000000"), frame(number)}),
                 0);
        const QByteArray seen = contentOf(frame(number).chopped(3) + QStringLiteral("tiff"));
        QVERIFY(!seen.isEmpty());
        QCOMPARE(seen, contentOf(work.filePath(QStringLiteral("FilmwrightTmp/clip.MLV/tmp%1.tiff")
                                                   .arg(number, 6, 10, QLatin1Char('0')))));
    }
}

void TestCinemaDng::readersOpenTheFrames_data()
{
    QTest::addColumn<QString>("program");
    QTest::addColumn<QStringList>("before");
    QTest::addColumn<QStringList>("behind");
    const QString picture = QStringLiteral("OUT.ppm");
    QTest::newRow("dcraw") << "dcraw" << QStringList{QStringLiteral("-v")} << QStringList();
    QTest::newRow("LibRaw") << "dcraw_emu" << QStringList() << QStringList();
    QTest::newRow("darktable") << "darktable-cli" << QStringList()
                               << QStringList{picture,
                                              QStringLiteral("--core"),
                                              QStringLiteral("--configdir"),
                                              QStringLiteral("OUT"),
                                              QStringLiteral("--library"),
                                              QStringLiteral(":memory:")};
    QTest::newRow("RawTherapee") << "rawtherapee-cli"
                                 << QStringList{QStringLiteral("-o"), QStringLiteral("OUT.jpg"),
                                                QStringLiteral("-Y"), QStringLiteral("-c")}
                                 << QStringList();
}

void TestCinemaDng::readersOpenTheFrames()
{
    QFETCH(QString, program);
    QFETCH(QStringList, before);
    QFETCH(QStringList, behind);
    if (QStandardPaths::findExecutable(program).isEmpty())
        QSKIP(qPrintable(program + QStringLiteral(" isn't installed")));
    for (const char *options : {"", "--compress lossless", "--bits 12", "--bits 10"}) {
        // RawTherapee takes small files for something else.
        QVERIFY(sample(QStringLiteral("--size 640x360 ") + QString::fromUtf8(options)));
        CommandLine cli;
        QVERIFY(cli.run(arguments({clip()})));
        const QTemporaryDir out;
        const QString copy = out.filePath(QStringLiteral("frame.dng"));
        QVERIFY(QFile::copy(frame(0), copy));
        QStringList words = before + QStringList{copy} + behind;
        words.replaceInStrings(QStringLiteral("OUT"), out.filePath(QStringLiteral("picture")));
        QProcess reader;
        reader.setProcessChannelMode(QProcess::MergedChannels);
        QProcessEnvironment home = QProcessEnvironment::systemEnvironment();
        for (const char *variable : {"HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME"})
            home.insert(QString::fromUtf8(variable), out.path());
        reader.setProcessEnvironment(home);
        reader.start(program, words, QIODevice::ReadOnly);
        QVERIFY(reader.waitForFinished(120000));
        QVERIFY2(reader.exitCode() == 0, reader.readAll().constData());
        const QStringList pictures =
            QDir(out.path()).entryList({QStringLiteral("*.ppm"), QStringLiteral("*.jpg")});
        QCOMPARE(pictures.size(), 1);
        QVERIFY(QFileInfo(out.filePath(pictures.constFirst())).size() > 1000);
    }
}

void TestCinemaDng::neighboursAreNotMerged()
{
    QVERIFY(sample());
    CommandLine cli;
    QVERIFY(cli.run(arguments({QStringLiteral("--hdr"), clip()})));
    QCOMPARE(cli.status(), 2);
    QCOMPARE(cli.messages(), QStringList{QStringLiteral(
                                 "filmwright-cli: the recipe cinema-dng keeps the frames raw, and "
                                 "only developed neighbours can be merged")});
    QCOMPARE(entriesOf(m_folder->path()), QStringList{QStringLiteral("clip.MLV")});
}

void TestCinemaDng::neitherDcrawNorFfmpegIsNeeded()
{
    QVERIFY(sample());
    ToolFolder tools;
    tools.linkTool(QStringLiteral("mlv_dump"), realTool(QStringLiteral("mlv_dump")));
    tools.addTool(QStringLiteral("dcraw"), QStringLiteral("exit 1"));
    tools.addTool(QStringLiteral("ffmpeg"), QStringLiteral("exit 1"));
    CommandLine cli;
    QVERIFY(cli.run(arguments({clip()})));
    QCOMPARE(cli.output(), QStringList{path(QStringLiteral("clip"))});
    QVERIFY(tools.calls(QStringLiteral("dcraw")).isEmpty());
    QVERIFY(tools.calls(QStringLiteral("ffmpeg")).isEmpty());
}

void TestCinemaDng::existingFolder()
{
    QVERIFY(sample());
    const auto outputOfRun = [this](const QStringList &more) {
        CommandLine cli;
        return cli.run(arguments(more + QStringList{clip()})) ? cli.output() : QStringList{};
    };
    const QStringList skip{QStringLiteral("--existing"), QStringLiteral("skip")};
    const QStringList folder{path(QStringLiteral("clip"))};
    QCOMPARE(outputOfRun({}), folder);
    QCOMPARE(outputOfRun(skip), QStringList());
    QVERIFY(QFile::remove(frame(rawFrameCount - 1)));
    QCOMPARE(outputOfRun(skip), folder); // it had lost a frame
    QVERIFY(QFile::remove(path(QStringLiteral("clip/clip.wav"))));
    QCOMPARE(outputOfRun(skip), folder); // it had lost its sound
    QVERIFY(QFile::resize(frame(2), 1000));
    QCOMPARE(outputOfRun(skip), folder); // a frame was cut off
    const QStringList black{QStringLiteral("--black-level"), QStringLiteral("1000")};
    QCOMPARE(outputOfRun(skip + black), folder); // made with another choice
    QCOMPARE(outputOfRun(skip + black), QStringList());
    QCOMPARE(outputOfRun({QStringLiteral("--existing"), QStringLiteral("keep")}),
             QStringList{path(QStringLiteral("clip-2"))});
    QCOMPARE(entriesOf(path(QStringLiteral("clip-2"))).constFirst(), QStringLiteral("clip-2.wav"));
    QCOMPARE(outputOfRun({}), folder);
    QCOMPARE(entriesOf(folder.constFirst()), names());
}

void TestCinemaDng::folderOfAPersonIsNotReplaced()
{
    QVERIFY(sample());
    QVERIFY(QDir().mkdir(path(QStringLiteral("clip"))));
    QFile notes(path(QStringLiteral("clip/notes.txt")));
    QVERIFY(notes.open(QIODevice::WriteOnly));
    CommandLine cli;
    QVERIFY(cli.run(arguments({clip()})));
    QCOMPARE(cli.status(), 1);
    QVERIFY(cli.messages().constLast().contains(
        QStringLiteral("the folder %1 is there and isn't replaced, because \"notes.txt\" in it was "
                       "not written by Filmwright")
            .arg(path(QStringLiteral("clip")))));
    QCOMPARE(entriesOf(path(QStringLiteral("clip"))), QStringList{QStringLiteral("notes.txt")});
    QCOMPARE(entriesOf(m_folder->path()),
             (QStringList{QStringLiteral("clip"), QStringLiteral("clip.MLV")}));
}

void TestCinemaDng::closedCardWithAnOutputFolder()
{
    QVERIFY(QDir().mkdir(path(QStringLiteral("card"))));
    const QString recording = path(QStringLiteral("card/clip.MLV"));
    QVERIFY(writeSample(recording, QStringLiteral("--size 64x48 --frames 2")));
    const QString card = path(QStringLiteral("card"));
    const QFile::Permissions before = QFile::permissions(card);
    QVERIFY(QFile::setPermissions(card, QFile::ReadOwner | QFile::ExeOwner));
    CommandLine cli;
    const bool ran =
        cli.run(arguments({QStringLiteral("--output"), path(QStringLiteral("out")),
                           QStringLiteral("--name"), QStringLiteral("{date} {name}"), recording}));
    QVERIFY(QFile::setPermissions(card, before));
    QVERIFY(ran);
    QCOMPARE(cli.output(), QStringList{path(QStringLiteral("out/2026-03-21 clip"))});
    QCOMPARE(entriesOf(card), QStringList{QStringLiteral("clip.MLV")});
    QCOMPARE(entriesOf(cli.output().constFirst()),
             (QStringList{QStringLiteral("2026-03-21 clip.wav"),
                          QStringLiteral("2026-03-21 clip_000000.dng"),
                          QStringLiteral("2026-03-21 clip_000001.dng")}));
}

void TestCinemaDng::reportNamesTheFolder()
{
    QVERIFY(sample());
    CommandLine cli;
    QVERIFY(
        cli.run(arguments({QStringLiteral("--report"), path(QStringLiteral("r.json")), clip()})));
    const QJsonObject report =
        QJsonDocument::fromJson(contentOf(path(QStringLiteral("r.json")))).object();
    QCOMPARE(text(report, "recipe"), QStringLiteral("cinema-dng"));
    const QJsonObject recording =
        report.value(QStringLiteral("recordings")).toArray().first().toObject();
    QCOMPARE(text(recording, "movie"), path(QStringLiteral("clip")));
    QCOMPARE(recording.value(QStringLiteral("frames")).toInt(), rawFrameCount);
}

void TestCinemaDng::interruptedRunLeavesNothing()
{
    QVERIFY(sample());
    ToolFolder tools;
    hang(tools);
    for (const QStringList &kept :
         {QStringList(), QStringList{QStringLiteral("--temp-dir"), path(QStringLiteral("tmp"))}}) {
        CommandLine cli;
        cli.start(arguments(kept + QStringList{clip()}));
        QTRY_VERIFY(QFileInfo::exists(path(QStringLiteral("clip.unfinished/tmp"))));
        QVERIFY(QFile::remove(path(QStringLiteral("clip.unfinished/tmp"))));
        QVERIFY(!QFileInfo::exists(path(QStringLiteral("clip"))));
        cli.sendSignal(SIGINT);
        QVERIFY(cli.waitForEnd());
        QCOMPARE(cli.status(), 130);
        QCOMPARE(entriesOf(m_folder->path()).filter(QStringLiteral("clip")),
                 QStringList{QStringLiteral("clip.MLV")});
    }
}

void TestCinemaDng::killedRunLeavesAnUnfinishedFolderForTheNext()
{
    QVERIFY(sample());
    {
        ToolFolder tools;
        hang(tools);
        CommandLine cli;
        cli.start(arguments({clip()}));
        QTRY_VERIFY(QFileInfo::exists(path(QStringLiteral("clip.unfinished/tmp"))));
        QVERIFY(QFile::remove(path(QStringLiteral("clip.unfinished/tmp"))));
        cli.sendSignal(SIGKILL);
        QVERIFY(cli.waitForEnd());
    }
    QCOMPARE(entriesOf(m_folder->path()),
             (QStringList{QStringLiteral(".clip.unfinished"), QStringLiteral("clip.MLV"),
                          QStringLiteral("clip.unfinished")}));
    CommandLine again;
    QVERIFY(again.run(arguments({QStringLiteral("--existing"), QStringLiteral("skip"), clip()})));
    QCOMPARE(again.output(), QStringList{path(QStringLiteral("clip"))});
    QCOMPARE(entriesOf(m_folder->path()),
             (QStringList{QStringLiteral("clip"), QStringLiteral("clip.MLV")}));
    QCOMPARE(entriesOf(path(QStringLiteral("clip"))), names());
}

void TestCinemaDng::secondRunOnTheSameFolderIsRefused()
{
    QVERIFY(sample());
    CommandLine first;
    {
        ToolFolder tools;
        hang(tools);
        first.start(arguments({clip()}));
        QTRY_VERIFY(QFileInfo::exists(path(QStringLiteral("clip.unfinished/tmp"))));
        CommandLine second;
        QVERIFY(second.run(arguments({clip()})));
        QCOMPARE(second.status(), 1);
        QVERIFY(second.messages().constLast().contains(
            QStringLiteral("its movie is being written by another run")));
        QVERIFY(QFileInfo::exists(path(QStringLiteral("clip.unfinished/tmp000000.dng"))));
    }
    QVERIFY(QFile::remove(path(QStringLiteral("clip.unfinished/tmp"))));
    first.sendSignal(SIGINT);
    QVERIFY(first.waitForEnd());
}

void TestCinemaDng::damagedRecordingLeavesNothing()
{
    QVERIFY(sample());
    ToolFolder tools;
    tools.addTool(QStringLiteral("mlv_dump"),
                  QStringLiteral("case $* in *--dng*) while [ \"$1\" != -o ]; do shift; done\n"
                                 "echo half > \"$2\"000000.dng\n"
                                 "echo '[UNUSABLE] broken'; exit 1;; esac; exec '%1' \"$@\"")
                      .arg(realTool(QStringLiteral("mlv_dump"))));
    CommandLine cli;
    QVERIFY(cli.run(arguments({clip()})));
    QCOMPARE(cli.status(), 1);
    QVERIFY(cli.messages().constLast().endsWith(QLatin1String("failed: broken")));
    QCOMPARE(entriesOf(m_folder->path()), QStringList{QStringLiteral("clip.MLV")});
}

/// What an interrupted run has left in a chosen temporary folder is neither used nor removed.
void TestCinemaDng::keptWorkOfAnotherChoiceStays()
{
    QVERIFY(sample());
    const QString work = path(QStringLiteral("work"));
    const QString kept = work + QStringLiteral("/FilmwrightTmp/clip.MLV");
    {
        ToolFolder tools;
        for (const char *tool : {"mlv_dump", "dcraw"})
            tools.linkTool(QString::fromUtf8(tool), realTool(QString::fromUtf8(tool)));
        tools.addTool(QStringLiteral("ffmpeg"), QStringLiteral("exec sleep 600"));
        CommandLine cli;
        cli.start({QStringLiteral("convert"), QStringLiteral("--temp-dir"), work, clip()});
        QVERIFY(cli.waitForMessage(QStringLiteral("encoding")));
        cli.sendSignal(SIGINT);
        QVERIFY(cli.waitForEnd());
    }
    const QStringList before = entriesOf(kept);
    QVERIFY(before.size() >= 2 * rawFrameCount);
    CommandLine cli;
    QVERIFY(cli.run(arguments({QStringLiteral("--temp-dir"), work, clip()})));
    QCOMPARE(cli.output(), QStringList{path(QStringLiteral("clip"))});
    QCOMPARE(entriesOf(kept), before);
    QVERIFY(QFileInfo::exists(kept + QStringLiteral(".origin")));
    QCOMPARE(text(exifOf(frame(0)), "TimeCodes"), QStringLiteral("14:30:00.00"));
}

FILMWRIGHT_TEST(TestCinemaDng, QCoreApplication)
#include "tst_cinemadng.moc"
