// SPDX-License-Identifier: MIT
// Movies by every bundled recipe, made by the real tools, and what readers of movies say of them.

#include "commandline.h"
#include "metadata.h"
#include "sample.h"
#include "support/programrun.h"
#include "support/testprogram.h"
#include "support/toolfolder.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QMap>
#include <QRegularExpression>
#include <QTest>

#include <csignal>

namespace {

constexpr int movieFrameCount = 6;

QString tag(const QJsonObject &stream, const char *key)
{
    return text(stream.value(QStringLiteral("tags")).toObject(), key);
}

/// The least luma PSNR among the frames of a movie, in decibels, against the developed frames, both
/// as BT.709 of 16 bits.
double leastPsnr(const QString &movie, const QString &frameFolder, const QString &range)
{
    const QString same = QStringLiteral("out_color_matrix=bt709:out_range=tv,format=yuv444p16le");
    const QString graph =
        QStringLiteral("[0:v]scale=in_color_matrix=bt709:in_range=%1:%2[a];[1:v]scale=%2[b];"
                       "[a][b]psnr=stats_file=-")
            .arg(range, same);
    const QByteArray statistics =
        outputOf(QStringLiteral("ffmpeg"),
                 {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-i"), movie,
                  QStringLiteral("-f"), QStringLiteral("image2"), QStringLiteral("-framerate"),
                  QStringLiteral("24000/1001"), QStringLiteral("-i"),
                  frameFolder + QStringLiteral("/tmp%06d.tiff"), QStringLiteral("-lavfi"), graph,
                  QStringLiteral("-f"), QStringLiteral("null"), QStringLiteral("-")});
    static const QRegularExpression luma(QStringLiteral("psnr_y:(\\S+)"));
    auto matches = luma.globalMatch(QString::fromUtf8(statistics));
    double least = 1000;
    int compared = 0;
    for (; matches.hasNext(); ++compared) {
        const QString value = matches.next().captured(1);
        least = std::min(least, value == QLatin1String("inf") ? 999 : value.toDouble());
    }
    return compared == movieFrameCount ? least : 0;
}

} // namespace

class TestRecipes : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();

    void everyRecipe_data();
    void everyRecipe();
    void picturesAreThoseOfTheFrames_data();
    void picturesAreThoseOfTheFrames();
    void colourIsTheDefaultsColour();
    void neighboursAreMergedWith16Bits();
    void halfOfAnEvenSideIsOdd();
    void shortAndLongSoundFitThePicture_data();
    void shortAndLongSoundFitThePicture();
    void interruptedWorkOfTheDefaultIsNotTaken();
    void reportNamesTheRecipe();
    void listOfRecipes();
    void missingEncoderIsToldBeforeTheWork();
    void pixelFormatThatTheEncoderLacksIsToldBeforeTheWork();
    void slipIsToldBeforeTheWork();

private:
    QString file(const QString &name) const { return m_folder.filePath(name); }

    QTemporaryDir m_folder;
};

void TestRecipes::initTestCase()
{
    const QString options =
        QStringLiteral("--size 320x192 --frames %1 --fps 23.976").arg(movieFrameCount);
    QVERIFY(writeSample(file(QStringLiteral("sound.MLV")), options));
    QVERIFY(writeSample(file(QStringLiteral("squeezed.MLV")),
                        options + QStringLiteral(" --no-sound --sampling 5x3")));
}

void TestRecipes::everyRecipe_data()
{
    QTest::addColumn<QString>("recipe");
    QTest::addColumn<QString>("recording");
    QTest::addColumn<QString>("movie");
    QTest::addColumn<QString>("codec");
    QTest::addColumn<QString>("profile");
    QTest::addColumn<QString>("pixelFormat");
    QTest::addColumn<QString>("sound");
    const auto row = [](const char *recipe, const char *extension, const char *codec,
                        const char *profile, const char *pixelFormat, const char *sound) {
        QTest::addRow("%s, sound", recipe)
            << recipe << "sound" << extension << codec << profile << pixelFormat << sound;
        QTest::addRow("%s, squeezed", recipe)
            << recipe << "squeezed" << extension << codec << profile << pixelFormat << "";
    };
    row("prores-lt", "mov", "prores", "LT", "yuv422p10le", "pcm_s16le");
    row("prores-hq", "mov", "prores", "HQ", "yuv422p10le", "pcm_s16le");
    // Whose decoder gives 12 bits, whatever was encoded.
    row("prores-4444", "mov", "prores", "4444", "yuv444p12le", "pcm_s16le");
    row("dnxhr-hqx", "mov", "dnxhd", "DNXHR HQX", "yuv422p10le", "pcm_s16le");
    row("hevc-10", "mov", "hevc", "Main 10", "yuv420p10le", "aac");
    row("ffv1", "avi", "ffv1", "", "gbrp16le", "pcm_s16le");
    row("web", "mp4", "h264", "High", "yuv420p", "aac");
    row("draft", "draft.mov", "h264", "High", "yuv420p", "aac");
}

