// SPDX-License-Identifier: MIT
#include "encoding/ffmpegtask.h"
#include "support/testprogram.h"
#include "support/toolfolder.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace filmwright;

namespace {

class Listener : public FFmpegTaskProtocol
{
public:
    void movieExtractionFinished(FFmpegTask &) override { events << QStringLiteral("finished"); }
    void movieExtractionAborted(FFmpegTask &) override { events << QStringLiteral("aborted"); }
    QStringList events;
};

const QString ffmpeg = QStringLiteral("ffmpeg");

} // namespace

class TestFFmpegTask : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void moviePathReplacesTheLastExtension_data();
    void moviePathReplacesTheLastExtension();
    void argumentsOfAMovie_data();
    void argumentsOfAMovie();
    void frameRateHasTwoDecimals_data();
    void frameRateHasTwoDecimals();
    void inputFormatIsNamedAtHighRates_data();
    void inputFormatIsNamedAtHighRates();
    void directoryWithoutSeparatorIsGluedToThePattern();
    void percentSignInTheFolderIsNoPattern();

    void finishedBuildLeavesTheMovieAndIsReported();
    void failedBuildIsReportedAsFinished();
    void oldMovieIsRemovedBeforeTheBuild();
    void abortDeletesThePartialMovieAndReportsOnlyTheAbort();
    void everyStartForgetsTheOldLines();
    void progressIsTheLastFrameNumber();

private:
    QString path(const char *name) const { return m_folder->filePath(QString::fromUtf8(name)); }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<ToolFolder> m_tools;
    std::unique_ptr<FFmpegTask> m_task;
    Listener m_listener;
};

void TestFFmpegTask::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_tools = std::make_unique<ToolFolder>();
    m_tools->addTool(ffmpeg, QStringLiteral("for last; do :; done; echo movie > \"$last\""));
    m_task = FFmpegTask::ffmpegTask();
    m_task->setDelegate(&m_listener);
    m_task->setTiffsDirectory(m_folder->path() + QLatin1Char('/'));
    m_task->setMlvPath(path("a.b.MLV"));
    m_task->setFps(25);
    m_listener.events.clear();
}

void TestFFmpegTask::cleanup()
{
    m_task.reset();
    m_tools.reset();
    m_folder.reset();
}

void TestFFmpegTask::moviePathReplacesTheLastExtension_data()
{
    QTest::addColumn<QString>("recording");
    QTest::addColumn<qint32>("format");
    QTest::addColumn<QString>("movie");
    QTest::newRow("avi") << "/clips/M12-1530.MLV" << qint32(0) << "/clips/M12-1530.avi";
    QTest::newRow("mov") << "/clips/M12-1530.MLV" << qint32(1) << "/clips/M12-1530.mov";
    QTest::newRow("two dots") << "a.b.MLV" << qint32(1) << "a.b.mov";
    QTest::newRow("any other format is mov") << "a.MLV" << qint32(2) << "a.mov";
}

void TestFFmpegTask::moviePathReplacesTheLastExtension()
{
    QFETCH(QString, recording);
    QFETCH(qint32, format);
    m_task->setMlvPath(recording);
    m_task->setFormat(format);
    QTEST(m_task->moviePath(), "movie");
}

