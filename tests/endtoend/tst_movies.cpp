// SPDX-License-Identifier: MIT
// Every kind of movie, made of a real recording by the real tools.

#include "commandline.h"
#include "sample.h"

#include "support/testprogram.h"

#include <QDir>
#include <QFile>
#include <QTest>

class TestMovies : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();

    void everyFormatAndQuality_data();
    void everyFormatAndQuality();
    void everyDepth_data();
    void everyDepth();
    void recordingsOfOtherWriters_data();
    void recordingsOfOtherWriters();
    void squeezedRecordingsBecomeMov_data();
    void squeezedRecordingsBecomeMov();
    void highRateRepeatsNoFrame();
    void coloursAndMovementAreRight();
    void movieIsTheSameForAnyNumberOfJobs();
    void existingMovieIsReplaced();
    void recordingIsUnharmed();

private:
    QTemporaryDir m_folder;
};

void TestMovies::initTestCase()
{
    QVERIFY(writeSample(m_folder.filePath(QStringLiteral("sound.MLV")),
                        QStringLiteral("--size 320x192 --frames 10 --fps 25")));
    QVERIFY(writeSample(m_folder.filePath(QStringLiteral("silent.MLV")),
                        QStringLiteral("--size 320x192 --frames 10 --fps 23.976 --no-sound")));
}

void TestMovies::everyFormatAndQuality_data()
{
    QTest::addColumn<QString>("format");
    QTest::addColumn<QString>("quality");
    QTest::addColumn<QString>("recording");
    QTest::addColumn<QString>("video");
    QTest::addColumn<QString>("sound");
    for (const char *recording : {"sound", "silent"}) {
        const bool hasSound = recording == QByteArrayLiteral("sound");
        const QString pcm = hasSound ? QStringLiteral("pcm_s16le") : QString();
        const QString aac = hasSound ? QStringLiteral("aac") : QString();
        QTest::addRow("avi, maximum, %s", recording) << "avi"
                                                     << "maximum" << recording << "rawvideo" << pcm;
        QTest::addRow("avi, high, %s", recording) << "avi"
                                                  << "high" << recording << "mpeg4" << pcm;
        QTest::addRow("mov, maximum, %s", recording) << "mov"
                                                     << "maximum" << recording << "h264" << aac;
        QTest::addRow("mov, high, %s", recording) << "mov"
                                                  << "high" << recording << "h264" << aac;
    }
}

void TestMovies::everyFormatAndQuality()
{
    QFETCH(QString, format);
    QFETCH(QString, quality);
    QFETCH(QString, recording);
    QFETCH(QString, sound);
    CommandLine cli;
    QVERIFY(cli.run({QStringLiteral("convert"), QStringLiteral("--format"), format,
                     QStringLiteral("--quality"), quality,
                     m_folder.filePath(recording + QStringLiteral(".MLV"))}));
    const QString path = m_folder.filePath(recording + QLatin1Char('.') + format);
    QCOMPARE(cli.output(), QStringList{path});
    QCOMPARE(cli.status(), 0);
    const Movie movie = Movie::probe(path);
    QTEST(movie.video.value(QStringLiteral("codec_name")).toString(), "video");
    QCOMPARE(movie.video.value(QStringLiteral("pix_fmt")).toString(), QStringLiteral("yuv420p"));
    QCOMPARE(movie.frames(), 10);
    QCOMPARE(movie.sound.size(), sound.isEmpty() ? 0 : 1);
    if (!sound.isEmpty())
        QCOMPARE(movie.sound.first().value(QStringLiteral("codec_name")).toString(), sound);
    QCOMPARE(cli.temporaryEntries(), QStringList());
}

void TestMovies::everyDepth_data()
{
    QTest::addColumn<int>("bits");
    for (const int bits : {10, 12, 14, 16})
        QTest::addRow("%d bits", bits) << bits;
}

