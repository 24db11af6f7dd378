// SPDX-License-Identifier: MIT
#include "toolrun.h"

#include "support/filecontent.h"
#include "support/testprogram.h"
#include "support/words.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <map>

namespace {

/// The files of a folder by name.
std::map<QString, QByteArray> contentsOf(const QString &folder)
{
    std::map<QString, QByteArray> contents;
    for (const auto &name : QDir(folder).entryList(QDir::Files))
        contents[name] = contentOf(folder + QLatin1Char('/') + name);
    return contents;
}

} // namespace

/// A recording that is surveyed in one call and extracted range by range in others.
class TestMlvDumpSurvey : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        QVERIFY(QDir(m_folder->path()).mkdir(QStringLiteral("whole")));
        QVERIFY(QDir(m_folder->path()).mkdir(QStringLiteral("parts")));
    }

    void rangesAreWhatOneCallWrites_data();
    void rangesAreWhatOneCallWrites();
    void damagedFramesAreReplacedAcrossRanges_data();
    void damagedFramesAreReplacedAcrossRanges();
    void surveySaysWhatTheWholeCallSaysFirst();
    void surveyWritesTheSoundAndNoFrame();
    void rangesSayOnlyWhatBecomesOfTheirFrames();
    void exposureMayDifferFromThatOfTheSurvey();
    void rangeWithoutFramesIsTold();
    void framesForCr2hdrAreSpreadOverTheSelection_data();
    void framesForCr2hdrAreSpreadOverTheSelection();
    void framesForCr2hdrAreThoseOfTheWholeCall();
    void foreignSurveyIsRefused_data();
    void foreignSurveyIsRefused();
    void brokenSurveyIsRefused_data();
    void brokenSurveyIsRefused();
    void surveyReplacesNoFileThatIsRead();
    void wrongArgumentsAreRefused_data();
    void wrongArgumentsAreRefused();

