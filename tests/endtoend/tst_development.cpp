// SPDX-License-Identifier: MIT
// What a person chooses for the look and the length of movies, with the real tools.

#include "commandline.h"
#include "sample.h"
#include "support/programrun.h"
#include "support/testprogram.h"
#include "support/toolfolder.h"
#include "support/words.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTest>
#include <QtEndian>

#include <algorithm>
#include <cmath>
#include <csignal>

namespace {

QByteArray decoded(const QString &movie, const QString &options)
{
    return outputOf(realTool(QStringLiteral("ffmpeg")), words(QStringLiteral("-v error -i")) +
                                                            QStringList{movie} + words(options) +
                                                            QStringList{QStringLiteral("-")});
}

/// The samples of the first frame, red, green, blue, 16 bits each.
QList<quint16> firstFrame(const QString &movie)
{
    const QByteArray bytes =
        decoded(movie, QStringLiteral("-frames:v 1 -f rawvideo -pix_fmt rgb48le"));
    QList<quint16> samples(bytes.size() / 2);
    qFromLittleEndian<quint16>(bytes.constData(), samples.size(), samples.data());
    return samples;
}

QByteArray soundOf(const QString &movie)
{
    return decoded(movie, QStringLiteral("-vn -f s16le"));
}

/// The light behind a developed sample of 16 bits: the curve of BT.709, backwards.
double lightOf(quint16 sample)
{
    constexpr double knee = 0.018053968510807452;
    constexpr double offset = 0.099296826809441;
    const double value = (sample + 0.5) / 65536;
    return value < 4.5 * knee ? value / 4.5 : std::pow((value + offset) / (1 + offset), 1 / 0.45);
}

/// A table that leads from every colour to itself, or to the one with its channels in that order.
QByteArray table(const QByteArray &order = "rgb", const QByteArray &head = {})
{
    constexpr int side = 17;
    QByteArray text = "LUT_3D_SIZE " + QByteArray::number(side) + '\n' + head;
    for (int i = 0; i < side * side * side; ++i) {
        const double r = i % side / (side - 1.0);
        const double g = i / side % side / (side - 1.0);
        const double b = i / side / side / (side - 1.0);
        for (const char channel : order)
            text += QByteArray::number(channel == 'r' ? r : channel == 'g' ? g : b, 'g', 9) + ' ';
        text += '\n';
    }
    return text;
}

} // namespace

class TestDevelopment : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void exposureMultipliesTheLight_data();
    void exposureMultipliesTheLight();
    void ordinaryMoviesAreBrighterToo();
    void clippedWhiteStaysWhite_data();
    void clippedWhiteStaysWhite();
    void whiteBalanceReachesTheMovie();
    void framesAreThoseOfTheWholeMovie_data();
    void framesAreThoseOfTheWholeMovie();
    void ordinaryMoviesAreCutToTheFrame_data();
    void ordinaryMoviesAreCutToTheFrame();
    void framesOfATreatedRecording_data();
    void framesOfATreatedRecording();
    void gapsCountAsFrames();
    void shortRecordingFailsAloneInABatch();
    void movieOfOtherChoicesIsNotSkipped();
    void unfinishedWorkOfOtherChoicesIsNotTaken();
    void tableThatChangesNothing();
    void tableWithAHostileNameIsApplied();
    void tableOfAGradingProgramIsRead();
    void reportTellsTheChoices();
    void wrongChoicesAreRefusedBeforeTheWork_data();
    void wrongChoicesAreRefusedBeforeTheWork();

