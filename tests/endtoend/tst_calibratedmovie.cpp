// SPDX-License-Identifier: MIT
// Calibration recordings on their way from the command line into the frames.

#include "commandline.h"
#include "sample.h"
#include "support/testprogram.h"
#include "support/toolfolder.h"

#include <QDir>
#include <QFile>
#include <QTest>

#include <algorithm>

class TestCalibratedMovie : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();

    void toolsAreCalledWithTheirArguments_data();
    void toolsAreCalledWithTheirArguments();
    void darkOfTheFlatWithoutAFlatIsTold();
    void calibrationRecordingThatIsNoneFailsTheRun();
    void hotPixelsAreGone();

private:
    QString path(const char *name) const { return m_folder.filePath(QString::fromUtf8(name)); }

    QTemporaryDir m_folder;
};

void TestCalibratedMovie::initTestCase()
{
    const QString size = QStringLiteral("--size 320x192 --frames 4 --no-sound ");
    QVERIFY(writeSample(path("clip.MLV"), size));
    QVERIFY(writeSample(path("dark.MLV"), size + QStringLiteral("--dark --seed 2")));
    QVERIFY(writeSample(path("flat.MLV"), size + QStringLiteral("--flat --seed 3")));
    QVERIFY(writeSample(path("flatdark.MLV"), size + QStringLiteral("--dark --seed 4")));
}

void TestCalibratedMovie::toolsAreCalledWithTheirArguments_data()
{
    // DIR is the folder of the recordings, TMP the temporary directory.
    QTest::addColumn<QString>("options");
    QTest::addColumn<QStringList>("averaging");
    QTest::addColumn<QString>("calibration");
    const QString dark = QStringLiteral("-a DIR/dark.MLV -o TMP/dark.mlv");
    const QString flat = QStringLiteral("-a DIR/flat.MLV -o TMP/flat.mlv");
    const QString flatDark = QStringLiteral("-a DIR/flatdark.MLV -o TMP/flat_dark.mlv");
    const QString difference =
        QStringLiteral("-s TMP/flat_dark.mlv -o TMP/flat-flat_dark.mlv TMP/flat.mlv");
    QTest::newRow("none") << "" << QStringList() << "";
    QTest::newRow("dark") << "--dark DIR/dark.MLV" << QStringList{dark} << " -s TMP/dark.mlv";
    QTest::newRow("flat") << "--flat DIR/flat.MLV" << QStringList{flat} << " -t TMP/flat.mlv";
    QTest::newRow("dark and flat") << "--dark DIR/dark.MLV --flat DIR/flat.MLV"
                                   << QStringList{dark, flat} << " -s TMP/dark.mlv -t TMP/flat.mlv";
    QTest::newRow("all") << "--dark DIR/dark.MLV --flat DIR/flat.MLV --flat-dark DIR/flatdark.MLV"
                         << QStringList{dark, flat, flatDark, difference}
                         << " -s TMP/dark.mlv -t TMP/flat-flat_dark.mlv";
}

