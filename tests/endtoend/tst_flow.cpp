// SPDX-License-Identifier: MIT
// Movies whose frames flow from the reader into the encoder, beside those of frames on the disk.

#include "commandline.h"
#include "sample.h"
#include "support/filecontent.h"
#include "support/testprogram.h"
#include "support/toolfolder.h"

#include <QDir>
#include <QFile>
#include <QTest>

#include <csignal>

namespace {

constexpr int flowWidth = 320;
constexpr int flowHeight = 192;
constexpr int fewFrames = 18;
constexpr int manyFrames = 66;

/// So many frames of 14 bits that are developed with 16 bits.
QString bufferOf(int frames)
{
    constexpr double samples = 14.0 / 8 + 6;
    constexpr int besideSamples = 2 * 8192;
    return QString::number(frames * qint64(flowWidth * flowHeight * samples + besideSamples));
}

} // namespace

class TestFlow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void movieIsThatOfFramesOnTheDisk_data();
    void movieIsThatOfFramesOnTheDisk();
    void framesBetweenReaderAndEncoderAreFew();
    void framesAreGoneAfterAnInterruption();

private:
    QString path(const char *name) const { return m_folder.filePath(QString::fromUtf8(name)); }
    void writeRecipe(const char *name, const char *lines) const;
    QByteArray movie(const QStringList &arguments, const QStringList &road) const;

    QTemporaryDir m_folder;
};

void TestFlow::writeRecipe(const char *name, const char *lines) const
{
    QFile recipe(path(name) + QStringLiteral(".recipe"));
    QVERIFY(recipe.open(QIODevice::WriteOnly));
    recipe.write(QByteArray("[Recipe]\n") + lines);
}

void TestFlow::initTestCase()
{
    const QString size =
        QStringLiteral("--size %1x%2 --fps 23.976 ").arg(flowWidth).arg(flowHeight);
    const QString few = size + QStringLiteral("--frames %1 ").arg(fewFrames);
    QVERIFY(writeSample(path("few.MLV"), few));
    QVERIFY(writeSample(path("many.MLV"), size + QStringLiteral("--frames %1").arg(manyFrames)));
    QVERIFY(writeSample(path("silent.MLV"), few + QStringLiteral("--no-sound --bits 12")));
    QVERIFY(writeSample(path("gaps.MLV"), few + QStringLiteral("--drop 3,7,8,17 --split 3")));
    QVERIFY(writeSample(path("squeezed.MLV"), few + QStringLiteral("--sampling 5x3")));
    QVERIFY(writeSample(path("rows.MLV"), few + QStringLiteral("--dual-iso 100/1600")));
    QVERIFY(writeSample(path("dark.MLV"), size + QStringLiteral("--frames 3 --dark --seed 2")));
    QVERIFY(writeSample(path("flat.MLV"), size + QStringLiteral("--frames 3 --flat --seed 3")));
    writeRecipe("dnxhr", "Extension=mov\nDevelop=-6\nSound=-c:a pcm_s16le\n"
                         "Video=-c:v dnxhd -profile:v dnxhr_hqx -pix_fmt yuv422p10le\n");
    writeRecipe("ffv1", "Extension=avi\nDevelop=-6\nSound=-c:a pcm_s16le\n"
                        "Video=-c:v ffv1 -level 3 -g 1 -slicecrc 1 -pix_fmt gbrp16le\n");
    writeRecipe("h264", "Extension=mp4\nFastStart=true\nSound=-c:a aac -b:a 128k\n"
                        "Video=-c:v libx264 -threads 1 -crf 20 -pix_fmt yuv420p\n");
    writeRecipe("half", "Extension=mov\nDevelop=-h\nSound=-c:a pcm_s16le\n"
                        "Video=-c:v libx264 -threads 1 -preset veryfast -pix_fmt yuv420p\n");
    QFile table(path("look.cube"));
    QVERIFY(table.open(QIODevice::WriteOnly));
    table.write("LUT_3D_SIZE 2\n0 0 0\n.8 0 0\n0 .9 0\n1 1 0\n0 0 1\n1 0 1\n0 1 1\n1 1 1\n");
}

void TestFlow::movieIsThatOfFramesOnTheDisk_data()
{
    QTest::addColumn<QString>("recipe");
    QTest::addColumn<QString>("recording");
    QTest::addColumn<QString>("options"); // DIR is the folder of the recordings
    QTest::addColumn<int>("room");        // frames of the buffer; 0: the usual one
    const auto row = [](const char *name, const char *recipe, const char *recording,
                        const char *options = "", int room = 0) {
        QTest::newRow(name) << recipe << recording << options << room;
    };
    row("DNxHR", "dnxhr", "few");
    row("FFV1", "ffv1", "few");
    row("H.264", "h264", "few");
    row("half size", "half", "few");
    row("without sound", "ffv1", "silent");
    row("gaps and chunks", "ffv1", "gaps", "", 7);
    row("stretched frames", "dnxhr", "squeezed", "", 7);
    row("dark and flat", "ffv1", "few", "--dark DIR/dark.MLV --flat DIR/flat.MLV", 7);
    row("repair", "ffv1", "few", "--repair-pixels auto --repair-columns", 7);
    row("white and exposure", "ffv1", "few", "--white-balance auto --exposure 0.7", 7);
    row("rows", "ffv1", "rows", "--dual-iso", 7);
    row("rows of three jobs, neighbours", "dnxhr", "rows", "--dual-iso --hdr --jobs 3", 7);
    row("neighbours, 16 bits", "ffv1", "few", "--hdr", 7);
    row("neighbours, 8 bits", "h264", "few", "--hdr --jobs 3", 1);
    row("frames from the middle", "dnxhr", "few", "--frames 4-11", 7);
    row("frames from the first on", "h264", "few", "--frames -5", 1);
    row("frames to the end", "ffv1", "gaps", "--frames 9-", 7);
    row("one frame", "ffv1", "few", "--frames 1-1");
    row("table of colours", "dnxhr", "few", "--lut DIR/look.cube");
    row("buffer of 1", "dnxhr", "many", "", 1);
    row("buffer of 7", "h264", "many", "", 7);
    row("buffer of 64", "ffv1", "many", "", 64);
    row("buffer of 1, three jobs", "h264", "many", "--jobs 3", 1);
    row("buffer of 7, three jobs", "ffv1", "many", "--jobs 3", 7);
    row("buffer of 64, three jobs", "dnxhr", "many", "--jobs 3", 64);
}