private:
    QString path(const QString &name) const { return m_folder->filePath(name); }
    QString sample(const QString &options, const QString &name = QStringLiteral("clip.MLV")) const
    {
        if (!writeSample(path(name), options))
            qFatal("no sample");
        return path(name);
    }
    QString write(const QString &name, const QByteArray &content) const
    {
        QFile file(path(name));
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
            qFatal("no file");
        return file.fileName();
    }
    /// The movie of a run with these options; what went wrong when there is none.
    QString convert(const QStringList &options, const QString &recording) const
    {
        CommandLine cli;
        if (!cli.run(QStringList{QStringLiteral("convert")} + options + QStringList{recording}) ||
            cli.status() != 0 || cli.output().size() != 1)
            return cli.messages().join(QLatin1Char('\n'));
        return cli.output().constFirst();
    }
    QString convert(const QString &options, const QString &recording) const
    {
        return convert(words(options), recording);
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void TestDevelopment::exposureMultipliesTheLight_data()
{
    QTest::addColumn<QString>("exposure");
    QTest::addColumn<double>("factor");
    QTest::newRow("1") << "1" << 2.0;
    QTest::newRow("+3") << "+3" << 8.0;
    QTest::newRow("-1") << "-1" << 0.5;
    QTest::newRow("-3") << "-3" << 0.125;
    QTest::newRow("0.333") << "0.333" << std::exp2(0.333);
}

void TestDevelopment::exposureMultipliesTheLight()
{
    QFETCH(QString, exposure);
    QFETCH(double, factor);
    const QString recording = sample(QStringLiteral("--size 320x192 --frames 1 --no-sound"));
    const auto plain = firstFrame(convert(QStringLiteral("--recipe ffv1"), recording));
    const auto changed =
        firstFrame(convert(QStringLiteral("--recipe ffv1 --exposure ") + exposure, recording));
    QCOMPARE(plain.size(), 320 * 192 * 3);
    QCOMPARE(changed.size(), plain.size());
    double before = 0;
    double after = 0;
    int compared = 0;
    for (qsizetype i = 0; i < plain.size(); ++i) {
        const auto [darker, brighter] = std::minmax(plain.at(i), changed.at(i));
        if (brighter == 65535)
            continue; // clipped
        const double light = lightOf(plain.at(i));
        before += light;
        after += lightOf(changed.at(i));
        if (darker > 2000) { // a sample is a step of less than 1 in 400 there
            ++compared;
            QVERIFY(std::abs(lightOf(changed.at(i)) / light / factor - 1) < 0.01);
        }
    }
    QVERIFY(compared > 10000);
    QVERIFY2(std::abs(after / before / factor - 1) < 0.01,
             qPrintable(QString::number(after / before)));
}

void TestDevelopment::ordinaryMoviesAreBrighterToo()
{
    const QString recording = sample(QStringLiteral("--size 320x192 --frames 2 --no-sound"));
    for (const char *kind : {"--format mov", "--format avi", "--format avi --quality maximum"}) {
        const QString options = QString::fromLatin1(kind);
        const QString grey = QStringLiteral("14:10:84:52"); // a step of the ramp
        const Colour plain = averageColour(convert(options, recording), 1, grey);
        const Colour brighter =
            averageColour(convert(options + QStringLiteral(" --exposure 1"), recording), 1, grey);
        const auto light = [](double value) { return lightOf(static_cast<quint16>(value * 257)); };
        const double ratio = light(brighter.green) / light(plain.green);
        QVERIFY2(std::abs(ratio / 2 - 1) < 0.1, qPrintable(QString::number(ratio)));
    }
}

void TestDevelopment::clippedWhiteStaysWhite_data()
{
    QTest::addColumn<QString>("exposure");
    for (const char *exposure : {"2", "0", "-1", "-2", "-3"})
        QTest::newRow(exposure) << QString::fromLatin1(exposure);
}

/// The sensor clips at one level for all colours, which is far from white in lamplight.
void TestDevelopment::clippedWhiteStaysWhite()
{
    QFETCH(QString, exposure);
    const QString recording =
        sample(QStringLiteral("--size 640x360 --frames 2 --no-sound --light 1.2,0.6,0.3 "
                              "--clip 5500"));
    const auto pixels = firstFrame(convert(
        QStringLiteral("--recipe ffv1 --white-balance auto --exposure ") + exposure, recording));
    QCOMPARE(pixels.size(), 640 * 360 * 3);
    // The white end of the ramp of greys; what dcraw rebuilds has a pixel's noise in its colour.
    QList<double> mean{0, 0, 0};
    constexpr int left = 30;
    constexpr int top = 96;
    constexpr int side = 28;
    for (int y = top; y < top + side; ++y) {
        for (int x = left; x < left + side; ++x)
            for (int channel = 0; channel < 3; ++channel)
                mean[channel] += pixels.at((y * 640 + x) * 3 + channel) / 257.0 / (side * side);
    }
    const auto [least, most] = std::minmax_element(mean.cbegin(), mean.cend());
    QVERIFY2(*most - *least <= 4, qPrintable(QString::number(*most - *least)));
    if (exposure.toDouble() >= 0)
        QCOMPARE(*least, 255.0);
}

void TestDevelopment::whiteBalanceReachesTheMovie()
{
    const QString recording =
        sample(QStringLiteral("--size 320x192 --frames 2 --flat --iso 400 --light 1.2,0.6,0.22"));
    const auto spread = [&](const QString &options) {
        const Colour colour =
            averageColour(convert(options, recording), 1, QStringLiteral("260:150:30:20"));
        return std::max({colour.red, colour.green, colour.blue}) -
               std::min({colour.red, colour.green, colour.blue});
    };
    QVERIFY(spread(QString()) > 20);
    QVERIFY(spread(QStringLiteral("--white-balance auto")) <= 2);
    QVERIFY(spread(QStringLiteral("--white-balance 2.4,1,1.8")) > 20);
}

void TestDevelopment::framesAreThoseOfTheWholeMovie_data()
{
    QTest::addColumn<QString>("selection");
    QTest::addColumn<int>("first");
    QTest::addColumn<int>("count");
    QTest::newRow("3-5") << "3-5" << 3 << 3;
    QTest::newRow("-4") << "-4" << 1 << 4;
    QTest::newRow("8-") << "8-" << 8 << 3;
    QTest::newRow("1-1") << "1-1" << 1 << 1;
    QTest::newRow("10-10") << "10-10" << 10 << 1;
}

void TestDevelopment::framesAreThoseOfTheWholeMovie()
{
    QFETCH(QString, selection);
    QFETCH(int, first);
    QFETCH(int, count);
    const QString recording = sample(QStringLiteral("--size 320x192 --frames 10 --fps 23.976"));
    const QString recipe = QStringLiteral("--recipe prores-lt");
    const QString whole = convert(recipe, recording);
    const QList<QByteArray> frames = lumaFrames(whole);
    const QByteArray sound = soundOf(whole);
    constexpr qsizetype frameOfSound = 2002 * 4; // samples of two channels
    QCOMPARE(sound.size(), 10 * frameOfSound);

    const QString part = convert(recipe + QStringLiteral(" --frames ") + selection, recording);
    QCOMPARE(lumaFrames(part), frames.mid(first - 1, count));
    QCOMPARE(soundOf(part), sound.mid((first - 1) * frameOfSound, count * frameOfSound));
    QCOMPARE(Movie::probe(part)
                 .video.value(QStringLiteral("tags"))
                 .toObject()
                 .value(QStringLiteral("timecode"))
                 .toString(),
             QStringLiteral("14:30:00:%1").arg(first - 1, 2, 10, QLatin1Char('0')));
}

void TestDevelopment::ordinaryMoviesAreCutToTheFrame_data()
{
    QTest::addColumn<QString>("options");
    QTest::newRow("mov") << "--format mov";
    QTest::newRow("mov, maximum") << "--format mov --quality maximum";
    QTest::newRow("avi") << "--format avi";
    QTest::newRow("avi, maximum") << "--format avi --quality maximum";
}

void TestDevelopment::ordinaryMoviesAreCutToTheFrame()
{
    QFETCH(QString, options);
    const QString recording = sample(QStringLiteral("--size 320x192 --frames 10 --fps 25"));
    const QByteArray sound = soundOf(convert(options, recording));
    const QString part = convert(options + QStringLiteral(" --frames 3-6"), recording);
    QCOMPARE(Movie::probe(part).frames(), 4);
    if (!options.contains(QLatin1String("avi")))
        return; // AAC has a length of its own
    constexpr qsizetype frameOfSound = 1920 * 4;
    QCOMPARE(soundOf(part), sound.mid(2 * frameOfSound, 4 * frameOfSound));
}

void TestDevelopment::framesOfATreatedRecording_data()
{
    QTest::addColumn<QString>("recording");
    QTest::addColumn<QString>("options");
    QTest::addColumn<int>("count");
    QTest::newRow("merged neighbours") << "--hdr 3"
                                       << "--hdr" << 3;
    QTest::newRow("blended rows") << "--dual-iso 100/800"
                                  << "--dual-iso" << 4;
    QTest::newRow("dark") << ""
                          << "--dark DARK" << 4;
    QTest::newRow("repaired") << "--hot 10"
                              << "--repair-pixels auto" << 4;
    QTest::newRow("several at once") << ""
                                     << "--jobs 3" << 4;
}

void TestDevelopment::framesOfATreatedRecording()
{
    QFETCH(QString, recording);
    QFETCH(QString, options);
    QFETCH(int, count);
    const QString dark =
        sample(QStringLiteral("--size 320x192 --frames 3 --dark"), QStringLiteral("dark.MLV"));
    const QString clip = sample(QStringLiteral("--size 320x192 --frames 8 ") + recording);
    const QString movie = convert(QString(options).replace(QLatin1String("DARK"), dark) +
                                      QStringLiteral(" --frames 3-6 --white-balance auto"),
                                  clip);
    QCOMPARE(movie, path(QStringLiteral("clip.mov")));
    QCOMPARE(Movie::probe(movie).frames(), count);
}

void TestDevelopment::gapsCountAsFrames()
{
    const QString recording =
        sample(QStringLiteral("--size 320x192 --frames 10 --drop 3-5 --no-sound"));
    QCOMPARE(Movie::probe(convert(QStringLiteral("--frames 8-10"), recording)).frames(), 3);
    CommandLine info;
    QVERIFY(info.run({QStringLiteral("info"), QStringLiteral("--json"), recording}));
    const QJsonObject told = QJsonDocument::fromJson(info.output().join(QLatin1Char('\n')).toUtf8())
                                 .array()
                                 .at(0)
                                 .toObject();
    QCOMPARE(told.value(QStringLiteral("videoFrames")).toInt(), 7);
    QCOMPARE(told.value(QStringLiteral("movieFrames")).toInt(), 10);
    QVERIFY(convert(QStringLiteral("--frames 8-11"), recording)
                .contains(QLatin1String("the frames 8-11 are asked for, but it has only 10")));
}

void TestDevelopment::shortRecordingFailsAloneInABatch()
{
    sample(QStringLiteral("--size 320x192 --frames 4 --no-sound"), QStringLiteral("a.MLV"));
    sample(QStringLiteral("--size 320x192 --frames 8 --no-sound"), QStringLiteral("b.MLV"));
    CommandLine cli;
    QVERIFY(cli.run({QStringLiteral("convert"), QStringLiteral("--frames"), QStringLiteral("3-6"),
                     m_folder->path()}));
    QCOMPARE(cli.status(), 1);
    QCOMPARE(cli.output(), QStringList{path(QStringLiteral("b.mov"))});
    QCOMPARE(Movie::probe(cli.output().constFirst()).frames(), 4);
    QVERIFY(cli.table().at(1).contains(
        QLatin1String("the frames 3-6 are asked for, but it has only 4")));
}

void TestDevelopment::movieOfOtherChoicesIsNotSkipped()
{
    const QString recording = sample(QStringLiteral("--size 64x48 --frames 4 --no-sound"));
    const QString movie = path(QStringLiteral("clip.mov"));
    const QString skip = QStringLiteral("--existing skip ");
    QCOMPARE(convert(QString(), recording), movie);
    for (const char *choice :
         {"--exposure 1", "--white-balance 5600", "--frames 2-3", "--frames 2-4"}) {
        const QString options = skip + QString::fromLatin1(choice);
        QCOMPARE(convert(options, recording), movie);
        QVERIFY(convert(options, recording) != movie);
    }
    const QString plain = convert(skip, recording);
    if (plain != movie)
        QSKIP("this file system keeps no extended attributes");
    const QString look = write(QStringLiteral("look.cube"), table());
    const QStringList graded =
        words(skip + QStringLiteral("--recipe prores-lt --lut")) + QStringList{look};
    QCOMPARE(convert(graded, recording), movie);
    QVERIFY(convert(graded, recording) != movie);
    write(QStringLiteral("look.cube"), table("bgr") + "# another one\n");
    QCOMPARE(convert(graded, recording), movie);
}

void TestDevelopment::unfinishedWorkOfOtherChoicesIsNotTaken()
{
    const QTemporaryDir work;
    ToolFolder tools;
    for (const char *tool : {"mlv_dump", "dcraw"})
        tools.linkTool(QString::fromUtf8(tool), realTool(QString::fromUtf8(tool)));
    tools.addTool(QStringLiteral("ffmpeg"), QStringLiteral("exec sleep 600"));
    const QString recording = sample(QStringLiteral("--size 64x48 --frames 4"));
    const QDir frames(work.filePath(QStringLiteral("FilmwrightTmp/clip.MLV")));
    QList<QByteArray> seen;
    for (const char *choice :
         {"", "--frames 2-3", "--exposure -2", "--white-balance 2500", "--frames 2-"}) {
        CommandLine cli;
        cli.start(words(QStringLiteral("convert --temp-dir %1 %2 %3")
                            .arg(work.path(), QString::fromLatin1(choice), recording)));
        QVERIFY(cli.waitForMessage(QStringLiteral("encoding")));
        cli.sendSignal(SIGINT);
        QVERIFY(cli.waitForEnd());
        QFile first(frames.filePath(QStringLiteral("tmp000000.tiff")));
        QVERIFY(first.open(QIODevice::ReadOnly));
        QByteArray state = first.readAll();
        for (const QString &name : frames.entryList({QStringLiteral("*.tiff")}))
            state += name.toUtf8();
        QVERIFY2(!seen.contains(state), choice);
        seen << state;
    }
}

void TestDevelopment::tableThatChangesNothing()
{
    const QString recording = sample(QStringLiteral("--size 320x192 --frames 1 --no-sound"));
    const QString look = write(QStringLiteral("look.cube"), table());
    const auto plain = firstFrame(convert(QStringLiteral("--recipe ffv1"), recording));
    const auto graded = firstFrame(
        convert(words(QStringLiteral("--recipe ffv1 --lut")) + QStringList{look}, recording));
    QCOMPARE(plain.size(), 320 * 192 * 3);
    QCOMPARE(graded.size(), plain.size());
    int largest = 0;
    for (qsizetype i = 0; i < plain.size(); ++i)
        largest = std::max(largest, std::abs(plain.at(i) - graded.at(i)));
    QVERIFY2(largest <= 1, qPrintable(QString::number(largest)));
}

/// Neither the table's name nor the recording's, which its working folder has, means anything to
/// ffmpeg's filters.
void TestDevelopment::tableWithAHostileNameIsApplied()
{
    const QString recording = sample(QStringLiteral("--size 320x192 --frames 1 --no-sound"),
                                     QStringLiteral("a'b, c:[d];e\\f=%05d \xc3\xa4.MLV"));
    const QString look = write(QStringLiteral("x'y, z:[1];2\\3 =%d.CUBE"), table("bgr"));
    const QString plainMovie = convert(QStringLiteral("--recipe ffv1"), recording);
    const auto plain = firstFrame(plainMovie);
    const QStringList options =
        words(QStringLiteral("--recipe ffv1 --existing keep --lut")) + QStringList{look};
    const auto graded = firstFrame(convert(options, recording));
    QCOMPARE(plain.size(), 320 * 192 * 3);
    QCOMPARE(graded.size(), plain.size());
    for (qsizetype i = 0; i < plain.size(); i += 3) {
        QVERIFY(std::abs(plain.at(i) - graded.at(i + 2)) <= 1);
        QVERIFY(std::abs(plain.at(i + 1) - graded.at(i + 1)) <= 1);
        QVERIFY(std::abs(plain.at(i + 2) - graded.at(i)) <= 1);
    }
}

void TestDevelopment::tableOfAGradingProgramIsRead()
{
    const QString recording = sample(QStringLiteral("--size 320x192 --frames 1 --no-sound"));
    const QString look =
        write(QStringLiteral("look.cube"), table("rgb", "LUT_3D_INPUT_RANGE 0.0 1.0\n"));
    const QString movie =
        convert(words(QStringLiteral("--recipe prores-hq --lut")) + QStringList{look}, recording);
    QCOMPARE(movie, path(QStringLiteral("clip.mov")));
}

void TestDevelopment::reportTellsTheChoices()
{
    const QString recording = sample(QStringLiteral("--size 64x48 --frames 4 --no-sound"));
    const QString report = path(QStringLiteral("report.json"));
    const auto read = [&report] {
        QFile file(report);
        return file.open(QIODevice::ReadOnly) ? QJsonDocument::fromJson(file.readAll()).object()
                                              : QJsonObject();
    };
    const QStringList options = words(QStringLiteral("--report ") + report);
    QVERIFY(!convert(options, recording).isEmpty());
    QCOMPARE(read().keys(), (QStringList{QStringLiteral("recordings"), QStringLiteral("status")}));
    QVERIFY(!convert(options + words(QStringLiteral("--exposure -0.5 --white-balance auto "
                                                    "--frames 2-3")),
                     recording)
                 .isEmpty());
    QCOMPARE(read().value(QStringLiteral("exposure")).toDouble(), -0.5);
    QCOMPARE(read().value(QStringLiteral("whiteBalance")).toString(), QStringLiteral("auto"));
    QCOMPARE(read().value(QStringLiteral("framesAskedFor")).toString(), QStringLiteral("2-3"));
    const QJsonObject row = read().value(QStringLiteral("recordings")).toArray().first().toObject();
    QCOMPARE(row.value(QStringLiteral("frames")).toInt(), 2);
    QVERIFY(row.value(QStringLiteral("warnings"))
                .toArray()
                .first()
                .toString()
                .startsWith(QLatin1String("the white balance found in the frames is ")));
}

void TestDevelopment::wrongChoicesAreRefusedBeforeTheWork_data()
{
    QTest::addColumn<QString>("options");
    QTest::addColumn<QString>("reason");
    QTest::newRow("exposure") << "--exposure 4"
                              << "--exposure is a number from -3 to 3, not \"4\"";
    QTest::newRow("white balance")
        << "--white-balance warm"
        << "--white-balance is camera, auto, a temperature from 2000 to 25000 or three "
           "multipliers such as 2.1,1,1.4, not \"warm\"";
    QTest::newRow("frames") << "--frames 9-1"
                            << "--frames is the first and the last frame, such as 100-250, 100- "
                               "or -250, not \"9-1\"";
    QTest::newRow("table without a recipe") << "--lut LOOK"
                                            << "--lut is for movies that are made by a recipe";
    QTest::newRow("table") << "--recipe prores-lt --lut LOOK"
                           << "LOOK:2: a row is three numbers";
}

void TestDevelopment::wrongChoicesAreRefusedBeforeTheWork()
{
    QFETCH(QString, options);
    QFETCH(QString, reason);
    const QString recording = sample(QStringLiteral("--size 64x48 --frames 1 --no-sound"));
    const QString look = write(QStringLiteral("look.cube"), "LUT_3D_SIZE 2\n1 2\n");
    CommandLine cli;
    QVERIFY(cli.run(QStringList{QStringLiteral("convert")} +
                    words(options.replace(QLatin1String("LOOK"), look)) + QStringList{recording}));
    QCOMPARE(cli.status(), 2);
    QCOMPARE(cli.output(), QStringList());
    QCOMPARE(cli.messages(), QStringList{QStringLiteral("filmwright-cli: ") +
                                         reason.replace(QLatin1String("LOOK"), look)});
}

FILMWRIGHT_TEST(TestDevelopment, QCoreApplication)
#include "tst_development.moc"