void TestCalibratedMovie::toolsAreCalledWithTheirArguments()
{
    QFETCH(QString, options);
    QFETCH(QStringList, averaging);
    QFETCH(QString, calibration);
    ToolFolder tools;
    for (const char *name : {"mlv_dump", "dcraw", "ffmpeg"}) {
        const QString tool = QString::fromUtf8(name);
        tools.addTool(tool, QStringLiteral("exec %1 \"$@\"").arg(realTool(tool)));
    }
    const QString base = path("work");
    const QString temporary = base + QStringLiteral("/FilmwrightTmp");
    const auto arguments = [&](QString text) {
        text.replace(QLatin1String("DIR"), m_folder.path())
            .replace(QLatin1String("TMP"), temporary);
        return text.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    };
    CommandLine cli;
    QVERIFY(
        cli.run(arguments(QStringLiteral("convert --format avi --quality maximum --temp-dir %1 %2 "
                                         "DIR/clip.MLV")
                              .arg(base, options))));
    QCOMPARE(cli.status(), 0);
    QList<QStringList> expected;
    for (const QString &run : averaging)
        expected << arguments(run);
    expected << arguments(QStringLiteral("-m -v DIR/clip.MLV"))
             << arguments(QStringLiteral("--dng DIR/clip.MLV --no-cs -f 0-0%1 -o TMP/clip.MLV/tmp")
                              .arg(calibration));
    QCOMPARE(tools.calls(mlvDump), expected);

    expected.clear();
    for (int frame = 0; frame < 4; ++frame) {
        expected << arguments(
            QStringLiteral("-H 3 -q 3 -w -W -T -b 4.000000 TMP/clip.MLV/tmp00000%1.dng")
                .arg(frame));
    }
    QCOMPARE(tools.calls(QStringLiteral("dcraw")), expected);
    QCOMPARE(tools.calls(QStringLiteral("ffmpeg")),
             QList<QStringList>{
                 arguments(QStringLiteral("-r 24.00 -i TMP/clip.MLV/tmp%06d.tiff -pix_fmt "
                                          "yuv420p -vcodec rawvideo DIR/clip.avi"))});
    QCOMPARE(QDir(base).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList());
}

void TestCalibratedMovie::darkOfTheFlatWithoutAFlatIsTold()
{
    CommandLine cli;
    QVERIFY(cli.run({QStringLiteral("convert"), QStringLiteral("--flat-dark"), path("flatdark.MLV"),
                     path("clip.MLV")}));
    QCOMPARE(cli.status(), 0);
    QCOMPARE(cli.messages().constFirst(),
             QStringLiteral("without a flat, the dark of the flat is not used"));
}

void TestCalibratedMovie::calibrationRecordingThatIsNoneFailsTheRun()
{
    QFile letter(path("letter.MLV"));
    QVERIFY(letter.open(QIODevice::WriteOnly));
    letter.write("this is a letter, not a recording, though its name says so\n");
    letter.close();
    CommandLine cli;
    QVERIFY(cli.run({QStringLiteral("convert"), QStringLiteral("--dark"), letter.fileName(),
                     path("clip.MLV")}));
    QCOMPARE(cli.status(), 1);
    QCOMPARE(cli.output(), QStringList());
    QVERIFY(
        cli.messages().constLast().startsWith(QStringLiteral("calibration failed: letter.MLV: ")));
    QCOMPARE(cli.temporaryEntries(), QStringList());
}

/// The chart's border is an even grey: what stands out of it are the camera's hot pixels, which the
/// dark frame takes away.
void TestCalibratedMovie::hotPixelsAreGone()
{
    const auto contrastOfTheBorder = [this](const QStringList &options) {
        CommandLine cli;
        cli.run(QStringList{QStringLiteral("convert"), QStringLiteral("--quality"),
                            QStringLiteral("maximum")} +
                options + QStringList{path("clip.MLV")});
        const QByteArray frame = lumaFrames(path("clip.mov")).value(2);
        constexpr qsizetype border = 320 * 5;
        const auto [darkest, brightest] =
            std::ranges::minmax(frame.first(std::min(border, frame.size())), {},
                                [](char luma) { return static_cast<uchar>(luma); });
        return static_cast<uchar>(brightest) - static_cast<uchar>(darkest);
    };
    const int uncalibrated = contrastOfTheBorder({});
    const int calibrated = contrastOfTheBorder(
        {QStringLiteral("--dark"), path("dark.MLV"), QStringLiteral("--flat"), path("flat.MLV")});
    QVERIFY(uncalibrated > 0);
    QVERIFY2(2 * calibrated < uncalibrated,
             qPrintable(QStringLiteral("%1, %2").arg(calibrated).arg(uncalibrated)));
}

FILMWRIGHT_TEST(TestCalibratedMovie, QCoreApplication)
#include "tst_calibratedmovie.moc"