void TestRecipes::everyRecipe()
{
    QFETCH(QString, recipe);
    QFETCH(QString, recording);
    QFETCH(QString, movie);
    QFETCH(QString, profile);
    QFETCH(QString, sound);
    CommandLine cli;
    QVERIFY(cli.run({QStringLiteral("convert"), QStringLiteral("--recipe"), recipe,
                     file(recording + QStringLiteral(".MLV"))}));
    const QString path = file(recording + QLatin1Char('.') + movie);
    QCOMPARE(cli.output(), QStringList{path});
    QCOMPARE(cli.status(), 0);
    QCOMPARE(cli.temporaryEntries(), QStringList());

    const Movie made = Movie::probe(path);
    const bool isAvi = recipe == QLatin1String("ffv1");
    QTEST(text(made.video, "codec_name"), "codec");
    if (!profile.isEmpty())
        QCOMPARE(text(made.video, "profile"), profile);
    QTEST(text(made.video, "pix_fmt"), "pixelFormat");
    QCOMPARE(made.frames(), movieFrameCount);
    const int scale = recipe == QLatin1String("draft") ? 2 : 1;
    QCOMPARE(made.video.value(QStringLiteral("width")).toInt(), 320 / scale);
    QCOMPARE(made.video.value(QStringLiteral("height")).toInt(),
             (recording == QLatin1String("squeezed") ? 320 : 192) / scale);
    QCOMPARE(text(made.video, "r_frame_rate"), QStringLiteral("24000/1001"));
    QCOMPARE(text(made.video, "avg_frame_rate"), QStringLiteral("24000/1001"));
    if (!isAvi) {
        // ProRes knows no other range and can't tell it; ffprobe 7 then tells none.
        const QString range = text(made.video, "color_range");
        if (!recipe.startsWith(QLatin1String("prores")) || !range.isEmpty())
            QCOMPARE(range, QStringLiteral("tv"));
        for (const char *key : {"color_space", "color_transfer", "color_primaries"})
            QCOMPARE(text(made.video, key), QStringLiteral("bt709"));
        QCOMPARE(tag(made.video, "timecode"), QStringLiteral("14:30:00:00"));
        QFile content(path);
        QVERIFY(content.open(QIODevice::ReadOnly));
        QVERIFY(content.readAll().contains("colr"));
    }

    const QJsonObject exif = exifOf(path);
    QVERIFY(text(exif, "Comment").contains(QLatin1String("ISO 100, 1/48 s")));
    if (isAvi)
        QCOMPARE(text(exif, "TimeCode"), QStringLiteral("14:30:00:00"));
    else
        QCOMPARE(text(exif, "CreateDate"), QStringLiteral("2026:03:21 14:30:00"));
    if (movie.endsWith(QLatin1String("mov"))) {
        QCOMPARE(text(exif, "Make"), QStringLiteral("Filmwright"));
        QCOMPARE(text(exif, "Model"), QStringLiteral("Filmwright Sample"));
        const auto reel =
            std::find_if(made.sound.cbegin(), made.sound.cend(), [](const QJsonObject &stream) {
                return !tag(stream, "reel_name").isEmpty();
            });
        QVERIFY(reel != made.sound.cend());
        QCOMPARE(tag(*reel, "reel_name"), recording);
    }

    QStringList codecs;
    for (const QJsonObject &stream : made.sound) {
        if (text(stream, "codec_type") != QLatin1String("audio"))
            continue;
        codecs << text(stream, "codec_name");
        if (isAvi)
            continue;
        // 2002 samples a frame; the container tells the end of AAC to the millisecond.
        const int samples = stream.value(QStringLiteral("duration_ts")).toInt();
        QVERIFY(std::abs(samples - 2002 * movieFrameCount) <=
                (sound == QLatin1String("aac") ? 48 : 0));
    }
    QCOMPARE(codecs, sound.isEmpty() ? QStringList() : QStringList{sound});
}

