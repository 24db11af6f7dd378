// SPDX-License-Identifier: MIT
#include "encoding/ffmpegtask.h"
#include "encoding/framerate.h"
#include "encoding/recipemovie.h"
#include "support/testprogram.h"
#include "support/toolfolder.h"
#include "support/words.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QtEndian>

using namespace filmwright;

namespace {

RecipeMovie plainMovie()
{
    RecipeMovie movie;
    movie.recipe.extension = QStringLiteral("mov");
    movie.recipe.video = words(QStringLiteral("-c:v x -pix_fmt yuv422p10le"));
    movie.recipe.sound = words(QStringLiteral("-c:a pcm_s16le"));
    movie.frames = 10;
    return movie;
}

const QString colours =
    QStringLiteral("scale=out_color_matrix=bt709:out_range=tv,"
                   "setparams=range=tv:colorspace=bt709:color_primaries=bt709:color_trc=bt709");

} // namespace

class TestRecipeMovie : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void exactRates_data();
    void exactRates();
    void soundAsLongAsThePicture_data();
    void soundAsLongAsThePicture();
    void plainArguments();
    void rawVideoComesInByAPipe();
    void soundIsCutAndFilled();
    void strangeSoundIsTakenAsItIs();
    void silentRecipeReadsNoSound();
    void rgbKeepsItsSamples();
    void halfSizeIsCutToEvenSides();
    void tableOfColoursComesBeforeTheMatrix();
    void tablesNameMeansNothingToTheFilters();
    void aviHasNoFlags();
    void fastStart();
    void factsAreTold();
    void timecodeEndsWhereItsCounterDoes();
    void taskMakesTheMovieByTheRecipe();

private:
    QString sound(quint32 sampleRate) const
    {
        QFile file(m_folder.filePath(QStringLiteral("tmp.wav")));
        QByteArray head = QByteArray("RIFF\0\0\0\0WAVEfmt \x10\0\0\0\1\0\2\0", 24);
        head.resize(44);
        qToLittleEndian(sampleRate, head.data() + 24);
        if (file.open(QIODevice::WriteOnly))
            file.write(head);
        return file.fileName();
    }

    QTemporaryDir m_folder;
};

void TestRecipeMovie::exactRates_data()
{
    QTest::addColumn<float>("recorded");
    QTest::addColumn<QString>("rate");
    QTest::newRow("24") << 24.0F << "24";
    QTest::newRow("23.976") << 23.976F << "24000/1001";
    QTest::newRow("23.98") << 23.98F << "24000/1001";
    QTest::newRow("25") << 25.0F << "25";
    QTest::newRow("24.996, within the bound") << 24.996F << "25";
    QTest::newRow("29.97") << 29.97F << "30000/1001";
    QTest::newRow("47.952") << 47.952F << "48000/1001";
    QTest::newRow("50") << 50.0F << "50";
    QTest::newRow("59.94") << 59.94F << "60000/1001";
    QTest::newRow("119.88") << 119.88F << "120000/1001";
    QTest::newRow("1") << 1.0F << "1";
    QTest::newRow("1, as broadcast has it") << 0.999F << "1000/1001";
    QTest::newRow("12.5") << 12.5F << "25/2";
    QTest::newRow("24.01, beyond the bound") << 24.01F << "2401/100";
    QTest::newRow("22.222") << 22.222F << "11111/500";
    QTest::newRow("the least") << 0.005F << "1/200";
}

void TestRecipeMovie::exactRates()
{
    QFETCH(float, recorded);
    QTEST(exactRate(recorded).text(), "rate");
}

void TestRecipeMovie::soundAsLongAsThePicture_data()
{
    QTest::addColumn<float>("fps");
    QTest::addColumn<quint64>("frames");
    QTest::addColumn<quint64>("samples");
    QTest::newRow("24") << 24.0F << quint64(10) << quint64(20000);
    QTest::newRow("23.976") << 23.976F << quint64(24) << quint64(48048);
    QTest::newRow("29.97, to the nearest") << 29.97F << quint64(1) << quint64(1602);
    QTest::newRow("29.97, 5 frames") << 29.97F << quint64(5) << quint64(8008);
    QTest::newRow("half an hour") << 23.976F << quint64(43157) << quint64(86400314);
}

void TestRecipeMovie::soundAsLongAsThePicture()
{
    QFETCH(float, fps);
    QFETCH(quint64, frames);
    QTEST(exactRate(fps).samplesOf(frames, 48000), "samples");
}