private:
    QString path(const QString &name) const { return m_folder->filePath(name); }
    QString input() const { return path(QStringLiteral("a.MLV")); }
    QString survey() const { return path(QStringLiteral("survey")); }

    void sample(const QString &name, const QString &options) const
    {
        const auto run = runBuilt(QStringLiteral("mlv_sample"), words(options) << path(name));
        QCOMPARE(run.status, 0);
    }
    void sample(const QString &options) const { sample(QStringLiteral("a.MLV"), options); }

    ProgramRun dump(const QStringList &options, const QString &folder) const
    {
        return runBuilt(QStringLiteral("mlv_dump"),
                        QStringList{QStringLiteral("--dng"), input(), QStringLiteral("-o"),
                                    path(folder + QStringLiteral("/tmp"))} +
                            options);
    }
    ProgramRun writeSurvey(const QStringList &options = {}) const
    {
        return dump(options + QStringList{QStringLiteral("--write-survey"), survey()},
                    QStringLiteral("parts"));
    }
    ProgramRun useSurvey(const QString &range, const QStringList &options = {}) const
    {
        return dump(options + QStringList{QStringLiteral("--use-survey"), survey(),
                                          QStringLiteral("-f"), range},
                    QStringLiteral("parts"));
    }
    QStringList parts() const
    {
        return QDir(path(QStringLiteral("parts"))).entryList(QDir::Files, QDir::Name);
    }

    /// With the names of files as paths of the test's folder.
    QStringList withPaths(QStringList options) const
    {
        for (auto &option : options)
            if (option.endsWith(QStringLiteral(".MLV")) || option.endsWith(QStringLiteral(".fpm")))
                option = path(option);
        return options;
    }

    /// Extracts as a whole and in ranges, and compares everything that is written.
    void compareRanges(const QStringList &options, int step, const QString &found = {}) const
    {
        const auto whole = dump(options, QStringLiteral("whole"));
        QCOMPARE(whole.status, 0);
        const auto surveyed = writeSurvey(options);
        QCOMPARE(surveyed.status, 0);
        QCOMPARE(surveyed.lines.last(), QStringLiteral("Done"));
        QVERIFY2(surveyed.hasLineWith(found), qPrintable(surveyed.lines.join(QLatin1Char('\n'))));
        const auto told = surveyed.lines.filter(QStringLiteral("Surveyed frames ")).value(0);
        const auto numbers = told.split(QLatin1Char(' '));
        const int last = numbers.value(4).toInt();
        for (int first = numbers.value(2).toInt(); first <= last; first += step) {
            const auto range = QStringLiteral("%1-%2").arg(first).arg(first + step - 1);
            const auto part = useSurvey(range, options);
            QCOMPARE(part.status, 0);
            QCOMPARE(part.lines.last(), QStringLiteral("Done"));
        }
        QVERIFY(contentsOf(path(QStringLiteral("whole"))).size() > 2);
        QVERIFY(contentsOf(path(QStringLiteral("parts"))) ==
                contentsOf(path(QStringLiteral("whole"))));
    }

    /// Makes the data of those frames, which the sample wrote in order, unreadable.
    void damage(const QList<int> &frames) const
    {
        auto bytes = contentOf(input());
        for (const int frame : frames)
            bytes.replace(frameData(bytes, frame), 1000, QByteArray(1000, '\xee'));
        setContent(input(), bytes);
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void TestMlvDumpSurvey::rangesAreWhatOneCallWrites_data()
{
    const QString small(QStringLiteral("--size 96x64 --frames 11 "));
    const QString wall(
        QStringLiteral("--size 480x320 --frames 12 --flat --perfect --crop 72x28 --no-sound "));
    const QString nothing;
    QTest::addColumn<QString>("recording");
    QTest::addColumn<QString>("options");
    QTest::addColumn<int>("step");
    QTest::addColumn<QString>("found");
    const auto row = [](const char *name, const QString &recording, const char *options, int step,
                        const char *found) {
        QTest::newRow(name) << recording << QString::fromLatin1(options) << step
                            << QString::fromLatin1(found);
    };
    row("plain", small, "", 4, "");
    row("lossless", small + QStringLiteral("--compress lossless"), "", 3, "");
    row("LZMA", small + QStringLiteral("--compress lzma"), "", 3, "");
    row("one by one", small, "", 1, "");
    row("several chunks", small + QStringLiteral("--split 3 --shuffle"), "", 2, "");
    row("settings that change", small + QStringLiteral("--change --padding"), "", 5, "");
    row("gaps", small + QStringLiteral("--drop 3,6-8"), "", 2, "4 dropped frames");
    row("selection", small + QStringLiteral("--drop 3,6-8"), "-f 2-9", 3, "4 dropped frames");
    row("selection, renumbered", small, "-f 2-9 --renumber", 3, "");
    row("clip of an editor", small, "--cinema-dng --renumber -f 3-0", 3, "");
    row("development", small, "--exposure 1.5 --matrix recorded --white-balance 3200", 4, "");
    row("dark and flat", small, "-s dark.MLV -t flat.MLV", 4, "");
    row("full below the white level",
        QStringLiteral("--size 320x240 --frames 5 --clip 6000 --recorded-white 16200"), "", 2,
        "the sensor is full at 6000");
    row("levels given", small, "--black-level 1900 --white-level 14000", 4, "");
    row("found white", QStringLiteral("--size 480x320 --frames 8 --light 1,0.7,0.4 --no-sound"),
        "--white-balance auto", 3, "the white balance found");
    row("pixels", wall + QStringLiteral("--hot 12 --cold 3 --pan"), "--repair-pixels auto", 5,
        "12 hot, 3 cold");
    row("lattice and columns",
        wall + QStringLiteral("--hot 12 --cold 3 --lattice 8x10:1/3,5/1,2/6,6/8 "
                              "--column-gains 1.004,0.996,1,1,1,1,1,1"),
        "--repair-pixels auto --repair-columns --white-level recorded", 5, "a lattice of 7680");
    row("columns", wall + QStringLiteral("--column-gains 1.004,0.996,1,1,1,1,1,1"),
        "--repair-columns", 5, "Repaired columns: gains");
    row("dual ISO, repaired",
        QStringLiteral("--size 480x320 --frames 8 --no-sound --hot 30 --dual-iso 100/800"),
        "--repair-pixels auto", 3, "Repaired pixels");
}

void TestMlvDumpSurvey::rangesAreWhatOneCallWrites()
{
    QFETCH(QString, recording);
    QFETCH(QString, options);
    QFETCH(int, step);
    QFETCH(QString, found);
    sample(recording);
    sample(QStringLiteral("dark.MLV"), QStringLiteral("--size 96x64 --frames 1 --dark"));
    sample(QStringLiteral("flat.MLV"), QStringLiteral("--size 96x64 --frames 1 --flat"));
    compareRanges(withPaths(words(options)), step, found);
}

void TestMlvDumpSurvey::damagedFramesAreReplacedAcrossRanges_data()
{
    QTest::addColumn<QList<int>>("frames");
    QTest::addColumn<QString>("options");
    QTest::addColumn<int>("step");
    for (const int step : {1, 2, 3, 9}) {
        QTest::addRow("first ones, ranges of %d", step) << QList<int>{0, 1, 2} << QString() << step;
        QTest::addRow("at a border, ranges of %d", step)
            << QList<int>{3, 4, 5, 8} << QString() << step;
    }
    QTest::newRow("first ones of a selection")
        << QList<int>{2, 3, 4, 6} << QStringLiteral("-f 3-7") << 2;
}

void TestMlvDumpSurvey::damagedFramesAreReplacedAcrossRanges()
{
    QFETCH(QList<int>, frames);
    QFETCH(QString, options);
    QFETCH(int, step);
    sample(QStringLiteral("--size 96x64 --frames 9 --compress lossless --no-sound"));
    damage(frames);
    compareRanges(words(options), step);
}

void TestMlvDumpSurvey::surveySaysWhatTheWholeCallSaysFirst()
{
    sample(QStringLiteral("--size 320x240 --frames 9 --drop 5 --compress lossless --clip 6000 "
                          "--recorded-white 16200 --cut 10"));
    damage({0, 1});
    const QStringList marks{QStringLiteral("[WARNING]"), QStringLiteral("[NOTE]")};
    const auto whole = dump({}, QStringLiteral("whole")).lines;
    const auto surveyed = writeSurvey().lines;
    for (const auto &mark : marks) {
        QVERIFY(!whole.filter(mark).isEmpty());
        QCOMPARE(surveyed.filter(mark), whole.filter(mark));
    }
    QVERIFY(surveyed.contains(QStringLiteral("[WARNING] the first 2 frames are damaged and "
                                             "replaced by the frame behind them")));
}

void TestMlvDumpSurvey::surveyWritesTheSoundAndNoFrame()
{
    sample(QStringLiteral("--size 96x64 --frames 6"));
    const auto run = writeSurvey({QStringLiteral("-f"), QStringLiteral("1-3")});
    QCOMPARE(run.status, 0);
    QCOMPARE(parts(), QStringList{QStringLiteral("tmp.wav")});
    QCOMPARE(run.lines.mid(run.lines.size() - 3),
             (QStringList{QStringLiteral("Surveyed frames 1 to 3"),
                          QStringLiteral("Processed 3 video frames at 24.00 FPS (0.12 s)"),
                          QStringLiteral("Done")}));
}

void TestMlvDumpSurvey::rangesSayOnlyWhatBecomesOfTheirFrames()
{
    sample(QStringLiteral("--size 96x64 --frames 6 --compress lossless --drop 1 --cut 10"));
    damage({0, 2});
    QCOMPARE(writeSurvey().status, 0);
    QCOMPARE(useSurvey(QStringLiteral("2-3")).lines,
             (QStringList{
                 QStringLiteral("Frame 1 of 2"),
                 QStringLiteral("[WARNING] frame 3 is damaged and replaced by the frame before it"),
                 QStringLiteral("Frame 2 of 2"),
                 QStringLiteral("Processed 2 video frames at 24.00 FPS (0.08 s)"),
                 QStringLiteral("Done")}));
}

void TestMlvDumpSurvey::exposureMayDifferFromThatOfTheSurvey()
{
    // A person who tries exposures looks at one frame again and again.
    sample(QStringLiteral("--size 96x64 --frames 3 --no-sound"));
    const QStringList brighter{QStringLiteral("--exposure"), QStringLiteral("2")};
    QCOMPARE(writeSurvey().status, 0);
    QCOMPARE(useSurvey(QStringLiteral("0-2"), brighter).status, 0);
    QCOMPARE(dump(brighter, QStringLiteral("whole")).status, 0);
    QVERIFY(contentsOf(path(QStringLiteral("parts"))) == contentsOf(path(QStringLiteral("whole"))));
}

void TestMlvDumpSurvey::rangeWithoutFramesIsTold()
{
    sample(QStringLiteral("--size 96x64 --frames 6 --no-sound"));
    QCOMPARE(writeSurvey({QStringLiteral("-f"), QStringLiteral("2-4")}).status, 0);
    const auto run = useSurvey(QStringLiteral("5-5"));
    QCOMPARE(run.status, 1);
    QCOMPARE(run.lines, QStringList{QStringLiteral("[UNUSABLE] The recording has none of the "
                                                   "frames that are asked for")});
    QCOMPARE(parts(), QStringList());
}

void TestMlvDumpSurvey::framesForCr2hdrAreSpreadOverTheSelection_data()
{
    QTest::addColumn<int>("frames");
    QTest::addColumn<QString>("range");
    QTest::addColumn<QList<int>>("numbers");
    QTest::newRow("a few") << 4 << QStringLiteral("0-0") << QList<int>{0, 1, 2, 3};
    QTest::newRow("many") << 15 << QStringLiteral("0-0") << QList<int>{0, 2, 5, 7, 10, 12};
    QTest::newRow("selection") << 15 << QStringLiteral("3-10") << QList<int>{3, 4, 5, 7, 8, 9};
}

void TestMlvDumpSurvey::framesForCr2hdrAreSpreadOverTheSelection()
{
    QFETCH(int, frames);
    QFETCH(QString, range);
    QFETCH(QList<int>, numbers);
    sample(QStringLiteral("--size 96x64 --no-sound --frames %1").arg(frames));
    const auto run = writeSurvey({QStringLiteral("-f"), range, QStringLiteral("--survey-frames"),
                                  path(QStringLiteral("parts/spread"))});
    QCOMPARE(run.status, 0);
    QStringList expected;
    for (const int number : numbers)
        expected << QStringLiteral("spread%1.dng").arg(number, 6, 10, QLatin1Char('0'));
    QCOMPARE(parts(), expected);
}

void TestMlvDumpSurvey::framesForCr2hdrAreThoseOfTheWholeCall()
{
    // Damaged and dropped ones too, wherever what stands in for them lies.
    sample(QStringLiteral("--size 96x64 --no-sound --frames 12 --drop 4 --compress lossless"));
    damage({0, 5, 7}); // frames 0, 6, 8
    QCOMPARE(dump({}, QStringLiteral("whole")).status, 0);
    QCOMPARE(
        writeSurvey({QStringLiteral("--survey-frames"), path(QStringLiteral("parts/tmp"))}).status,
        0);
    const auto whole = contentsOf(path(QStringLiteral("whole")));
    const auto spread = contentsOf(path(QStringLiteral("parts")));
    QCOMPARE(spread.size(), std::size_t{6});
    for (const auto &[name, content] : spread)
        QVERIFY2(whole.contains(name) && whole.at(name) == content, qPrintable(name));
}

void TestMlvDumpSurvey::foreignSurveyIsRefused_data()
{
    const auto other = QStringLiteral("--size 96x64 --frames 4 --no-sound --seed 2");
    const auto otherRecording = QStringLiteral("The survey is of another recording");
    const auto otherOptions = QStringLiteral("The survey was made with other options");
    QTest::addColumn<QString>("recording");
    QTest::addColumn<QString>("options");
    QTest::addColumn<QString>("reason");
    QTest::newRow("recording") << other << QString() << otherRecording;
    QTest::newRow("chunk more") << other + QStringLiteral(" --seed 1 --split 2") << QString()
                                << otherRecording;
    for (const auto *const options :
         {"--white-level recorded", "--black-level 2000", "--matrix recorded",
          "--white-balance auto", "--white-balance 5000", "--repair-pixels auto",
          "--repair-columns", "-s dark.MLV", "-t flat.MLV", "--repair-pixels map.fpm"})
        QTest::newRow(options) << QString() << QString::fromLatin1(options) << otherOptions;
}

void TestMlvDumpSurvey::foreignSurveyIsRefused()
{
    QFETCH(QString, recording);
    QFETCH(QString, options);
    QFETCH(QString, reason);
    sample(QStringLiteral("--size 96x64 --frames 4 --no-sound"));
    sample(QStringLiteral("dark.MLV"), QStringLiteral("--size 96x64 --frames 1 --dark"));
    sample(QStringLiteral("flat.MLV"), QStringLiteral("--size 96x64 --frames 1 --flat"));
    setContent(path(QStringLiteral("map.fpm")), "5 5\n");
    QCOMPARE(writeSurvey().status, 0);
    if (!recording.isEmpty())
        sample(recording);
    const auto run = useSurvey(QStringLiteral("0-1"), withPaths(words(options)));
    QCOMPARE(run.status, 1);
    QCOMPARE(run.lines, QStringList{QStringLiteral("[ERROR] ") + reason});
    QCOMPARE(parts(), QStringList());
}

void TestMlvDumpSurvey::brokenSurveyIsRefused_data()
{
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<QByteArray>("after");
    QTest::addColumn<QString>("reason");
    const auto damaged = QStringLiteral("The survey is damaged");
    QTest::newRow("another version") << QByteArray("survey 1\n") << QByteArray("survey 2\n")
                                     << QStringLiteral("The survey is of another kind or version");
    QTest::newRow("cut off") << QByteArray("end\n") << QByteArray() << damaged;
    QTest::newRow("more behind") << QByteArray("end\n") << QByteArray("end\nend\n") << damaged;
    QTest::newRow("a line less") << QByteArray("\nlattice") << QByteArray() << damaged;
    QTest::newRow("no number") << QByteArray("levels 2048") << QByteArray("levels 0x800")
                               << damaged;
    QTest::newRow("black above white")
        << QByteArray("levels 2048") << QByteArray("levels 60000") << damaged;
    QTest::newRow("white of nothing")
        << QByteArray("\nneutral") << QByteArray("\nneutral 0 1 nan") << damaged;
    QTest::newRow("gain of nothing")
        << QByteArray("\ncolumns") << QByteArray("\ncolumns 0") << damaged;
    QTest::newRow("place outside")
        << QByteArray("\npixels") << QByteArray("\npixels 5 70000") << damaged;
    QTest::newRow("half a place") << QByteArray("\npixels") << QByteArray("\npixels 5") << damaged;
    QTest::newRow("frames without number")
        << QByteArray("\nframes 4") << QByteArray("\nframes 4000000000") << damaged;
    QTest::newRow("frame of another chunk")
        << QByteArray("\nframe 0 2000000 0 ") << QByteArray("\nframe 0 2000000 7 ") << damaged;
    QTest::newRow("frame behind the end")
        << QByteArray("\nframe 0 2000000 0 ") << QByteArray("\nframe 0 2000000 0 9") << damaged;
    QTest::newRow("first good frame outside")
        << QByteArray("18446744073709551615 0") << QByteArray("18446744073709551615 9") << damaged;
    QTest::newRow("settings of another chunk")
        << QByteArray("\nsettings 0 ") << QByteArray("\nsettings 9 ") << damaged;
}

void TestMlvDumpSurvey::brokenSurveyIsRefused()
{
    QFETCH(QByteArray, before);
    QFETCH(QByteArray, after);
    QFETCH(QString, reason);
    sample(QStringLiteral("--size 96x64 --frames 4 --no-sound"));
    QCOMPARE(writeSurvey().status, 0);
    auto content = contentOf(survey());
    QVERIFY2(content.contains(before), content.constData());
    setContent(survey(), content.replace(before, after));
    const auto run = useSurvey(QStringLiteral("0-1"));
    QCOMPARE(run.status, 1);
    QCOMPARE(run.lines, QStringList{QStringLiteral("[ERROR] ") + reason});
    QCOMPARE(parts(), QStringList());
}

void TestMlvDumpSurvey::surveyReplacesNoFileThatIsRead()
{
    sample(QStringLiteral("--size 96x64 --frames 4 --no-sound"));
    const auto before = contentOf(input());
    const auto run = dump({QStringLiteral("--write-survey"), input()}, QStringLiteral("parts"));
    QCOMPARE(run.status, 1);
    QCOMPARE(run.lines, QStringList{QStringLiteral(
                            "[UNUSABLE] The output would replace a file that is read")});
    QCOMPARE(contentOf(input()), before);
}

void TestMlvDumpSurvey::wrongArgumentsAreRefused_data()
{
    QTest::addColumn<QString>("options");
    QTest::addColumn<QString>("reason");
    QTest::newRow("no frames") << QStringLiteral("--write-survey s")
                               << QStringLiteral("a survey is one for frames (--dng)");
    QTest::newRow("average") << QStringLiteral("-a -o b.mlv --use-survey s")
                             << QStringLiteral("a survey is one for frames (--dng)");
    QTest::newRow("both") << QStringLiteral("--dng --write-survey s --use-survey s")
                          << QStringLiteral("a survey is either written or used");
    QTest::newRow("frames of no survey")
        << QStringLiteral("--dng --survey-frames s")
        << QStringLiteral("the option --survey-frames needs --write-survey");
}

void TestMlvDumpSurvey::wrongArgumentsAreRefused()
{
    QFETCH(QString, options);
    QFETCH(QString, reason);
    const auto run = runBuilt(QStringLiteral("mlv_dump"), words(options) << input());
    QCOMPARE(run.status, 2);
    QCOMPARE(run.lines.first(),
             QStringLiteral("[ERROR] ") + reason + QStringLiteral("; see mlv_dump --help"));
}

FILMWRIGHT_TEST(TestMlvDumpSurvey, QCoreApplication)
#include "tst_mlv_dump_survey.moc"
