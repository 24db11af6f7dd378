// SPDX-License-Identifier: MIT
#include "mlvdump/mlvdumpreport.h"
#include "support/logcapture.h"
#include "support/testprogram.h"

#include <QTest>

#include <stdexcept>

using namespace filmwright;

namespace {

QStringList fileHeader(const QString &fps, int video, int audio)
{
    return {QStringLiteral("File Header (MLVI)"),
            QStringLiteral("    Size        : 0x00000034"),
            QStringLiteral("    Ver         : v2.0"),
            QStringLiteral("    GUID        : 123456789"),
            QStringLiteral("    FPS         : ") + fps,
            QStringLiteral("    File        : 0 / 1"),
            QStringLiteral("    Frames Video: %1").arg(video),
            QStringLiteral("    Frames Audio: %1").arg(audio)};
}

QStringList block(const QString &type, const QStringList &fields, int lines)
{
    QStringList block{QStringLiteral("Block: ") + type, QStringLiteral("  Offset: 0x00000034"),
                      QStringLiteral("    Size: 40"), QStringLiteral("    Time: 0.012000 ms")};
    block += fields;
    while (block.size() <= lines)
        block << QStringLiteral("     Other: field");
    return block;
}

QStringList exposure(const QString &shutter = QStringLiteral("20000\u00b5s (1/50.00)"))
{
    return block(QStringLiteral("EXPO"),
                 {QStringLiteral("     ISO Mode:   0"), QStringLiteral("     ISO:        400"),
                  QStringLiteral("     ISO Analog: 88"),
                  QStringLiteral("     ISO DGain:  0/1024 EV"),
                  QStringLiteral("     Shutter: ") + shutter},
                 8);
}

QStringList identity(const QString &name = QStringLiteral("'Maker Model X'"))
{
    return block(QStringLiteral("IDNT"),
                 {QStringLiteral("     Camera Name:   ") + name,
                  QStringLiteral("     Camera Serial: '1A2B3C'"),
                  QStringLiteral("     Camera Model:  0x80000001")},
                 6);
}

QStringList lens(const QString &aperture = QStringLiteral("f/2.80"))
{
    return block(QStringLiteral("LENS"),
                 {QStringLiteral("     Name:        'Prime 35mm'"),
                  QStringLiteral("     Serial: ''"), QStringLiteral("     Focal Len:   35 mm"),
                  QStringLiteral("     Focus Dist:  1 mm"),
                  QStringLiteral("     Aperture:    ") + aperture},
                 12);
}

QStringList cameraClock()
{
    return block(QStringLiteral("RTCI"),
                 {QStringLiteral("     Date:        21.11.2026"),
                  QStringLiteral("     Time:        13:05:59 (GMT+0)")},
                 9);
}

QStringList rawInformation()
{
    return block(QStringLiteral("RAWI"), {QStringLiteral("    Res:  1920x1080")}, 20);
}

QStringList wholeReport()
{
    return fileHeader(QStringLiteral("23.976000"), 48, 2) + exposure() + identity() + lens() +
           cameraClock() + rawInformation() + QStringList{QStringLiteral("Done")};
}

} // namespace

class TestMlvDumpReport : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyValueIsRead();
    void shapeOfTheFramesIsRead();
    void whiteBalanceIsNamed_data();
    void whiteBalanceIsNamed();
    void shapeThatCannotBeTrueIsHarmless();
    void laterFileHeadersAddTheirCounts();
    void laterHeaderDoesNotChangeTheFrameRate();
    void headerWithATrailingBlankIsNoHeader();
    void missingFileHeaderIsLogged();
    void missingBlocksAreLoggedWithTheExposureMessage();
    void missingIdentityIsLoggedWithTheExposureMessage();
    void missingClockAndRawInformationAreNotLogged();
    void firstBlockOfAKindCounts();
    void shutterIsInSeconds_data();
    void shutterIsInSeconds();
    void colonInANameCutsIt();
    void punctuationInsideANameStays();
    void blockCutShortThrows();
    void everyBlockNeedsAllItsLines_data();
    void everyBlockNeedsAllItsLines();
    void lineWithoutAColonThrows();
    void apertureWithoutItsMarkThrows();
    void valuesBeforeAnErrorAreKept();
    void leadingIntegerIsLenient_data();
    void leadingIntegerIsLenient();
};

