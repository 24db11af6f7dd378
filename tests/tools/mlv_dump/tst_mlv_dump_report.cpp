// SPDX-License-Identifier: MIT
#include "recordingbuilder.h"
#include "toolrun.h"

#include "support/testprogram.h"

#include <QTemporaryDir>
#include <QTest>

namespace blocktype = mlv::blocktype;

namespace {

ProgramRun report(const QString &path)
{
    return runBuilt(QStringLiteral("mlv_dump"), {QStringLiteral("-m"), QStringLiteral("-v"), path});
}

/// What stands behind the first ":" of the line that many lines behind the header, trimmed.
QString value(const ProgramRun &run, const char *header, int line)
{
    const auto start = run.lines.indexOf(QLatin1String(header));
    if (start < 0)
        return QStringLiteral("(no block)");
    return run.lines.value(start + line).section(QLatin1Char(':'), 1).trimmed();
}

/// The lines that belong to the first block with that header.
QStringList blockLines(const ProgramRun &run, const char *header)
{
    const auto start = run.lines.indexOf(QLatin1String(header));
    auto end = start + 1;
    while (start >= 0 && end < run.lines.size() && run.lines[end].startsWith(QLatin1Char(' ')))
        ++end;
    return run.lines.mid(start + 1, end - start - 1);
}

} // namespace

/// mlv_dump -m -v: which line has which value.
class TestMlvDumpReport : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void valuesStandWhereReadersTakeThem_data();
    void valuesStandWhereReadersTakeThem();
    void blocksHaveTheirNumberOfLines_data();
    void blocksHaveTheirNumberOfLines();
    void everyKindOfBlockIsPrinted();
    void timesAreMilliseconds();
    void settingsThatChangeAreAllPrinted();
    void chunksHaveAHeaderEach();
    void frameCountsAreThoseThatCanBeRead();
    void framesWithFilledGapsAreCounted();
    void missingBlocksAreMissing();
    void reportEndsWithTheCountOfFrames();
    void textsAreHarmless();
    void longTextIsOneLine();
    void warningsStandBeforeTheFirstBlock();

private:
    QString write(const RecordingBuilder &builder) const
    {
        return builder.write(m_folder.filePath(QStringLiteral("a.MLV")));
    }

    QTemporaryDir m_folder;
};

void TestMlvDumpReport::valuesStandWhereReadersTakeThem_data()
{
    QTest::addColumn<QByteArray>("header");
    QTest::addColumn<int>("line");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *header, int line, const char *expected) {
        QTest::addRow("%s, line %d", header, line)
            << QByteArray(header) << line << QString::fromUtf8(expected);
    };
    row("File Header (MLVI)", 2, "v2.0");
    row("File Header (MLVI)", 3, "1234605616436508552");
    row("File Header (MLVI)", 4, "25.000000");
    row("File Header (MLVI)", 5, "0 / 1");
    row("File Header (MLVI)", 6, "4");
    row("File Header (MLVI)", 7, "4");
    row("Block: RAWI", 4, "128x72");
    row("Block: RTCI", 4, "12.06.2014");
    row("Block: RTCI", 5, "15:30:07 (GMT+0)");
    row("Block: RTCI", 6, "'UTC'");
    row("Block: IDNT", 4, "'Canon EOS 5D Mark III'");
    row("Block: IDNT", 5, "'0123456789ABCDEF'");
    row("Block: IDNT", 6, "0x80000285");
    row("Block: EXPO", 5, "400");
    row("Block: EXPO", 8, "20000µs (1/50.00)");
    row("Block: LENS", 4, "'EF24-70mm f/2.8L II USM'");
    row("Block: LENS", 6, "35 mm");
    row("Block: LENS", 8, "f/2.80");
    row("Block: VIDF", 4, "#0000");
}

void TestMlvDumpReport::valuesStandWhereReadersTakeThem()
{
    QFETCH(QByteArray, header);
    QFETCH(int, line);
    const auto run = report(testData(QStringLiteral("recordings/plain14.MLV")));
    QCOMPARE(run.status, 0);
    QTEST(value(run, header.constData(), line), "expected");
}

void TestMlvDumpReport::blocksHaveTheirNumberOfLines_data()
{
    QTest::addColumn<QByteArray>("header");
    QTest::addColumn<int>("lines");
    QTest::newRow("RAWI") << QByteArray("Block: RAWI") << 20;
    QTest::newRow("RTCI") << QByteArray("Block: RTCI") << 9;
    QTest::newRow("IDNT") << QByteArray("Block: IDNT") << 6;
    QTest::newRow("EXPO") << QByteArray("Block: EXPO") << 8;
    QTest::newRow("LENS") << QByteArray("Block: LENS") << 12;
    QTest::newRow("WBAL") << QByteArray("Block: WBAL") << 10;
    QTest::newRow("WAVI") << QByteArray("Block: WAVI") << 10;
    QTest::newRow("VIDF") << QByteArray("Block: VIDF") << 7;
    QTest::newRow("AUDF") << QByteArray("Block: AUDF") << 5;
}

