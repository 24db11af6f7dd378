// SPDX-License-Identifier: MIT
// The judge is given what the real ffmpeg writes, whole and cut off.

#include "encoding/ffmpegarguments.h"
#include "encoding/finishedmovie.h"
#include "encoding/recipemovie.h"
#include "support/fakemovie.h"
#include "support/programrun.h"
#include "support/testprogram.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using namespace filmwright;

namespace {

constexpr int frames = 7;

} // namespace

class TestFinishedMovie : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void framesOfEachFormat_data();
    void framesOfEachFormat();
    void movieThatIsCutOffAnywhere_data() { framesOfEachFormat_data(); }
    void movieThatIsCutOffAnywhere();
    void movieWhoseWriterWasKilled_data() { framesOfEachFormat_data(); }
    void movieWhoseWriterWasKilled();
    void framesOfAnMp4_data();
    void framesOfAnMp4();
    void longMovieOfSeveralParts();
    void atomOfAHugeLength();
    void noMovie_data();
    void noMovie();

private:
    QString file(const QString &name) const { return m_folder.filePath(name); }
    QString write(const QByteArray &content) const
    {
        QFile movie(file(QStringLiteral("written")));
        if (movie.open(QIODevice::WriteOnly))
            movie.write(content);
        return movie.fileName();
    }
    /// The arguments that the application gives to ffmpeg, its frames made of a test pattern.
    QStringList arguments(qint32 format, qint32 quality, bool sound, const QString &movie) const
    {
        const QString folder = m_folder.path() + QLatin1Char('/');
        return QStringList{QStringLiteral("-y")} +
               movieArguments({folder, sound ? folder + QStringLiteral("tmp.wav") : QString(), 25},
                              format, quality, movie);
    }
    QByteArray encoded(qint32 format, qint32 quality, bool sound) const
    {
        const QString path = moviePathFor(file(QStringLiteral("clip.MLV")), format);
        runProgram(QStringLiteral("ffmpeg"), arguments(format, quality, sound, path));
        QFile movie(path);
        return movie.open(QIODevice::ReadOnly) ? movie.readAll() : QByteArray();
    }

    QTemporaryDir m_folder;

private Q_SLOTS:
    void initTestCase();
};

void TestFinishedMovie::initTestCase()
{
    const QString source = QStringLiteral("testsrc=size=64x48:rate=25");
    QCOMPARE(QProcess::execute(QStringLiteral("ffmpeg"),
                               {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-f"),
                                QStringLiteral("lavfi"), QStringLiteral("-i"), source,
                                QStringLiteral("-frames:v"), QString::number(frames),
                                QStringLiteral("-start_number"), QStringLiteral("0"),
                                file(QStringLiteral("tmp%06d.tiff"))}),
             0);
    QCOMPARE(
        QProcess::execute(QStringLiteral("ffmpeg"),
                          {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-f"),
                           QStringLiteral("lavfi"), QStringLiteral("-i"),
                           QStringLiteral("sine=d=0.28:r=48000"), file(QStringLiteral("tmp.wav"))}),
        0);
}

void TestFinishedMovie::framesOfEachFormat_data()
{
    QTest::addColumn<qint32>("format");
    QTest::addColumn<qint32>("quality");
    QTest::addColumn<bool>("sound");
    for (const bool sound : {false, true}) {
        const char *with = sound ? "with sound" : "silent";
        QTest::addRow("MOV high, %s", with)
            << qint32(MovieFormatMOV) << qint32(MovieQualityHigh) << sound;
        QTest::addRow("MOV maximum, %s", with)
            << qint32(MovieFormatMOV) << qint32(MovieQualityMaximum) << sound;
        QTest::addRow("AVI high, %s", with)
            << qint32(MovieFormatAVI) << qint32(MovieQualityHigh) << sound;
        QTest::addRow("AVI maximum, %s", with)
            << qint32(MovieFormatAVI) << qint32(MovieQualityMaximum) << sound;
    }
}

void TestFinishedMovie::framesOfEachFormat()
{
    QFETCH(qint32, format);
    QFETCH(qint32, quality);
    QFETCH(bool, sound);
    QCOMPARE(framesOfFinishedMovie(write(encoded(format, quality, sound))),
             std::optional<quint64>(frames));
}

void TestFinishedMovie::movieThatIsCutOffAnywhere()
{
    QFETCH(qint32, format);
    QFETCH(qint32, quality);
    QFETCH(bool, sound);
    const QByteArray movie = encoded(format, quality, sound);
    for (qsizetype length = 0; length < movie.size(); length += 1 + movie.size() / 500)
        QCOMPARE(framesOfFinishedMovie(write(movie.left(length))), std::nullopt);
    QCOMPARE(framesOfFinishedMovie(write(movie.chopped(1))), std::nullopt);
}