void TestMovies::everyDepth()
{
    QFETCH(int, bits);
    const QString name = QStringLiteral("bits%1").arg(bits);
    QVERIFY(writeSample(m_folder.filePath(name + QStringLiteral(".MLV")),
                        QStringLiteral("--size 320x192 --frames 2 --perfect --bits %1").arg(bits)));
    CommandLine cli;
    QVERIFY(cli.run({QStringLiteral("convert"), m_folder.filePath(name + QStringLiteral(".MLV"))}));
    const QString movie = m_folder.filePath(name + QStringLiteral(".mov"));
    QCOMPARE(cli.output(), QStringList{movie});
    QCOMPARE(Movie::probe(movie).frames(), 2);
    // The second patch of the bottom grey ramp's neighbour, the wall, is the same grey at each
    // depth.
    const Colour wall = averageColour(movie, 1, QStringLiteral("8:8:310:100"));
    QVERIFY2(wall.green > 60 && wall.green < 110, qPrintable(QString::number(wall.green)));
    QVERIFY(qAbs(wall.red - wall.green) < 8 && qAbs(wall.blue - wall.green) < 8);
}

void TestMovies::recordingsOfOtherWriters_data()
{
    QTest::addColumn<int>("frames");
    QTest::newRow("plain14") << 4;
    QTest::newRow("bits10") << 3;
    QTest::newRow("bits12") << 3;
    QTest::newRow("bits16") << 2;
    QTest::newRow("nolens") << 2;
    QTest::newRow("dark") << 6;
    QTest::newRow("flat") << 4;
}

void TestMovies::recordingsOfOtherWriters()
{
    QFETCH(int, frames);
    const QString name = QString::fromUtf8(QTest::currentDataTag());
    const QString copy = m_folder.filePath(name + QStringLiteral(".MLV"));
    QFile::remove(copy);
    QVERIFY(QFile::copy(QDir(qEnvironmentVariable("FILMWRIGHT_TEST_DATA"))
                            .filePath(QStringLiteral("recordings/%1.MLV").arg(name)),
                        copy));
    CommandLine cli;
    QVERIFY(cli.run({QStringLiteral("convert"), copy}));
    const QString movie = m_folder.filePath(name + QStringLiteral(".mov"));
    QCOMPARE(cli.output(), QStringList{movie});
    QCOMPARE(Movie::probe(movie).frames(), frames);
    QCOMPARE(cli.temporaryEntries(), QStringList());
}

void TestMovies::squeezedRecordingsBecomeMov_data()
{
    QTest::addColumn<int>("height");
    // Times 5/3, rounded, most of them are odd.
    for (const int height : {300, 430, 434, 436, 440, 692, 976, 998})
        QTest::addRow("%d", height) << height;
}

void TestMovies::squeezedRecordingsBecomeMov()
{
    QFETCH(int, height);
    const QString recording = m_folder.filePath(QStringLiteral("squeezed%1.MLV").arg(height));
    QVERIFY(writeSample(
        recording,
        QStringLiteral("--size 320x%1 --frames 2 --sampling 5x3 --no-sound").arg(height)));
    CommandLine cli;
    QVERIFY(cli.run({QStringLiteral("convert"), recording}));
    QCOMPARE(cli.status(), 0);
    const Movie movie = Movie::probe(cli.output().value(0));
    QCOMPARE(movie.frames(), 2);
    QCOMPARE(movie.video.value(QLatin1String("width")).toInt(), 320);
    const int developed = movie.video.value(QLatin1String("height")).toInt();
    QVERIFY(developed % 2 == 0 && qAbs(developed - height * 5 / 3.0) <= 1);
}