void TestMlvDumpReport::blocksHaveTheirNumberOfLines()
{
    QFETCH(QByteArray, header);
    const auto run = report(testData(QStringLiteral("recordings/plain14.MLV")));
    QTEST(int(blockLines(run, header.constData()).size()), "lines");
}

void TestMlvDumpReport::everyKindOfBlockIsPrinted()
{
    using namespace mlv;
    const auto run = report(
        write(RecordingBuilder()
                  .addRawInfo()
                  .addFrame(0, 1)
                  .add(blocktype::rawCapture, RawCapture{5760, 3840, 162, 0, 1, 2, 3, 2, 12, 34})
                  .add(blocktype::dualIso, DualIso{1, 4})
                  .add(blocktype::mark, Mark{0x1f})
                  .add(blocktype::style, Style{129, 1, -2, 3, -4, {}})
                  .add(blocktype::level, Level{1234, 50})
                  .addBytes(blocktype::info, "typed text")
                  .addBytes(blocktype::version, QByteArray::fromHex("05000000") + "mod 1\0\0\0")
                  .addBytes(blocktype::debug, QByteArray::fromHex("0000000003000000") + "log")
                  .addBytes(blocktype::filler, "x")
                  .addBytes({'Q', 'Q', 'Q', 'Q'}, "x")));
    QCOMPARE(run.status, 0);
    const QStringList expected{
        QStringLiteral("    raw_capture_info:"), QStringLiteral("      sensor res       5760x3840"),
        QStringLiteral("      sensor crop      1.62 (APS-C)"),
        QStringLiteral("      sampling         5x3 (3 of 5 lines read, 1 of 3 columns read)"),
        QStringLiteral("      offset           12,34")};
    QCOMPARE(blockLines(run, "Block: RAWC").mid(3), expected);
    QCOMPARE(value(run, "Block: DISO", 4), QStringLiteral("1"));
    QCOMPARE(value(run, "Block: DISO", 5), QStringLiteral("4"));
    QCOMPARE(value(run, "Block: MARK", 4), QStringLiteral("0x1F"));
    QCOMPARE(value(run, "Block: STYL", 6), QStringLiteral("-2"));
    QCOMPARE(value(run, "Block: ELVL", 4), QStringLiteral("12.34 degrees"));
    QCOMPARE(value(run, "Block: INFO", 4), QStringLiteral("'typed text'"));
    QCOMPARE(value(run, "Block: VERS", 4), QStringLiteral("'mod 1'"));
    QCOMPARE(value(run, "Block: DEBG", 4), QStringLiteral("'log'"));
    QCOMPARE(blockLines(run, "Block: NULL").size(), 3);
    QCOMPARE(blockLines(run, "Block: QQQQ").size(), 3);
}

void TestMlvDumpReport::timesAreMilliseconds()
{
    const auto run = report(write(RecordingBuilder().addBytes(blocktype::info, "x", 1234567)));
    QCOMPARE(value(run, "Block: INFO", 1), QStringLiteral("0x00000034"));
    QCOMPARE(value(run, "Block: INFO", 2), QStringLiteral("17"));
    QCOMPARE(value(run, "Block: INFO", 3), QStringLiteral("1234.567000 ms"));
}

void TestMlvDumpReport::settingsThatChangeAreAllPrinted()
{
    // Readers take the first.
    const auto run = report(write(RecordingBuilder()
                                      .add(blocktype::exposure, mlv::Exposure{0, 100, 0, 0, 1000})
                                      .add(blocktype::exposure, mlv::Exposure{0, 800, 0, 0, 9})));
    QCOMPARE(run.lines.count(QStringLiteral("Block: EXPO")), 2);
    QCOMPARE(value(run, "Block: EXPO", 5), QStringLiteral("100"));
}

void TestMlvDumpReport::chunksHaveAHeaderEach()
{
    const auto run = report(testData(QStringLiteral("recordings/split.MLV")));
    QCOMPARE(run.lines.count(QStringLiteral("File Header (MLVI)")), 3);
    const auto second =
        run.lines.indexOf(QStringLiteral("File Header (MLVI)"),
                          run.lines.indexOf(QStringLiteral("File Header (MLVI)")) + 1);
    QCOMPARE(run.lines[second + 5].section(QLatin1Char(':'), 1).trimmed(), QStringLiteral("1 / 3"));
    QCOMPARE(run.lines[second + 6].section(QLatin1Char(':'), 1).trimmed(), QStringLiteral("2"));
}