void TestMlvDumpReport::everyValueIsRead()
{
    const LogCapture log;
    MlvMetadata metadata;
    readReport(wholeReport(), metadata);
    QCOMPARE(metadata.fps, 23.976F);
    QCOMPARE(metadata.videoFrames, 48U);
    QCOMPARE(metadata.audioFrames, 2U);
    QCOMPARE(metadata.iso, 400U);
    QCOMPARE(metadata.shutter, 0.02);
    QCOMPARE(metadata.aperture, 2.8F);
    QCOMPARE(metadata.camera, QStringLiteral("Maker Model X"));
    QCOMPARE(metadata.cameraSerial, QStringLiteral("1A2B3C"));
    QCOMPARE(metadata.lens, QStringLiteral("Prime 35mm"));
    QCOMPARE(metadata.focal, QStringLiteral("35 mm"));
    QCOMPARE(metadata.date, QStringLiteral("21.11.2026"));
    QCOMPARE(metadata.time, QStringLiteral("13:05:59 (GMT+0)"));
    QCOMPARE(metadata.resolution, QStringLiteral("1920x1080"));
    QCOMPARE(LogCapture::lines(), QStringList());
}

void TestMlvDumpReport::shapeOfTheFramesIsRead()
{
    MlvMetadata metadata;
    readReport(wholeReport() +
                   block(QStringLiteral("RAWC"),
                         {QStringLiteral("    raw_capture_info:"),
                          QStringLiteral("      sensor res       5184x3456"),
                          QStringLiteral("      sensor crop      1.62 (APS-C)"),
                          QStringLiteral("      sampling         5x3 (1 of 5 lines read, 1 of 3 "
                                         "columns read)")},
                         7),
               metadata);
    QCOMPARE(metadata.sampling, QSize(3, 5));
    QCOMPARE(metadata.activeArea, QRect());
    QStringList area = rawInformation();
    area[14] = QStringLiteral("      active_area.y1   2");
    area[15] = QStringLiteral("      active_area.x1   4");
    area[16] = QStringLiteral("      active_area.y2   1082");
    area[17] = QStringLiteral("      active_area.x2   1924");
    readReport(fileHeader(QStringLiteral("25"), 1, 0) + area, metadata);
    QCOMPARE(metadata.activeArea, QRect(4, 2, 1920, 1080));
}

void TestMlvDumpReport::whiteBalanceIsNamed_data()
{
    QTest::addColumn<QString>("mode");
    QTest::addColumn<QString>("name");
    QTest::newRow("automatic") << QStringLiteral("0") << QStringLiteral("automatic");
    QTest::newRow("shade") << QStringLiteral("8") << QStringLiteral("shade");
    QTest::newRow("temperature") << QStringLiteral("9") << QStringLiteral("5200 K");
    QTest::newRow("unknown") << QStringLiteral("7") << QString();
    QTest::newRow("no number") << QStringLiteral("x") << QString();
}

void TestMlvDumpReport::whiteBalanceIsNamed()
{
    QFETCH(const QString, mode);
    const QStringList report = wholeReport() + block(QStringLiteral("WBAL"),
                                                     {QStringLiteral("    Mode        : ") + mode,
                                                      QStringLiteral("    Kelvin      : 5200")},
                                                     10);
    MlvMetadata metadata;
    readReport(report, metadata);
    QTEST(metadata.whiteBalance, "name");
}

void TestMlvDumpReport::shapeThatCannotBeTrueIsHarmless()
{
    QStringList area = rawInformation();
    area[14] = QStringLiteral("      active_area.y1   -2147483648");
    area[15] = QStringLiteral("      active_area.x1   2147483647");
    area[16] = QStringLiteral("      active_area.y2   -2147483648");
    MlvMetadata metadata;
    readReport(fileHeader(QStringLiteral("25"), 1, 0) + area +
                   QStringList{QStringLiteral("Block: RAWC"), QStringLiteral("   sampling x")},
               metadata);
    QVERIFY(!metadata.activeArea.isValid());
    QVERIFY(metadata.sampling.isEmpty());
}