void TestRecipeMovie::plainArguments()
{
    QCOMPARE(recipeArguments(plainMovie(), {QStringLiteral("/t%/"), QString(), 23.976F},
                             QStringLiteral("/c.mov")),
             words(QStringLiteral("-f image2 -framerate 24000/1001 -i /t%%/tmp%06d.tiff -vf ") +
                   colours +
                   QStringLiteral(" -c:v x -pix_fmt yuv422p10le -movflags +write_colr /c.mov")));
}

/// Only frames whose files would have told that their pixels are square say so.
void TestRecipeMovie::rawVideoComesInByAPipe()
{
    const auto arguments = [](const RawVideo &video) {
        return recipeArguments(plainMovie(), {QStringLiteral("/t/"), QString(), 25, video},
                               QStringLiteral("/c.mov"));
    };
    const QString end =
        colours + QStringLiteral(" -c:v x -pix_fmt yuv422p10le -movflags +write_colr /c.mov");
    QCOMPARE(arguments({{1920, 1080}, 16, true}),
             words(QStringLiteral("-f rawvideo -pixel_format rgb48 -video_size 1920x1080 "
                                  "-framerate 25 -i pipe:0 -vf setsar=1,") +
                   end));
    QCOMPARE(arguments({{320, 192}, 8, false}),
             words(QStringLiteral("-f rawvideo -pixel_format rgb24 -video_size 320x192 "
                                  "-framerate 25 -i pipe:0 -vf ") +
                   end));
}

void TestRecipeMovie::soundIsCutAndFilled()
{
    const QString wav = sound(48000);
    QCOMPARE(
        recipeArguments(plainMovie(), {QStringLiteral("/t/"), wav, 25}, QStringLiteral("/c.mov")),
        words(QStringLiteral("-f image2 -framerate 25 -i /t/tmp%06d.tiff -i ") + wav +
              QStringLiteral(" -vf ") + colours +
              QStringLiteral(" -c:v x -pix_fmt yuv422p10le -c:a pcm_s16le -af "
                             "apad=whole_len=19200,atrim=end_sample=19200 -movflags "
                             "+write_colr /c.mov")));
}

void TestRecipeMovie::strangeSoundIsTakenAsItIs()
{
    QVERIFY(!recipeArguments(plainMovie(), {QStringLiteral("/t/"), sound(0), 25}, QString())
                 .contains(QStringLiteral("-af")));
    QFile file(m_folder.filePath(QStringLiteral("tmp.wav")));
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write("RIFF") == 4);
    file.close();
    const QStringList arguments =
        recipeArguments(plainMovie(), {QStringLiteral("/t/"), file.fileName(), 25}, QString());
    QVERIFY(arguments.contains(QStringLiteral("-c:a")));
    QVERIFY(!arguments.contains(QStringLiteral("-af")));
}

void TestRecipeMovie::silentRecipeReadsNoSound()
{
    RecipeMovie movie = plainMovie();
    movie.recipe.sound.clear();
    QCOMPARE(recipeArguments(movie, {QStringLiteral("/t/"), sound(48000), 25}, QString())
                 .count(QStringLiteral("-i")),
             1);
}

void TestRecipeMovie::rgbKeepsItsSamples()
{
    RecipeMovie movie = plainMovie();
    for (const char *format : {"gbrp16le", "rgb48le", "bgr0"}) {
        movie.recipe.video = QStringList{QStringLiteral("-c:v"), QStringLiteral("ffv1"),
                                         QStringLiteral("-pix_fmt"), QString::fromUtf8(format)};
        const QStringList arguments =
            recipeArguments(movie, {QStringLiteral("/t/"), QString(), 25}, QString());
        QCOMPARE(arguments.at(arguments.indexOf(QStringLiteral("-vf")) + 1),
                 QStringLiteral("setparams=range=pc:colorspace=gbr:color_primaries=bt709:"
                                "color_trc=bt709"));
    }
}

void TestRecipeMovie::halfSizeIsCutToEvenSides()
{
    RecipeMovie movie = plainMovie();
    movie.recipe.develop = QStringList{QStringLiteral("-h")};
    const QStringList arguments =
        recipeArguments(movie, {QStringLiteral("/t/"), QString(), 25}, QString());
    QCOMPARE(arguments.at(arguments.indexOf(QStringLiteral("-vf")) + 1),
             QStringLiteral("crop=floor(iw/2)*2:floor(ih/2)*2,") + colours);
}