void TestFFmpegTask::argumentsOfAMovie_data()
{
    QTest::addColumn<qint32>("format");
    QTest::addColumn<qint32>("quality");
    QTest::addColumn<bool>("sound");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, qint32 format, qint32 quality, bool sound,
                        const char *expected) {
        QTest::newRow(name) << format << quality << sound << QString::fromUtf8(expected);
    };
    row("AVI, maximum", 0, 0, false,
        "-r 25.00 -i DIR/tmp%06d.tiff -pix_fmt yuv420p -vcodec rawvideo DIR/a.b.avi");
    row("AVI, maximum, sound", 0, 0, true,
        "-r 25.00 -i DIR/tmp%06d.tiff -i DIR/tmp.wav -c:a pcm_s16le -pix_fmt yuv420p -vcodec "
        "rawvideo "
        "DIR/a.b.avi");
    row("AVI, high", 0, 1, false,
        "-r 25.00 -i DIR/tmp%06d.tiff -pix_fmt yuv420p -vcodec mpeg4 -qscale:v 1 DIR/a.b.avi");
    row("AVI, high, sound", 0, 1, true,
        "-r 25.00 -i DIR/tmp%06d.tiff -i DIR/tmp.wav -c:a pcm_s16le -pix_fmt yuv420p -vcodec mpeg4 "
        "-qscale:v 1 DIR/a.b.avi");
    row("MOV, maximum", 1, 0, false,
        "-r 25.00 -i DIR/tmp%06d.tiff -pix_fmt yuv420p -vcodec h264 -qp 1 DIR/a.b.mov");
    row("MOV, maximum, sound", 1, 0, true,
        "-r 25.00 -i DIR/tmp%06d.tiff -i DIR/tmp.wav -pix_fmt yuv420p -vcodec h264 -qp 1 "
        "DIR/a.b.mov");
    row("MOV, high", 1, 1, false,
        "-r 25.00 -i DIR/tmp%06d.tiff -pix_fmt yuv420p -vcodec h264 -qp 17 DIR/a.b.mov");
    row("MOV, high, sound", 1, 1, true,
        "-r 25.00 -i DIR/tmp%06d.tiff -i DIR/tmp.wav -pix_fmt yuv420p -vcodec h264 -qp 17 "
        "DIR/a.b.mov");
    row("any other format and quality", 2, 5, true,
        "-r 25.00 -i DIR/tmp%06d.tiff -i DIR/tmp.wav -pix_fmt yuv420p -vcodec h264 -qp 17 "
        "DIR/a.b.mov");
}

void TestFFmpegTask::argumentsOfAMovie()
{
    QFETCH(qint32, format);
    QFETCH(qint32, quality);
    QFETCH(bool, sound);
    QFETCH(QString, expected);
    if (sound)
        QVERIFY(QFile(path("tmp.wav")).open(QIODevice::WriteOnly));
    m_task->setFormat(format);
    m_task->setQuality(quality);
    m_task->buildMovie();
    QTRY_COMPARE(m_listener.events, QStringList{QStringLiteral("finished")});
    expected.replace(QLatin1String("DIR"), m_folder->path());
    QCOMPARE(m_tools->calls(ffmpeg), QList<QStringList>{expected.split(QLatin1Char(' '))});
}

void TestFFmpegTask::frameRateHasTwoDecimals_data()
{
    QTest::addColumn<float>("fps");
    QTest::addColumn<QString>("text");
    QTest::newRow("23.976") << 23.976F << "23.98";
    QTest::newRow("25") << 25.0F << "25.00";
    QTest::newRow("59.94") << 59.94F << "59.94";
    QTest::newRow("a half goes to the even digit below") << 24.125F << "24.12";
    QTest::newRow("a half goes to the even digit above") << 24.375F << "24.38";
    QTest::newRow("unknown") << 0.0F << "0.00";
}

void TestFFmpegTask::frameRateHasTwoDecimals()
{
    QFETCH(float, fps);
    QTEST(movieArguments({QString(), QString(), fps}, 0, 0, QString()).at(1), "text");
}

void TestFFmpegTask::inputFormatIsNamedAtHighRates_data()
{
    QTest::addColumn<float>("fps");
    QTest::addColumn<QString>("expected");
    const QString rest = QStringLiteral(" -i /t/tmp%06d.tiff -i /t/tmp.wav -pix_fmt yuv420p "
                                        "-vcodec h264 -qp 17 /a.mov");
    QTest::newRow("37") << 37.0F << QStringLiteral("-r 37.00") + rest;
    QTest::newRow("37.5") << 37.5F << QStringLiteral("-r 37.50 -f image2") + rest;
    QTest::newRow("38") << 38.0F << QStringLiteral("-r 38.00 -f image2") + rest;
    QTest::newRow("60") << 60.0F << QStringLiteral("-r 60.00 -f image2") + rest;
}