/// Empty when none was made, or something is left.
QByteArray TestFlow::movie(const QStringList &arguments, const QStringList &road) const
{
    CommandLine cli;
    if (!cli.run(QStringList{QStringLiteral("convert")} + road + arguments) || cli.status() != 0 ||
        !cli.temporaryEntries().isEmpty()) {
        qWarning("%s", qPrintable(cli.messages().join(QLatin1Char('\n'))));
        return {};
    }
    const QString made = cli.output().value(0);
    const QByteArray content = contentOf(made);
    QFile::remove(made);
    return content;
}

void TestFlow::movieIsThatOfFramesOnTheDisk()
{
    QFETCH(QString, recipe);
    QFETCH(QString, recording);
    QFETCH(QString, options);
    QFETCH(int, room);
    const QStringList arguments =
        options.replace(QLatin1String("DIR"), m_folder.path())
            .split(QLatin1Char(' '), Qt::SkipEmptyParts) +
        QStringList{QStringLiteral("--recipe"),
                    m_folder.filePath(recipe + QStringLiteral(".recipe")),
                    m_folder.filePath(recording + QStringLiteral(".MLV"))};
    const QByteArray byStages = movie(arguments, {QStringLiteral("--stages")});
    const QByteArray byFlow =
        movie(arguments,
              room == 0 ? QStringList() : QStringList{QStringLiteral("--buffer"), bufferOf(room)});
    QVERIFY(!byStages.isEmpty());
    QVERIFY(byStages == byFlow);
}

/// A tool that notes how much lies in the folder of its frames before it goes on.
void TestFlow::framesBetweenReaderAndEncoderAreFew()
{
    ToolFolder tools;
    for (const char *name : {"mlv_dump", "dcraw", "ffmpeg"}) {
        const QString tool = QString::fromUtf8(name);
        tools.addTool(tool, QStringLiteral("exec '%1' \"$@\"").arg(realTool(tool)));
    }
    const QString counts = path("counts");
    tools.addTool(QStringLiteral("dcraw"),
                  QStringLiteral("for dng; do :; done; d=$(dirname \"$dng\")\n"
                                 "ls \"$d\" | grep -c '\\.dng$' >> '%1'; exec '%2' \"$@\"")
                      .arg(counts, realTool(QStringLiteral("dcraw"))));
    constexpr int room = 6;
    CommandLine cli;
    QVERIFY(cli.run({QStringLiteral("convert"), QStringLiteral("--buffer"), bufferOf(room),
                     QStringLiteral("--recipe"), path("ffv1.recipe"), path("few.MLV")}));
    QCOMPARE(cli.status(), 0);
    const QList<QByteArray> seen = contentOf(counts).trimmed().split('\n');
    QCOMPARE(seen.size(), fewFrames);
    for (const QByteArray &count : seen)
        QVERIFY2(count.toInt() <= room, count.constData());
    // The report, the survey and ranges of half the room.
    QCOMPARE(tools.calls(QStringLiteral("mlv_dump")).size(), 2 + fewFrames / (room / 2));
    QCOMPARE(tools.calls(QStringLiteral("ffmpeg")).constLast().mid(0, 10),
             QString::fromUtf8("-f rawvideo -pixel_format rgb48 -video_size 320x192 -framerate "
                               "24000/1001 -i pipe:0")
                 .split(QLatin1Char(' ')));
}

/// Also where work is kept for another run, which can't go on with it.
void TestFlow::framesAreGoneAfterAnInterruption()
{
    ToolFolder tools;
    for (const char *tool : {"mlv_dump", "dcraw"})
        tools.linkTool(QString::fromUtf8(tool), realTool(QString::fromUtf8(tool)));
    tools.addTool(QStringLiteral("ffmpeg"),
                  QStringLiteral("case $* in *encoder*) exec '%1' \"$@\";; esac; exec sleep 600")
                      .arg(realTool(QStringLiteral("ffmpeg"))));
    const QTemporaryDir work;
    QFile::remove(path("few.avi")); // an older movie stays until the first frame is there
    CommandLine cli;
    cli.start({QStringLiteral("convert"), QStringLiteral("--temp-dir"), work.path(),
               QStringLiteral("--recipe"), path("ffv1.recipe"), path("few.MLV")});
    QVERIFY(cli.waitForMessage(QStringLiteral("encoding")));
    cli.sendSignal(SIGINT);
    QVERIFY(cli.waitForEnd());
    QCOMPARE(cli.status(), 130);
    QCOMPARE(QDir(work.filePath(QStringLiteral("FilmwrightTmp")))
                 .entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
             QStringList());
    QVERIFY(!QFile::exists(path("few.avi")));
    QVERIFY(!QFile::exists(path(".few.avi.unfinished")));
}

FILMWRIGHT_TEST(TestFlow, QCoreApplication)
#include "tst_flow.moc"