void TestRecipes::picturesAreThoseOfTheFrames_data()
{
    QTest::addColumn<QString>("range");
    QTest::addColumn<double>("least");
    QTest::newRow("prores-hq") << "tv" << 45.0;
    QTest::newRow("dnxhr-hqx") << "tv" << 45.0;
    QTest::newRow("ffv1") << "pc" << 999.0; // no sample differs
}

void TestRecipes::picturesAreThoseOfTheFrames()
{
    QFETCH(QString, range);
    QFETCH(double, least);
    const QTemporaryDir work;
    CommandLine cli;
    QVERIFY(
        cli.run({QStringLiteral("convert"), QStringLiteral("--temp-dir"), work.path(),
                 QStringLiteral("--keep-temp"), QStringLiteral("--recipe"),
                 QString::fromUtf8(QTest::currentDataTag()), file(QStringLiteral("sound.MLV"))}));
    QCOMPARE(cli.output().size(), 1);
    const QString tiffs = work.filePath(QStringLiteral("FilmwrightTmp/sound.MLV"));
    const double psnr = leastPsnr(cli.output().constFirst(), tiffs, range);
    QVERIFY2(psnr >= least, qPrintable(QString::number(psnr)));
}

/// The mean colour of patches, as a player shows them, goes by the tags.
void TestRecipes::colourIsTheDefaultsColour()
{
    const QString recording = file(QStringLiteral("look.MLV"));
    QVERIFY(writeSample(recording, QStringLiteral("--size 640x360 --frames 1 --perfect")));
    CommandLine plain;
    QVERIFY(plain.run({QStringLiteral("convert"), QStringLiteral("--format"), QStringLiteral("avi"),
                       QStringLiteral("--quality"), QStringLiteral("maximum"), recording}));
    QMap<QString, Colour> patches;
    for (const char *crop : {"24:24:232:30", "24:24:282:30", "24:24:332:30", "24:24:32:230"}) {
        const Colour colour =
            averageColour(plain.output().constFirst(), 0, QString::fromUtf8(crop));
        QVERIFY(colour.green > 0);
        patches.insert(QString::fromUtf8(crop), colour);
    }
    for (const char *recipe : {"prores-4444", "hevc-10", "web"}) {
        CommandLine cli;
        QVERIFY(cli.run({QStringLiteral("convert"), QStringLiteral("--recipe"),
                         QString::fromUtf8(recipe), recording}));
        for (auto patch = patches.cbegin(); patch != patches.cend(); ++patch) {
            const Colour &wanted = *patch;
            const Colour seen = averageColour(cli.output().constFirst(), 0, patch.key());
            for (const double difference :
                 {seen.red - wanted.red, seen.green - wanted.green, seen.blue - wanted.blue})
                QVERIFY2(std::abs(difference) <= 12,
                         qPrintable(QStringLiteral("%1 %2: %3")
                                        .arg(QString::fromUtf8(recipe), patch.key())
                                        .arg(difference)));
        }
    }
}

void TestRecipes::neighboursAreMergedWith16Bits()
{
    const QTemporaryDir work;
    CommandLine cli;
    QVERIFY(
        cli.run({QStringLiteral("convert"), QStringLiteral("--hdr"), QStringLiteral("--temp-dir"),
                 work.path(), QStringLiteral("--keep-temp"), QStringLiteral("--recipe"),
                 QStringLiteral("ffv1"), file(QStringLiteral("sound.MLV"))}));
    QCOMPARE(Movie::probe(cli.output().value(0)).frames(), movieFrameCount - 1);
    const QJsonObject merged =
        exifOf(work.filePath(QStringLiteral("FilmwrightTmp/sound.MLV/hdr/tmp000000.tiff")));
    QCOMPARE(text(merged, "BitsPerSample"), QStringLiteral("16 16 16"));
}