void TestMlvDumpReport::laterFileHeadersAddTheirCounts()
{
    MlvMetadata metadata;
    readReport(fileHeader(QStringLiteral("25.000000"), 1000, 10) +
                   fileHeader(QStringLiteral("25.000000"), 500, 5) + wholeReport().mid(8),
               metadata);
    QCOMPARE(metadata.videoFrames, 1500U);
    QCOMPARE(metadata.audioFrames, 15U);
}

void TestMlvDumpReport::laterHeaderDoesNotChangeTheFrameRate()
{
    MlvMetadata metadata;
    readReport(fileHeader(QStringLiteral("25.000000"), 1, 1) +
                   fileHeader(QStringLiteral("50.000000"), 1, 1) + wholeReport().mid(8),
               metadata);
    QCOMPARE(metadata.fps, 25.0F);
}

void TestMlvDumpReport::headerWithATrailingBlankIsNoHeader()
{
    const LogCapture log;
    QStringList report = wholeReport();
    report[0] += QLatin1Char(' ');
    MlvMetadata metadata;
    readReport(report, metadata);
    QCOMPARE(metadata.videoFrames, 0U);
    QCOMPARE(LogCapture::lines(), QStringList{QStringLiteral("Unable to read File Header (MLVI)")});
}

void TestMlvDumpReport::missingFileHeaderIsLogged()
{
    const LogCapture log;
    MlvMetadata metadata;
    metadata.fps = 25;
    metadata.videoFrames = 3;
    metadata.audioFrames = 4;
    readReport(wholeReport().mid(8), metadata);
    QCOMPARE(metadata.fps, 0.0F);
    QCOMPARE(metadata.videoFrames, 0U);
    QCOMPARE(metadata.audioFrames, 0U);
    QCOMPARE(LogCapture::lines(), QStringList{QStringLiteral("Unable to read File Header (MLVI)")});
}

void TestMlvDumpReport::missingBlocksAreLoggedWithTheExposureMessage()
{
    const LogCapture log;
    MlvMetadata metadata;
    readReport(fileHeader(QStringLiteral("25.000000"), 1, 0), metadata);
    const QString message = QStringLiteral("Unable to read Block: EXPO");
    QCOMPARE(LogCapture::lines(), (QStringList{message, message, message}));
    QCOMPARE(metadata.iso, 0U);
    QCOMPARE(metadata.lens, QString());
    QVERIFY(!metadata.lens.isNull());
}

void TestMlvDumpReport::missingIdentityIsLoggedWithTheExposureMessage()
{
    const LogCapture log;
    MlvMetadata metadata;
    readReport(fileHeader(QStringLiteral("25.000000"), 1, 0) + exposure() + lens(), metadata);
    QCOMPARE(LogCapture::lines(), QStringList{QStringLiteral("Unable to read Block: EXPO")});
    QCOMPARE(metadata.camera, QString());
    QCOMPARE(metadata.cameraSerial, QString());
}

void TestMlvDumpReport::missingClockAndRawInformationAreNotLogged()
{
    const LogCapture log;
    MlvMetadata metadata;
    readReport(fileHeader(QStringLiteral("25.000000"), 1, 0) + exposure() + identity() + lens(),
               metadata);
    QCOMPARE(LogCapture::lines(), QStringList());
    QCOMPARE(metadata.resolution, QString());
}

void TestMlvDumpReport::firstBlockOfAKindCounts()
{
    MlvMetadata metadata;
    readReport(wholeReport() + exposure(QStringLiteral("1000\u00b5s")), metadata);
    QCOMPARE(metadata.shutter, 0.02);
}

void TestMlvDumpReport::shutterIsInSeconds_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<double>("seconds");
    QTest::newRow("microseconds") << "20000\u00b5s" << 0.02;
    QTest::newRow("fraction of a microsecond") << "0.5\u00b5s (1/2000000.00)" << 0.0000005;
    QTest::newRow("no micro sign: only the leading number counts") << "1/50" << 0.000001;
    QTest::newRow("no number") << "fast" << 0.0;
}