void TestFinishedMovie::movieWhoseWriterWasKilled()
{
    QFETCH(qint32, format);
    QFETCH(qint32, quality);
    QFETCH(bool, sound);
    const QString movie = moviePathFor(file(QStringLiteral("killed.MLV")), format);
    QStringList endless = arguments(format, quality, sound, movie);
    // The frames over and over, until the writer is killed.
    endless.insert(1, QStringLiteral("-loop"));
    endless.insert(2, QStringLiteral("1"));
    QProcess ffmpeg;
    ffmpeg.start(QStringLiteral("ffmpeg"), endless);
    QTRY_VERIFY_WITH_TIMEOUT(QFileInfo(movie).size() > 40000, 60000);
    ffmpeg.kill();
    QVERIFY(ffmpeg.waitForFinished());
    QCOMPARE(framesOfFinishedMovie(movie), std::nullopt);
}

void TestFinishedMovie::framesOfAnMp4_data()
{
    QTest::addColumn<bool>("fastStart");
    QTest::newRow("index at the end") << false;
    QTest::newRow("index at the beginning") << true;
}

/// With a track of timecode besides picture and sound.
void TestFinishedMovie::framesOfAnMp4()
{
    QFETCH(bool, fastStart);
    RecipeMovie movie;
    movie.recipe.extension = QStringLiteral("mp4");
    movie.recipe.video = QStringList{QStringLiteral("-c:v"), QStringLiteral("libx264")};
    movie.recipe.sound = QStringList{QStringLiteral("-c:a"), QStringLiteral("aac")};
    movie.recipe.fastStart = fastStart;
    movie.facts.timecode = QStringLiteral("01:02:03:04");
    movie.frames = frames;
    const QString folder = m_folder.path() + QLatin1Char('/');
    const QString path = file(QStringLiteral("clip.mp4"));
    const MovieSources sources{folder, folder + QStringLiteral("tmp.wav"), 25};
    QCOMPARE(QProcess::execute(
                 QStringLiteral("ffmpeg"),
                 QStringList{QStringLiteral("-y"), QStringLiteral("-v"), QStringLiteral("error")} +
                     recipeArguments(movie, sources, path)),
             0);
    QFile written(path);
    QVERIFY(written.open(QIODevice::ReadOnly));
    const QByteArray content = written.readAll();
    QCOMPARE(framesOfFinishedMovie(path), std::optional<quint64>(frames));
    QCOMPARE(content.indexOf("moov") < content.indexOf("mdat"), fastStart);
    for (qsizetype length = 0; length < content.size(); length += 1 + content.size() / 500)
        QCOMPARE(framesOfFinishedMovie(write(content.left(length))), std::nullopt);
}

void TestFinishedMovie::longMovieOfSeveralParts()
{
    const QByteArray part("RIFF\x08\0\0\0AVIX1234", 16);
    QCOMPARE(framesOfFinishedMovie(write(fakeMovie(90000) + part + part)),
             std::optional<quint64>(90000));
    QCOMPARE(framesOfFinishedMovie(write(fakeMovie(90000) + part + part.chopped(1))), std::nullopt);
}

void TestFinishedMovie::atomOfAHugeLength()
{
    // Frames of more than 4 GiB are in an atom of a 64-bit length.
    const QByteArray before("\0\0\0\1mdat\0\0\0\0\0\0\0\x14"
                            "data",
                            20);
    const QByteArray endless("\0\0\0\1mdat\xff\xff\xff\xff\xff\xff\xff\xff"
                             "data",
                             20);
    const QByteArray movie = encoded(MovieFormatMOV, MovieQualityHigh, false);
    QCOMPARE(framesOfFinishedMovie(write(before + movie)), std::optional<quint64>(frames));
    QCOMPARE(framesOfFinishedMovie(write(endless + movie)), std::nullopt);
}

void TestFinishedMovie::noMovie_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("empty file") << QByteArray();
    QTest::newRow("text") << QByteArray("this is a letter\n");
    QTest::newRow("zeros") << QByteArray(100000, '\0');
    QTest::newRow("sound alone") << QByteArray("RIFF\x04\0\0\0WAVE", 12);
    QTest::newRow("atoms without a movie") << QByteArray("\0\0\0\x08"
                                                         "free\0\0\0\x08"
                                                         "mdat",
                                                         16);
    QTest::newRow("movie without a track") << QByteArray("\0\0\0\x08"
                                                         "moov",
                                                         8);
}

void TestFinishedMovie::noMovie()
{
    QFETCH(QByteArray, content);
    QCOMPARE(framesOfFinishedMovie(write(content)), std::nullopt);
    QCOMPARE(framesOfFinishedMovie(file(QStringLiteral("nowhere.mov"))), std::nullopt);
}

FILMWRIGHT_TEST(TestFinishedMovie, QCoreApplication)
#include "tst_finishedmovie.moc"