void TestMlvDumpReport::frameCountsAreThoseThatCanBeRead()
{
    // A recording that was not closed says 0, one that was cut off says too many: whoever waits for
    // that many frames would wait in vain.
    for (const quint32 said : {0U, 2U, 9U}) {
        RecordingBuilder builder;
        builder.header.videoFrames = said;
        builder.header.audioFrames = said;
        builder.addRawInfo().addFrame(0, 1).addFrame(1, 1).addFrame(1, 2).addSound(0, "ab");
        const auto run = report(write(builder));
        QCOMPARE(value(run, "File Header (MLVI)", 6), QStringLiteral("2"));
        QCOMPARE(value(run, "File Header (MLVI)", 7), QStringLiteral("1"));
    }
}

void TestMlvDumpReport::framesWithFilledGapsAreCounted()
{
    const QString label = QStringLiteral("Frames with filled gaps: ");
    const auto gaps =
        report(write(RecordingBuilder().addRawInfo().addFrame(3, 100).addFrame(7, 100)));
    QCOMPARE(value(gaps, "File Header (MLVI)", 6), QStringLiteral("2"));
    QVERIFY(gaps.lines.contains(label + QStringLiteral("5")));
    const auto none =
        report(write(RecordingBuilder().addRawInfo().addFrame(3, 100).addFrame(4, 100)));
    QVERIFY(!none.hasLineWith(label));
}

void TestMlvDumpReport::missingBlocksAreMissing()
{
    const auto run = report(testData(QStringLiteral("recordings/nolens.MLV")));
    QCOMPARE(run.status, 0);
    QVERIFY(!run.lines.contains(QStringLiteral("Block: LENS")));
    QVERIFY(run.lines.contains(QStringLiteral("Block: EXPO")));
    const auto bare = report(write(RecordingBuilder()));
    QVERIFY(bare.lines.contains(QStringLiteral("File Header (MLVI)")));
    QVERIFY(!bare.hasLineWith(QStringLiteral("Block:")));
}

void TestMlvDumpReport::reportEndsWithTheCountOfFrames()
{
    QCOMPARE(report(testData(QStringLiteral("recordings/plain14.MLV"))).lastTwoLines(),
             (QStringList{QStringLiteral("Processed 4 video frames at 25.00 FPS (0.16 s)"),
                          QStringLiteral("Done")}));
}

void TestMlvDumpReport::textsAreHarmless()
{
    mlv::Identity identity{};
    identity.name = {'D', 'o', 'n', 'e', '\n', '[', 'E', 'R', 'R', 'O', 'R', ']', '%', 's'};
    identity.serial.fill('9'); // without a NUL
    mlv::Lens lens{};
    lens.name = {'B', 'l', 'o', 'c', 'k', ':', ' ', 'E', 'X', 'P', 'O', '\n', 'x'};
    const auto run =
        report(write(RecordingBuilder()
                         .addRawInfo()
                         .addFrame(0, 1)
                         .add(blocktype::identity, identity)
                         .add(blocktype::lens, lens)
                         .addBytes({'D', 'o', 'n', 'e'}, "x")
                         .addBytes({'\n', '\x1b', '\xff', ' '}, "x")
                         .addBytes(blocktype::info, "[ERROR] Done\r\nDone[UNUSABLE] x")));
    QCOMPARE(run.status, 0);
    QCOMPARE(value(run, "Block: IDNT", 4), QStringLiteral("'done (ERROR)%s'"));
    QCOMPARE(value(run, "Block: IDNT", 5), QStringLiteral("'%1'").arg(QString(32, u'9')));
    QCOMPARE(value(run, "Block: INFO", 4), QStringLiteral("'(ERROR) done  done(UNUSABLE) x'"));
    QVERIFY(run.lines.contains(QStringLiteral("Block: done")));
    QVERIFY(run.lines.contains(QStringLiteral("Block:   ? ")));
    QVERIFY(!run.lines.contains(QStringLiteral("Block: EXPO")));
    QVERIFY(!run.hasLineWith(QStringLiteral("[ERROR]")));
    QVERIFY(!run.hasLineWith(QStringLiteral("[UNUSABLE]")));
    QCOMPARE(run.lines.filter(QStringLiteral("Done")).size(), 1);
}

void TestMlvDumpReport::longTextIsOneLine()
{
    const auto run =
        report(write(RecordingBuilder().addBytes(blocktype::info, QByteArray(100000, 'i'))));
    QCOMPARE(value(run, "Block: INFO", 4).size(), 1002);
    QCOMPARE(run.lines.last(), QStringLiteral("Done"));
}

void TestMlvDumpReport::warningsStandBeforeTheFirstBlock()
{
    const auto run = report(write(RecordingBuilder().addRawInfo().addFrame(0, 1).addRaw(
        "VIDF\xff\xff\xff\x01 cut off in the middle")));
    QCOMPARE(run.status, 0);
    QCOMPARE(run.lines.filter(QStringLiteral("[WARNING]")).size(), 1);
    QVERIFY(run.lines[0].startsWith(QStringLiteral("[WARNING]")));
    QCOMPARE(run.lines[1], QStringLiteral("File Header (MLVI)"));
}

FILMWRIGHT_TEST(TestMlvDumpReport, QCoreApplication)
#include "tst_mlv_dump_report.moc"