void TestRecipes::halfOfAnEvenSideIsOdd()
{
    const QString recording = file(QStringLiteral("half.MLV"));
    QVERIFY(writeSample(recording, QStringLiteral("--size 320x198 --frames 2")));
    CommandLine cli;
    QVERIFY(cli.run({QStringLiteral("convert"), QStringLiteral("--recipe"), QStringLiteral("draft"),
                     recording}));
    const Movie movie = Movie::probe(cli.output().value(0));
    QCOMPARE(movie.frames(), 2);
    QCOMPARE(movie.video.value(QStringLiteral("height")).toInt(), 98);
}

void TestRecipes::shortAndLongSoundFitThePicture_data()
{
    QTest::addColumn<QString>("options");
    QTest::newRow("pieces lost at the end") << "--drop-sound 5";
    QTest::newRow("picture lost at the end") << "--drop 5";
    QTest::newRow("sound begins later") << "--sound-delay 100";
    QTest::newRow("29.97") << "--fps 30000/1001";
}

void TestRecipes::shortAndLongSoundFitThePicture()
{
    QFETCH(QString, options);
    const QString recording = file(QStringLiteral("length.MLV"));
    QVERIFY(writeSample(recording, QStringLiteral("--size 320x192 --frames 6 ") + options));
    CommandLine cli;
    QVERIFY(cli.run({QStringLiteral("convert"), QStringLiteral("--recipe"),
                     QStringLiteral("prores-lt"), recording}));
    const Movie movie = Movie::probe(cli.output().value(0));
    const QStringList rate = text(movie.video, "r_frame_rate").split(QLatin1Char('/'));
    const double samples = movie.frames() * 48000.0 * rate.at(1).toInt() / rate.at(0).toInt();
    QVERIFY(!movie.sound.isEmpty());
    QCOMPARE(movie.sound.constFirst().value(QStringLiteral("duration_ts")).toInt(),
             qRound(samples));
}

/// 8-bit frames that another choice has left are not taken for 16-bit ones.
void TestRecipes::interruptedWorkOfTheDefaultIsNotTaken()
{
    const QTemporaryDir work;
    ToolFolder tools;
    for (const char *tool : {"mlv_dump", "dcraw"})
        tools.linkTool(QString::fromUtf8(tool), realTool(QString::fromUtf8(tool)));
    tools.addTool(QStringLiteral("ffmpeg"),
                  QStringLiteral("case $* in *encoder*) exec '%1' \"$@\";; esac; exec sleep 600")
                      .arg(realTool(QStringLiteral("ffmpeg"))));
    const QString recording = file(QStringLiteral("sound.MLV"));
    const auto bits = [&] {
        return text(exifOf(work.filePath(QStringLiteral("FilmwrightTmp/sound.MLV/tmp000000.tiff"))),
                    "BitsPerSample");
    };
    for (const auto &[recipe, expected] :
         {std::pair{"", "8 8 8"}, {"prores-hq", "16 16 16"}, {"", "8 8 8"}}) {
        QStringList arguments{QStringLiteral("convert"), QStringLiteral("--temp-dir"), work.path()};
        if (*recipe)
            arguments << QStringLiteral("--stages") << QStringLiteral("--recipe")
                      << QString::fromUtf8(recipe);
        CommandLine cli;
        cli.start(arguments << recording);
        QVERIFY(cli.waitForMessage(QStringLiteral("encoding")));
        cli.sendSignal(SIGINT);
        QVERIFY(cli.waitForEnd());
        QCOMPARE(cli.status(), 130);
        QCOMPARE(bits(), QString::fromUtf8(expected));
    }
}

void TestRecipes::reportNamesTheRecipe()
{
    const QString report = file(QStringLiteral("report.json"));
    CommandLine cli;
    QVERIFY(cli.run({QStringLiteral("convert"), QStringLiteral("--report"), report,
                     QStringLiteral("--recipe"), QStringLiteral("draft"),
                     file(QStringLiteral("sound.MLV"))}));
    QFile written(report);
    QVERIFY(written.open(QIODevice::ReadOnly));
    const QJsonObject object = QJsonDocument::fromJson(written.readAll()).object();
    QCOMPARE(text(object, "recipe"), QStringLiteral("draft"));
}