void TestMovies::highRateRepeatsNoFrame()
{
    const QString recording = m_folder.filePath(QStringLiteral("fast.MLV"));
    QVERIFY(writeSample(recording, QStringLiteral("--size 64x48 --fps 60 --frames 120")));
    CommandLine cli;
    QVERIFY(cli.run({QStringLiteral("convert"), recording}));
    const QString path = m_folder.filePath(QStringLiteral("fast.mov"));
    QCOMPARE(cli.output(), QStringList{path});
    const Movie movie = Movie::probe(path);
    QCOMPARE(movie.frames(), 120);
    // The picture moves from its first frame on, so the sound that starts with it isn't ahead.
    const QList<QByteArray> frames = lumaFrames(path);
    QVERIFY(frames.at(0) != frames.at(1));
    for (const QJsonObject &stream : {movie.video, movie.sound.value(0)})
        QCOMPARE(stream.value(QStringLiteral("start_time")).toString(), QStringLiteral("0.000000"));
}

void TestMovies::coloursAndMovementAreRight()
{
    const QString recording = m_folder.filePath(QStringLiteral("chart.MLV"));
    QVERIFY(writeSample(recording, QStringLiteral("--size 640x360 --frames 10 --perfect")));
    CommandLine cli;
    QVERIFY(cli.run({QStringLiteral("convert"), recording}));
    const QString movie = m_folder.filePath(QStringLiteral("chart.mov"));
    QCOMPARE(cli.output(), QStringList{movie});
    // The red, green and blue patches of the top row.
    const Colour red = averageColour(movie, 0, QStringLiteral("24:24:232:30"));
    QVERIFY(red.red > 2 * red.green && red.red > 2 * red.blue);
    const Colour green = averageColour(movie, 0, QStringLiteral("24:24:282:30"));
    QVERIFY(green.green > 1.5 * green.red && green.green > 1.5 * green.blue);
    const Colour blue = averageColour(movie, 0, QStringLiteral("24:24:332:30"));
    QVERIFY(blue.blue > 1.5 * blue.red && blue.blue > 1.5 * blue.green);
    // The orange ball runs along its dark track.
    const QString track = QStringLiteral("602:16:19:282");
    const QString start = QStringLiteral("40:16:19:282");
    QVERIFY(averageColour(movie, 0, track).red > 0);
    QVERIFY(averageColour(movie, 0, start).red > averageColour(movie, 9, start).red + 10);
}

void TestMovies::movieIsTheSameForAnyNumberOfJobs()
{
    QByteArray first;
    for (const char *jobs : {"1", "2", "8", "auto"}) {
        CommandLine cli;
        QVERIFY(cli.run({QStringLiteral("convert"), QStringLiteral("--jobs"), QLatin1String(jobs),
                         m_folder.filePath(QStringLiteral("sound.MLV"))}));
        QCOMPARE(cli.status(), 0);
        QFile movie(m_folder.filePath(QStringLiteral("sound.mov")));
        QVERIFY(movie.open(QIODevice::ReadOnly));
        const QByteArray bytes = movie.readAll();
        if (first.isEmpty())
            first = bytes;
        QVERIFY(!first.isEmpty());
        QVERIFY(bytes == first);
    }
}

void TestMovies::existingMovieIsReplaced()
{
    const QString movie = m_folder.filePath(QStringLiteral("silent.mov"));
    QFile old(movie);
    QVERIFY(old.open(QIODevice::WriteOnly));
    old.write("old");
    old.close();
    CommandLine cli;
    QVERIFY(cli.run({QStringLiteral("convert"), m_folder.filePath(QStringLiteral("silent.MLV"))}));
    QCOMPARE(Movie::probe(movie).frames(), 10);
}

void TestMovies::recordingIsUnharmed()
{
    QFile recording(m_folder.filePath(QStringLiteral("sound.MLV")));
    QVERIFY(recording.open(QIODevice::ReadOnly));
    const QByteArray before = recording.readAll();
    CommandLine cli;
    QVERIFY(cli.run({QStringLiteral("convert"), recording.fileName()}));
    QVERIFY(recording.seek(0));
    QCOMPARE(recording.readAll(), before);
}

FILMWRIGHT_TEST(TestMovies, QCoreApplication)
#include "tst_movies.moc"