void TestRecipeMovie::tableOfColoursComesBeforeTheMatrix()
{
    RecipeMovie movie = plainMovie();
    movie.recipe.develop = QStringList{QStringLiteral("-h")};
    movie.lut = QStringLiteral("/t/colours.cube");
    const QStringList arguments =
        recipeArguments(movie, {QStringLiteral("/t/"), QString(), 25}, QString());
    QCOMPARE(arguments.at(arguments.indexOf(QStringLiteral("-vf")) + 1),
             QStringLiteral("crop=floor(iw/2)*2:floor(ih/2)*2,"
                            "lut3d=file=/t/colours.cube:interp=tetrahedral,") +
                 colours);
}

/// The folder has the recording's name, which is anybody's.
void TestRecipeMovie::tablesNameMeansNothingToTheFilters()
{
    RecipeMovie movie = plainMovie();
    movie.lut = QStringLiteral("/a'b, c:[d];e\\f=é%.cube");
    const QStringList arguments =
        recipeArguments(movie, {QStringLiteral("/t/"), QString(), 25}, QString());
    QVERIFY(arguments.contains(
        QStringLiteral(
            "lut3d=file=/a\\\\\\'b\\\\\\,\\\\\\ c\\\\\\:\\\\\\[d\\\\\\]\\\\\\;e\\\\\\\\f\\\\\\=é"
            "\\\\\\%.cube:interp=tetrahedral,") +
        colours));
}

void TestRecipeMovie::aviHasNoFlags()
{
    RecipeMovie movie = plainMovie();
    movie.recipe.extension = QStringLiteral("avi");
    QVERIFY(!recipeArguments(movie, {QStringLiteral("/t/"), QString(), 25}, QString())
                 .contains(QStringLiteral("-movflags")));
}

void TestRecipeMovie::fastStart()
{
    RecipeMovie movie = plainMovie();
    movie.recipe.fastStart = true;
    QVERIFY(recipeArguments(movie, {QStringLiteral("/t/"), QString(), 25}, QString())
                .contains(QStringLiteral("+write_colr+faststart")));
}

void TestRecipeMovie::factsAreTold()
{
    RecipeMovie movie = plainMovie();
    movie.facts = {QStringLiteral("14:30:02:00"), QStringLiteral("2026-05-01T14:30:02Z"),
                   QStringLiteral("Canon"),       QStringLiteral("Canon EOS 5D"),
                   QStringLiteral("50 mm, f/4"),  QStringLiteral("M01-1430")};
    const QStringList arguments =
        recipeArguments(movie, {QStringLiteral("/t/"), QString(), 25}, QStringLiteral("/c.mov"));
    const QStringList expected{
        QStringLiteral("-timecode"),     QStringLiteral("14:30:02:00"),
        QStringLiteral("-metadata"),     QStringLiteral("creation_time=2026-05-01T14:30:02Z"),
        QStringLiteral("-metadata"),     QStringLiteral("make=Canon"),
        QStringLiteral("-metadata"),     QStringLiteral("model=Canon EOS 5D"),
        QStringLiteral("-metadata"),     QStringLiteral("comment=50 mm, f/4"),
        QStringLiteral("-metadata:s:v"), QStringLiteral("reel_name=M01-1430"),
        QStringLiteral("/c.mov")};
    QCOMPARE(arguments.mid(arguments.indexOf(QStringLiteral("-timecode"))), expected);
}

void TestRecipeMovie::timecodeEndsWhereItsCounterDoes()
{
    RecipeMovie movie = plainMovie();
    movie.facts.timecode = QStringLiteral("14:30:02:00");
    for (const float fps : {255.0F, 256.0F}) {
        QCOMPARE(recipeArguments(movie, {QStringLiteral("/t/"), QString(), fps}, QString())
                     .contains(QStringLiteral("-timecode")),
                 fps < 256);
    }
}

void TestRecipeMovie::taskMakesTheMovieByTheRecipe()
{
    ToolFolder tools;
    tools.addTool(QStringLiteral("ffmpeg"), QString());
    const auto task = FFmpegTask::ffmpegTask();
    task->setTiffsDirectory(QStringLiteral("/t/"));
    task->setMlvPath(m_folder.filePath(QStringLiteral("clip.MLV")));
    task->setFps(25);
    task->setRecipeMovie(plainMovie());
    const QString movie = m_folder.filePath(QStringLiteral("clip.mov"));
    QCOMPARE(task->moviePath(), movie);
    task->buildMovie();
    QTRY_COMPARE(tools.calls(QStringLiteral("ffmpeg")),
                 QList<QStringList>{
                     recipeArguments(plainMovie(), {QStringLiteral("/t/"), QString(), 25}, movie)});
    QTRY_VERIFY(!task->isRunning());
}

FILMWRIGHT_TEST(TestRecipeMovie, QCoreApplication)
#include "tst_recipemovie.moc"
