// SPDX-License-Identifier: MIT
#include "rawpicture.h"
#include "toolrun.h"

#include "support/testprogram.h"
#include "support/words.h"

#include <QDir>
#include <QImage>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <cstdlib>

namespace {

const QString pixels = QStringLiteral("--repair-pixels");
const QString asFound = QStringLiteral("auto");
const QString columns = QStringLiteral("--repair-columns");

/// An even wall before a camera without noise, of which twelve frames are recorded.
const char *const evenWall = "--size 480x320 --frames 12 --flat --perfect --crop 72x28";

} // namespace

/// Frames that are repaired, with the programs that users have.
class TestMlvDumpRepair : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void repairedFramesDevelopWithoutDots_data();
    void repairedFramesDevelopWithoutDots();
    void repairIsTheSameInEveryFrame();
    void whatIsRepairedIsTold();
    void framesWithoutFaultsAreWrittenAsEver();
    void repairThatIsOffChangesNothing();
    void losslessFramesAreWrittenAnew();
    void averagesAndRewrittenRecordingsAreNeverRepaired_data();
    void averagesAndRewrittenRecordingsAreNeverRepaired();
    void darkTakesHotPixelsAwayBeforeTheyAreLookedFor();
    void placesOfAMapAreThoseOfTheReadOut();
    void mapBesideTheRecordingIsUsedToo();
    void mapThatCantBeUsedEndsTheRun_data();
    void mapThatCantBeUsedEndsTheRun();
    void mapIsNeverReplaced();
    void rowsOfTwoSensitivitiesStayApart();
    void columnsAreEvenedOut();