void TestMlvDumpReport::shutterIsInSeconds()
{
    QFETCH(QString, text);
    MlvMetadata metadata;
    readReport(fileHeader(QStringLiteral("25"), 1, 0) + exposure(text), metadata);
    QTEST(metadata.shutter, "seconds");
}

void TestMlvDumpReport::colonInANameCutsIt()
{
    MlvMetadata metadata;
    readReport(identity(QStringLiteral("'Model: X'")), metadata);
    QCOMPARE(metadata.camera, QStringLiteral("Model"));
}

void TestMlvDumpReport::punctuationInsideANameStays()
{
    MlvMetadata metadata;
    readReport(identity(QStringLiteral("'Model X-1 (b), y.' ")), metadata);
    QCOMPARE(metadata.camera, QStringLiteral("Model X-1 (b), y"));
}

void TestMlvDumpReport::blockCutShortThrows()
{
    MlvMetadata metadata;
    QVERIFY_THROWS_EXCEPTION(std::out_of_range, readReport(exposure().mid(0, 8), metadata));
    QVERIFY_THROWS_EXCEPTION(std::out_of_range,
                             readReport(fileHeader(QStringLiteral("25"), 1, 0) +
                                            fileHeader(QStringLiteral("25"), 1, 0).mid(0, 7),
                                        metadata));
}

void TestMlvDumpReport::everyBlockNeedsAllItsLines_data()
{
    QTest::addColumn<QStringList>("block");
    QTest::addColumn<int>("lines");
    QTest::newRow("MLVI") << fileHeader(QStringLiteral("25"), 4, 0) << 7;
    QTest::newRow("EXPO") << exposure() << 8;
    QTest::newRow("IDNT") << identity() << 6;
    QTest::newRow("LENS") << lens() << 12;
    QTest::newRow("RTCI") << cameraClock() << 9;
    QTest::newRow("RAWI") << rawInformation() << 20;
}

void TestMlvDumpReport::everyBlockNeedsAllItsLines()
{
    QFETCH(QStringList, block);
    QFETCH(int, lines);
    const LogCapture log;
    MlvMetadata metadata;
    readReport(block.first(1 + lines), metadata);
    QVERIFY_THROWS_EXCEPTION(std::out_of_range, readReport(block.first(lines), metadata));
}

void TestMlvDumpReport::lineWithoutAColonThrows()
{
    QStringList report = wholeReport();
    report[4] = QStringLiteral("    FPS 25");
    MlvMetadata metadata;
    QVERIFY_THROWS_EXCEPTION(std::out_of_range, readReport(report, metadata));
}

void TestMlvDumpReport::apertureWithoutItsMarkThrows()
{
    MlvMetadata metadata;
    QVERIFY_THROWS_EXCEPTION(std::out_of_range, readReport(lens(QStringLiteral("2.8")), metadata));
}

void TestMlvDumpReport::valuesBeforeAnErrorAreKept()
{
    MlvMetadata metadata;
    QVERIFY_THROWS_EXCEPTION(
        std::out_of_range,
        readReport(fileHeader(QStringLiteral("25"), 7, 0) + exposure().mid(0, 5), metadata));
    QCOMPARE(metadata.videoFrames, 7U);
}

void TestMlvDumpReport::leadingIntegerIsLenient_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<qint64>("value");
    QTest::newRow("plain") << "42" << qint64(42);
    QTest::newRow("white space in front, text behind") << "  42 frames" << qint64(42);
    QTest::newRow("signs") << "-7" << qint64(-7);
    QTest::newRow("plus") << "+7" << qint64(7);
    QTest::newRow("no number") << "frames" << qint64(0);
    QTest::newRow("not a number") << "-nan" << qint64(0);
    QTest::newRow("empty") << "" << qint64(0);
    QTest::newRow("too large") << "99999999999999999999" << std::numeric_limits<qint64>::max();
}

void TestMlvDumpReport::leadingIntegerIsLenient()
{
    QFETCH(QString, text);
    QTEST(leadingInteger(text), "value");
}

FILMWRIGHT_TEST(TestMlvDumpReport, QCoreApplication)
#include "tst_mlvdumpreport.moc"