void TestFFmpegTask::inputFormatIsNamedAtHighRates()
{
    QFETCH(float, fps);
    QFETCH(QString, expected);
    QCOMPARE(movieArguments({QStringLiteral("/t/"), QStringLiteral("/t/tmp.wav"), fps}, 1, 1,
                            QStringLiteral("/a.mov")),
             expected.split(QLatin1Char(' ')));
}

void TestFFmpegTask::directoryWithoutSeparatorIsGluedToThePattern()
{
    const QStringList arguments =
        movieArguments({QStringLiteral("/tmp/w"), QString(), 25}, 1, 1, QStringLiteral("/a.mov"));
    QCOMPARE(arguments.at(3), QStringLiteral("/tmp/wtmp%06d.tiff"));
}

void TestFFmpegTask::percentSignInTheFolderIsNoPattern()
{
    const QStringList arguments =
        movieArguments({QStringLiteral("/t/50%d.MLV/"), QStringLiteral("/t/50%d.MLV/tmp.wav"), 25},
                       1, 1, QString());
    QCOMPARE(arguments.at(3), QStringLiteral("/t/50%%d.MLV/tmp%06d.tiff"));
    QCOMPARE(arguments.at(5), QStringLiteral("/t/50%d.MLV/tmp.wav"));
}

void TestFFmpegTask::finishedBuildLeavesTheMovieAndIsReported()
{
    m_task->buildMovie();
    QVERIFY(m_task->isRunning());
    QCOMPARE(m_listener.events, QStringList());
    QTRY_COMPARE(m_listener.events, QStringList{QStringLiteral("finished")});
    QVERIFY(QFile::exists(path("a.b.avi")));
}

void TestFFmpegTask::failedBuildIsReportedAsFinished()
{
    m_tools->addTool(ffmpeg, QStringLiteral("exit 3"));
    m_task->buildMovie();
    QTRY_COMPARE(m_listener.events, QStringList{QStringLiteral("finished")});
    QCOMPARE(m_task->terminationStatus(), 3);
}

void TestFFmpegTask::oldMovieIsRemovedBeforeTheBuild()
{
    m_tools->addTool(ffmpeg, QStringLiteral("exit 0"));
    QVERIFY(QFile(path("a.b.avi")).open(QIODevice::WriteOnly));
    m_task->buildMovie();
    QVERIFY(!QFile::exists(path("a.b.avi")));
    QTRY_COMPARE(m_listener.events, QStringList{QStringLiteral("finished")});
}

void TestFFmpegTask::abortDeletesThePartialMovieAndReportsOnlyTheAbort()
{
    m_tools->addTool(ffmpeg, QStringLiteral("for last; do :; done; echo half > \"$last\"; echo up; "
                                            "exec sleep 1000"));
    m_task->buildMovie();
    QTRY_COMPARE(m_task->logs(), QStringList{QStringLiteral("up")});
    QVERIFY(QFile::exists(path("a.b.avi")));
    m_task->abort();
    QCOMPARE(m_listener.events, QStringList{QStringLiteral("aborted")});
    QVERIFY(!QFile::exists(path("a.b.avi")));
}

void TestFFmpegTask::everyStartForgetsTheOldLines()
{
    m_tools->addTool(ffmpeg, QStringLiteral("echo line"));
    for (int run = 0; run < 2; ++run) {
        m_task->buildMovie();
        QTRY_VERIFY(!m_task->isRunning());
        QCOMPARE(m_task->logs(), QStringList{QStringLiteral("line")});
    }
    m_task->startAndWaitUntilExit(true);
    QCOMPARE(m_task->logs(), QStringList{QStringLiteral("line")});
}

void TestFFmpegTask::progressIsTheLastFrameNumber()
{
    QCOMPARE(m_task->encodedFrames(), 0U);
    m_task->receivedLine(QStringLiteral("frame=    7 fps=0.0 q=17.0"), *m_task);
    m_task->receivedLine(QStringLiteral("frame=   12 fps=5.5 q=17.0"), *m_task);
    m_task->receivedLine(QStringLiteral("[libx264] frame I:1"), *m_task);
    QCOMPARE(m_task->encodedFrames(), 12U);
}

FILMWRIGHT_TEST(TestFFmpegTask, QCoreApplication)
#include "tst_ffmpegtask.moc"