private:
    QString path(const QString &name) const { return m_folder->filePath(name); }
    QString sample(const QString &name, const QStringList &options) const
    {
        const auto run = runBuilt(QStringLiteral("mlv_sample"), options + QStringList{path(name)});
        if (run.status != 0)
            qFatal("%s", qPrintable(run.lines.join(QLatin1Char('\n'))));
        return path(name);
    }
    ProgramRun extract(const QString &recording, const QString &prefix,
                       const QStringList &options) const
    {
        return runBuilt(
            QStringLiteral("mlv_dump"),
            QStringList{QStringLiteral("--dng"), recording, QStringLiteral("-o"), path(prefix)} +
                options);
    }
    RawPicture frame(const QString &prefix, int number = 0) const
    {
        return readDng(path(dng(prefix, number)));
    }
    static QString dng(const QString &prefix, int number)
    {
        return QStringLiteral("%1%2.dng").arg(prefix).arg(number, 6, 10, QLatin1Char('0'));
    }
    QByteArray bytes(const QString &name) const
    {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    void write(const QString &name, const QByteArray &text) const
    {
        QFile file(path(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(text), text.size());
    }
    QImage developed(const QString &prefix) const
    {
        const auto run = runBuilt(QStringLiteral("dcraw"),
                                  words("-H 3 -q 3 -w -W -T") + QStringList{path(dng(prefix, 0))});
        if (run.status != 0)
            qFatal("%s", qPrintable(run.lines.join(QLatin1Char('\n'))));
        const auto ppm =
            outputOf(QStringLiteral("ffmpeg"),
                     {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-i"),
                      path(prefix + QStringLiteral("000000.tiff")), QStringLiteral("-f"),
                      QStringLiteral("image2pipe"), QStringLiteral("-c:v"), QStringLiteral("ppm"),
                      QStringLiteral("-")});
        QImage image;
        image.loadFromData(ppm);
        return image;
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

namespace {

int largestDifference(const QImage &one, const QImage &other)
{
    int largest = one.isNull() || one.size() != other.size() ? 256 : 0;
    for (int y = 0; largest < 256 && y < one.height(); ++y) {
        for (int x = 0; x < one.width(); ++x) {
            const QColor a = one.pixelColor(x, y);
            const QColor b = other.pixelColor(x, y);
            largest = std::max({largest, std::abs(a.red() - b.red()),
                                std::abs(a.green() - b.green()), std::abs(a.blue() - b.blue())});
        }
    }
    return largest;
}

qsizetype differing(const RawPicture &one, const RawPicture &other)
{
    qsizetype count = 0;
    for (std::size_t i = 0; i < one.samples.size(); ++i)
        count += one.samples[i] != other.samples[i] ? 1 : 0;
    return count;
}

} // namespace

void TestMlvDumpRepair::repairedFramesDevelopWithoutDots_data()
{
    QTest::addColumn<QString>("faults");
    QTest::newRow("hot and cold") << QStringLiteral("--hot 40 --cold 20");
    QTest::newRow("lattice") << QStringLiteral("--lattice 8x10:1/3,5/1,2/6,6/8");
    QTest::newRow("lattice and pixels")
        << QStringLiteral("--hot 40 --cold 20 --lattice 8x12:6/2,5/3,2/8,1/9");
}

void TestMlvDumpRepair::repairedFramesDevelopWithoutDots()
{
    QFETCH(const QString, faults);
    const auto clean = sample(QStringLiteral("clean.MLV"), words(evenWall));
    const auto faulty =
        sample(QStringLiteral("faulty.MLV"), words(evenWall) + faults.split(QLatin1Char(' ')));
    QCOMPARE(extract(clean, QStringLiteral("clean"), {}).status, 0);
    QCOMPARE(extract(faulty, QStringLiteral("faulty"), {}).status, 0);
    QCOMPARE(extract(faulty, QStringLiteral("repaired"), {pixels, asFound}).status, 0);
    const QImage wanted = developed(QStringLiteral("clean"));
    QVERIFY(largestDifference(developed(QStringLiteral("faulty")), wanted) > 10);
    const int left = largestDifference(developed(QStringLiteral("repaired")), wanted);
    QVERIFY2(left <= 3, qPrintable(QString::number(left)));
}

void TestMlvDumpRepair::repairIsTheSameInEveryFrame()
{
    const auto options = words("--size 480x320 --frames 12 --scene landscape --no-sound");
    const auto faulty =
        sample(QStringLiteral("a.MLV"), options + words("--hot 30 --lattice 8x10:1/3,5/1"));
    QCOMPARE(extract(faulty, QStringLiteral("plain"), {}).status, 0);
    QCOMPARE(extract(faulty, QStringLiteral("repaired"), {pixels, asFound}).status, 0);
    std::vector<bool> touched(480 * 320);
    for (int number = 0; number < 12; ++number) {
        const auto plain = frame(QStringLiteral("plain"), number);
        const auto repaired = frame(QStringLiteral("repaired"), number);
        for (std::size_t i = 0; i < touched.size(); ++i)
            touched[i] = touched[i] || plain.samples[i] != repaired.samples[i];
    }
    const auto count = std::count(touched.begin(), touched.end(), true);
    // 3840 of the lattice, 30 planted ones, and the sensor's own.
    QVERIFY2(count >= 3860 && count < 3900, qPrintable(QString::number(count)));
}

void TestMlvDumpRepair::whatIsRepairedIsTold()
{
    const auto faulty =
        sample(QStringLiteral("a.MLV"),
               words(evenWall) + words("--hot 12 --cold 3 --lattice 8x10:1/3,5/1,2/6,6/8 "
                                       "--column-gains 1.004,0.996,1,1,1,1,1,1"));
    const auto run = extract(faulty, QStringLiteral("tmp"), {pixels, asFound, columns});
    QVERIFY(run.lines.contains(QStringLiteral("[NOTE] Repaired pixels: a lattice of 7680, repeated "
                                              "every 8 columns and 10 lines, on lines 28 to "
                                              "347 of the sensor")));
    QVERIFY(run.lines.contains(QStringLiteral("[NOTE] Repaired pixels: 12 hot, 3 cold, 0 stuck")));
    QVERIFY(run.hasLineWith(QStringLiteral("Repaired columns: gains from 0.99")));
}

void TestMlvDumpRepair::framesWithoutFaultsAreWrittenAsEver()
{
    for (const char *compression : {"", "--compress lossless"}) {
        const auto clean = sample(QStringLiteral("a.MLV"), words(evenWall) + words(compression));
        extract(clean, QStringLiteral("plain"), {});
        const auto run = extract(clean, QStringLiteral("repaired"), {pixels, asFound, columns});
        QVERIFY(
            run.lines.contains(QStringLiteral("[NOTE] Repaired pixels: 0 hot, 0 cold, 0 stuck")));
        QVERIFY(run.lines.contains(QStringLiteral("[NOTE] Repaired columns: none")));
        QCOMPARE(bytes(QStringLiteral("repaired000003.dng")),
                 bytes(QStringLiteral("plain000003.dng")));
    }
}

void TestMlvDumpRepair::repairThatIsOffChangesNothing()
{
    const auto faulty = sample(QStringLiteral("a.MLV"), words(evenWall) + words("--hot 20"));
    const auto plain = extract(faulty, QStringLiteral("plain"), {});
    const auto off = extract(faulty, QStringLiteral("off"), {pixels, QStringLiteral("off")});
    QCOMPARE(off.lines, plain.lines);
    QVERIFY(!bytes(QStringLiteral("off000003.dng")).isEmpty());
    QCOMPARE(bytes(QStringLiteral("off000003.dng")), bytes(QStringLiteral("plain000003.dng")));
}

void TestMlvDumpRepair::losslessFramesAreWrittenAnew()
{
    const auto options = words(evenWall) + words("--hot 20");
    const auto packed = sample(QStringLiteral("a.MLV"), options);
    const auto lossless = sample(QStringLiteral("b.MLV"), options + words("--compress lossless"));
    QCOMPARE(extract(packed, QStringLiteral("a"), {pixels, asFound}).status, 0);
    QCOMPARE(extract(lossless, QStringLiteral("b"), {pixels, asFound}).status, 0);
    QCOMPARE(frame(QStringLiteral("b")).largestDifference(frame(QStringLiteral("a"))), 0);
    QCOMPARE(bytes(QStringLiteral("b000000.dng")).size(),
             bytes(QStringLiteral("a000000.dng")).size());
}

void TestMlvDumpRepair::averagesAndRewrittenRecordingsAreNeverRepaired_data()
{
    QTest::addColumn<QStringList>("mode");
    QTest::newRow("average") << QStringList{QStringLiteral("-a")};
    QTest::newRow("rewritten") << QStringList{};
}

void TestMlvDumpRepair::averagesAndRewrittenRecordingsAreNeverRepaired()
{
    QFETCH(const QStringList, mode);
    const auto faulty = sample(QStringLiteral("a.MLV"), words(evenWall) + words("--hot 20"));
    const auto run = [&](const QString &name, const QStringList &options) {
        return runBuilt(QStringLiteral("mlv_dump"),
                        mode + options + QStringList{faulty, QStringLiteral("-o"), path(name)});
    };
    const auto plain = run(QStringLiteral("plain.mlv"), {});
    const auto asked = run(QStringLiteral("asked.mlv"), {pixels, asFound, columns});
    QCOMPARE(asked.lines, plain.lines);
    QVERIFY(!bytes(QStringLiteral("asked.mlv")).isEmpty());
    QCOMPARE(bytes(QStringLiteral("asked.mlv")), bytes(QStringLiteral("plain.mlv")));
}

void TestMlvDumpRepair::darkTakesHotPixelsAwayBeforeTheyAreLookedFor()
{
    const auto options = words("--size 480x320 --frames 8 --hot 30");
    const auto dark = sample(QStringLiteral("dark.MLV"), options + words("--dark"));
    const auto clip = sample(QStringLiteral("a.MLV"), options + words("--flat"));
    QCOMPARE(runBuilt(QStringLiteral("mlv_dump"), {QStringLiteral("-a"), dark, QStringLiteral("-o"),
                                                   path(QStringLiteral("dark.mlv"))})
                 .status,
             0);
    const QStringList less{QStringLiteral("-s"), path(QStringLiteral("dark.mlv"))};
    const auto run = extract(clip, QStringLiteral("tmp"), QStringList{pixels, asFound} + less);
    const auto line = run.lines.filter(QStringLiteral(" hot, ")).value(0);
    const int hot = line.section(QLatin1Char(' '), 2, 2).toInt();
    // But for those that the light drives beyond the sensor's range.
    QVERIFY2(!line.isEmpty() && hot < 15, qPrintable(line));
}

void TestMlvDumpRepair::placesOfAMapAreThoseOfTheReadOut()
{
    const auto clip = sample(QStringLiteral("a.MLV"),
                             words("--size 480x320 --frames 3 --scene landscape --crop 72x28"));
    write(QStringLiteral("map.fpm"), "#FPM 80f10001 Sample\n"
                                     "82 \t 40 \n83\t41\n84 42 a note\n"
                                     "5 5\n600 40\n60000 60000\nnonsense\n");
    extract(clip, QStringLiteral("plain"), {});
    const auto run =
        extract(clip, QStringLiteral("repaired"), {pixels, path(QStringLiteral("map.fpm"))});
    QVERIFY(run.lines.contains(QStringLiteral("[NOTE] Repaired pixels: 6 of the map")));
    const auto plain = frame(QStringLiteral("plain"), 2);
    const auto repaired = frame(QStringLiteral("repaired"), 2);
    QVERIFY(differing(plain, repaired) <= 3);
    auto rest = plain;
    for (const int place : {10, 11, 12}) {
        const auto at = static_cast<std::size_t>((place + 2) * 480 + place);
        rest.samples[at] = repaired.samples[at];
    }
    QCOMPARE(rest.largestDifference(repaired), 0);
}

void TestMlvDumpRepair::mapBesideTheRecordingIsUsedToo()
{
    const auto clip = sample(QStringLiteral("a.MLV"), words(evenWall) + words("--hot 5"));
    write(QStringLiteral("80f10001_552x348.fpm"), "100 100\n102 100\n");
    const auto run = extract(clip, QStringLiteral("tmp"), {pixels, asFound});
    QVERIFY(run.lines.contains(QStringLiteral("[NOTE] Repaired pixels: 2 of the map")));
    QVERIFY(run.lines.contains(QStringLiteral("[NOTE] Repaired pixels: 5 hot, 0 cold, 0 stuck")));
}

void TestMlvDumpRepair::mapThatCantBeUsedEndsTheRun_data()
{
    QTest::addColumn<QByteArray>("map");
    QTest::addColumn<QString>("line");
    QTest::newRow("of another camera")
        << QByteArray("#FPM 80000331\n1 2\n")
        << QStringLiteral("[UNUSABLE] The pixel map is that of another camera");
    QTest::newRow("without a place")
        << QByteArray("nonsense\n") << QStringLiteral("[ERROR] The pixel map names no pixel");
}

void TestMlvDumpRepair::mapThatCantBeUsedEndsTheRun()
{
    QFETCH(const QByteArray, map);
    QFETCH(const QString, line);
    const auto clip = sample(QStringLiteral("a.MLV"), words(evenWall));
    write(QStringLiteral("map.fpm"), map);
    const auto run =
        extract(clip, QStringLiteral("tmp"), {pixels, path(QStringLiteral("map.fpm"))});
    QCOMPARE(run.status, 1);
    QVERIFY2(run.lines.contains(line), qPrintable(run.lines.join(QLatin1Char('\n'))));
    QVERIFY(!QFile::exists(path(QStringLiteral("tmp000000.dng"))));
}

void TestMlvDumpRepair::mapIsNeverReplaced()
{
    const auto clip = sample(QStringLiteral("a.MLV"), words(evenWall));
    write(QStringLiteral("tmp000001.dng"), "100 100\n");
    const auto run =
        extract(clip, QStringLiteral("tmp"), {pixels, path(QStringLiteral("tmp000001.dng"))});
    QCOMPARE(run.status, 1);
    QCOMPARE(bytes(QStringLiteral("tmp000001.dng")), QByteArray("100 100\n"));
}

void TestMlvDumpRepair::rowsOfTwoSensitivitiesStayApart()
{
    const auto options = words("--size 480x320 --frames 8 --no-sound --dual-iso 100/800");
    const auto clip =
        sample(QStringLiteral("a.MLV"), options + words("--hot 20 --scene landscape"));
    extract(clip, QStringLiteral("plain"), {});
    const auto run = extract(clip, QStringLiteral("tmp"), {pixels, asFound, columns});
    QVERIFY(run.hasLineWith(QStringLiteral("The columns are not repaired")));
    const auto plain = frame(QStringLiteral("plain"));
    const auto repaired = frame(QStringLiteral("tmp"));
    const auto count = differing(plain, repaired);
    // Half of them are in rows that are clipped.
    QVERIFY2(count >= 8 && count < 60, qPrintable(QString::number(count)));
    // What a bright row has isn't made of dark ones: nothing becomes brighter.
    for (std::size_t i = 0; i < plain.samples.size(); ++i)
        QVERIFY(repaired.samples[i] <= plain.samples[i] + 200);
}

void TestMlvDumpRepair::columnsAreEvenedOut()
{
    const auto gains = words("--column-gains 1.02,0.98,1.01,0.99,1,1.015,0.985,1");
    const auto options = words("--size 480x320 --frames 8 --scene landscape --perfect");
    const auto clean = sample(QStringLiteral("clean.MLV"), options);
    const auto striped = sample(QStringLiteral("a.MLV"), options + gains);
    extract(clean, QStringLiteral("clean"), {});
    extract(striped, QStringLiteral("striped"), {});
    extract(striped, QStringLiteral("even"), {columns});
    const auto wanted = frame(QStringLiteral("clean"));
    QVERIFY(frame(QStringLiteral("striped")).largestDifference(wanted) > 40);
    const int left = frame(QStringLiteral("even")).largestDifference(wanted);
    QVERIFY2(left <= 10, qPrintable(QString::number(left)));
}

FILMWRIGHT_TEST(TestMlvDumpRepair, QCoreApplication)
#include "tst_mlv_dump_repair.moc"