void TestRecipes::listOfRecipes()
{
    CommandLine cli;
    QVERIFY(cli.run({QStringLiteral("recipes"), QStringLiteral("--json")}));
    QCOMPARE(cli.status(), 0);
    const QJsonArray recipes =
        QJsonDocument::fromJson(cli.output().join(QLatin1Char('\n')).toUtf8()).array();
    QStringList names;
    for (const QJsonValue &value : recipes) {
        names << text(value.toObject(), "recipe");
        QVERIFY(value.toObject().value(QStringLiteral("problem")).isNull());
    }
    QCOMPARE(names.join(QLatin1Char(' ')),
             QStringLiteral(
                 "cinema-dng dnxhr-hqx draft ffv1 hevc-10 prores-4444 prores-hq prores-lt web"));
    QVERIFY(cli.run({QStringLiteral("recipes")}));
    QCOMPARE(cli.output().constLast(),
             QStringLiteral("web            H.264 for the web (mp4): 8 bits 4:2:0, plays "
                            "everywhere, also while it is being loaded"));
}

void TestRecipes::missingEncoderIsToldBeforeTheWork()
{
    ToolFolder tools;
    tools.addTool(QStringLiteral("mlv_dump"), QStringLiteral("exit 1"));
    tools.addTool(QStringLiteral("dcraw"), QStringLiteral("exit 1"));
    tools.addTool(QStringLiteral("ffmpeg"),
                  QStringLiteral("printf ' ------\\n V..... libx264 H.264\\n A..... aac AAC\\n'"));
    CommandLine cli;
    QVERIFY(cli.run({QStringLiteral("convert"), QStringLiteral("--recipe"),
                     QStringLiteral("prores-hq"), file(QStringLiteral("sound.MLV"))}));
    QCOMPARE(cli.status(), 2);
    QCOMPARE(cli.messages(), QStringList{QStringLiteral(
                                 "filmwright-cli: the recipe prores-hq can't be used: ffmpeg has "
                                 "no encoder \"prores_ks\"")});
    QVERIFY(tools.calls(QStringLiteral("mlv_dump")).isEmpty());
}

void TestRecipes::pixelFormatThatTheEncoderLacksIsToldBeforeTheWork()
{
    const QString recipe = file(QStringLiteral("pixels.recipe"));
    QFile written(recipe);
    QVERIFY(written.open(QIODevice::WriteOnly));
    written.write("[Recipe]\nExtension=mov\nVideo=-c:v prores_ks -pix_fmt yuv420p\n");
    written.close();
    CommandLine cli;
    QVERIFY(cli.run({QStringLiteral("convert"), QStringLiteral("--recipe"), recipe,
                     file(QStringLiteral("sound.MLV"))}));
    QCOMPARE(cli.status(), 2);
    QCOMPARE(cli.messages().size(), 1);
    QVERIFY(cli.messages().constFirst().startsWith(
        QStringLiteral("filmwright-cli: the recipe pixels can't be used: ffmpeg's encoder "
                       "\"prores_ks\" takes no pixels of the format \"yuv420p\", but ")));
    QVERIFY(cli.messages().constFirst().contains(QLatin1String("yuv422p10le")));
}

void TestRecipes::slipIsToldBeforeTheWork()
{
    const QString recipe = file(QStringLiteral("wrong.recipe"));
    QFile written(recipe);
    QVERIFY(written.open(QIODevice::WriteOnly));
    written.write("[Recipe]\nExtension=mov\nVideo=-c:v libx264 /tmp/other.mov\n");
    written.close();
    CommandLine cli;
    QVERIFY(cli.run({QStringLiteral("convert"), QStringLiteral("--recipe"), recipe,
                     file(QStringLiteral("sound.MLV"))}));
    QCOMPARE(cli.status(), 2);
    QCOMPARE(cli.messages(), QStringList{QStringLiteral("filmwright-cli: ") + recipe +
                                         QStringLiteral(":3: \"/tmp/other.mov\" is neither an "
                                                        "option nor an option's value; it would "
                                                        "name another output")});
}

FILMWRIGHT_TEST(TestRecipes, QCoreApplication)
#include "tst_recipes.moc"
