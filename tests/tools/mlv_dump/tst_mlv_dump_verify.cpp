// SPDX-License-Identifier: MIT
#include "recordingbuilder.h"
#include "toolrun.h"

#include "mlv_dump/numberranges.h"
#include "support/testprogram.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

namespace {

/// The lines with that mark, without it.
QStringList marked(const ProgramRun &run, const char *mark)
{
    QStringList found;
    for (const QString &line : run.lines)
        if (line.startsWith(QLatin1String(mark)))
            found << line.section(QLatin1Char(' '), 1);
    return found;
}

QStringList losses(const ProgramRun &run)
{
    return marked(run, "[LOST]");
}

} // namespace

/// What a person is told of a recording before the card is wiped.
class TestMlvDumpVerify : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void wholeRecordingsAreWhole_data();
    void wholeRecordingsAreWhole();
    void everyKindOfSampleIsWhole_data();
    void everyKindOfSampleIsWhole();
    void droppedFramesAreNamed();
    void damagedFramesAreNamed_data();
    void damagedFramesAreNamed();
    void cutTailIsTold();
    void missingPartIsTold();
    void foreignPartIsTold();
    void lostSoundIsTold();
    void repeatedSoundNumberIsALoss();
    void unusualSizesAreNoted();
    void soundOfUnknownKindIsALoss();
    void framesBehindTheLastOneAreKnownByTheHeader();
    void recordingThatWasNotClosedIsWhole();
    void blockWithADamagedNameIsALoss();
    void levelsAreNotedWithoutALoss();
    void unreadableRecordingsHaveAStatusOfTheirOwn_data();
    void unreadableRecordingsHaveAStatusOfTheirOwn();
    void surveyTellsOnlyOfTags();
    void rangesOfNumbers();

private:
    QString out(const char *name) const { return m_folder->filePath(QLatin1String(name)); }
    static ProgramRun verify(const QString &path)
    {
        return runBuilt(QStringLiteral("mlv_dump"), {QStringLiteral("--verify"), path});
    }
    ProgramRun verify(const RecordingBuilder &builder) const
    {
        return verify(builder.write(out("a.MLV")));
    }
    ProgramRun verify(const QByteArray &bytes) const
    {
        QFile file(out("a.MLV"));
        if (file.open(QIODevice::WriteOnly))
            file.write(bytes);
        file.close();
        return verify(file.fileName());
    }
    /// Three frames, as a camera closes them.
    static RecordingBuilder threeFrames()
    {
        RecordingBuilder builder;
        builder.header.videoFrames = 3;
        builder.addRawInfo().addFrame(0, 3000).addFrame(1, 3000).addFrame(2, 3000);
        return builder;
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void TestMlvDumpVerify::wholeRecordingsAreWhole_data()
{
    QTest::addColumn<int>("frames");
    QTest::newRow("plain14") << 4;
    QTest::newRow("bits10") << 3;
    QTest::newRow("bits12") << 3;
    QTest::newRow("bits16") << 2;
    QTest::newRow("lossless14") << 4;
    QTest::newRow("lossless12") << 3;
    QTest::newRow("lzma14") << 4;
    QTest::newRow("split") << 6;
    QTest::newRow("nolens") << 2;
}

void TestMlvDumpVerify::wholeRecordingsAreWhole()
{
    QFETCH(int, frames);
    const auto run = verify(
        testData(QStringLiteral("recordings/%1.MLV").arg(QLatin1String(QTest::currentDataTag()))));
    QCOMPARE(losses(run), QStringList());
    QCOMPARE(run.status, 0);
    QVERIFY(run.lastTwoLines().constFirst().startsWith(
        QStringLiteral("Processed %1 video frames").arg(frames)));
    QCOMPARE(run.lines.constLast(), QStringLiteral("Done"));
}

void TestMlvDumpVerify::everyKindOfSampleIsWhole_data()
{
    QTest::addColumn<QString>("options");
    for (const char *options :
         {"--bits 10", "--bits 12 --compress lossless --shape camera --padding --change",
          "--compress lossless --shape folded --predictor 6", "--compress lzma --shuffle",
          "--split 3 --sound", "--no-sound --sampling 5x3", "--dark", "--flat"})
        QTest::newRow(options) << QString::fromLatin1(options);
}

void TestMlvDumpVerify::everyKindOfSampleIsWhole()
{
    QFETCH(QString, options);
    const auto arguments = QStringLiteral("--size 64x32 --frames 30 ") + options;
    QCOMPARE(runBuilt(QStringLiteral("mlv_sample"),
                      arguments.split(QLatin1Char(' ')) + QStringList{out("s.MLV")})
                 .status,
             0);
    const auto run = verify(out("s.MLV"));
    QCOMPARE(losses(run), QStringList());
    QCOMPARE(run.status, 0);
}

void TestMlvDumpVerify::droppedFramesAreNamed()
{
    RecordingBuilder builder;
    builder.header.videoFrames = 4;
    builder.addRawInfo().addFrame(0, 9).addFrame(2, 9).addFrame(6, 9).addFrame(7, 9);
    const auto run = verify(builder);
    QCOMPARE(losses(run), QStringList{QStringLiteral("4 frames are missing: 1, 3-5")});
    QCOMPARE(run.status, 1);
    RecordingBuilder beheaded;
    beheaded.header.videoFrames = 1;
    QCOMPARE(losses(verify(beheaded.addRawInfo().addFrame(2, 9))),
             QStringList{QStringLiteral("2 frames are missing: 0-1")});
}

void TestMlvDumpVerify::damagedFramesAreNamed_data()
{
    QTest::addColumn<QByteArray>("recording");
    for (const char *recording : {"lossless14", "lzma14"})
        QTest::newRow(recording) << recordingBytes(recording);
}

void TestMlvDumpVerify::damagedFramesAreNamed()
{
    QFETCH(QByteArray, recording);
    auto bytes = recording;
    for (const int place : {1, 2}) {
        const auto at = frameData(bytes, place);
        bytes.replace(at, 200, QByteArray(200, '\x55'));
    }
    const auto run = verify(bytes);
    QCOMPARE(losses(run), QStringList{QStringLiteral("2 frames are damaged: 1-2")});
    QCOMPARE(run.status, 1);
}

void TestMlvDumpVerify::cutTailIsTold()
{
    const auto run = verify(threeFrames().bytes().chopped(5));
    QCOMPARE(losses(run).size(), 2);
    QVERIFY(losses(run).at(0).startsWith(QStringLiteral("chunk 1 of the recording is cut off")));
    QCOMPARE(losses(run).at(1),
             QStringLiteral("chunk 1 of the recording should have 3 frames, but has 2"));
    QCOMPARE(run.status, 1);
}

void TestMlvDumpVerify::missingPartIsTold()
{
    threeFrames().write(out("a.MLV"));
    RecordingBuilder later;
    later.addFrame(5, 9).write(out("a.M01"));
    const auto run = verify(out("a.MLV"));
    QVERIFY(run.hasLineWith(QStringLiteral("[LOST] the file with the extension .M00 is missing")));
    QVERIFY(run.hasLineWith(QStringLiteral("[LOST] 2 frames are missing: 3-4")));
    QCOMPARE(run.status, 1);
}

void TestMlvDumpVerify::foreignPartIsTold()
{
    RecordingBuilder foreign;
    foreign.header.guid = 1;
    foreign.addFrame(3, 9).write(out("a.M00"));
    const auto run = verify(threeFrames());
    QVERIFY(run.hasLineWith(QStringLiteral("[LOST] the file with the extension .M00 belongs to "
                                           "another recording and is not read")));
    QCOMPARE(run.status, 1);
}

void TestMlvDumpVerify::lostSoundIsTold()
{
    auto builder = threeFrames();
    builder.add(mlv::blocktype::waveInfo, RecordingBuilder::waveInfo())
        .addSound(0, "aaaa")
        .addSound(3, "aaaa");
    const auto run = verify(builder);
    QCOMPARE(losses(run), QStringList{QStringLiteral("2 sound blocks are missing: 1-2")});
    QCOMPARE(run.status, 1);
}

void TestMlvDumpVerify::repeatedSoundNumberIsALoss()
{
    auto builder = threeFrames();
    builder.add(mlv::blocktype::waveInfo, RecordingBuilder::waveInfo())
        .addSound(0, "aaaa")
        .addSound(0, "bbbb");
    QCOMPARE(losses(verify(builder)),
             QStringList{
                 QStringLiteral("1 sound blocks have the number of a later one and are left out")});
}

void TestMlvDumpVerify::unusualSizesAreNoted()
{
    RecordingBuilder builder;
    builder.header.videoFrames = 1;
    builder.addRawInfo().addFrameData(0, RecordingBuilder::frameOf(9) + QByteArray(600, 'x'));
    builder.add(mlv::blocktype::waveInfo, RecordingBuilder::waveInfo())
        .addSound(0, "aaaa")
        .addSound(1, "bb")
        .addSound(2, "cc") // the last one may be shorter
        .addRaw(QByteArray(7, 'x'));
    const auto run = verify(builder);
    QCOMPARE(losses(run), QStringList());
    QCOMPARE(marked(run, "[NOTE]"),
             (QStringList{
                 QStringLiteral("the last 7 bytes of chunk 1 of the recording are no block"),
                 QStringLiteral("some sound blocks are not of the size of the first one: 1"),
                 QStringLiteral("frames have more data than their width, height and depth need, "
                                "which may be recorded wrong")}));
    QCOMPARE(run.status, 0);
}

void TestMlvDumpVerify::soundOfUnknownKindIsALoss()
{
    auto builder = threeFrames();
    const auto run = verify(builder.addSound(0, "aaaa"));
    QCOMPARE(losses(run), QStringList{QStringLiteral(
                              "nothing says what the sound is, so that it can't be used")});
}

void TestMlvDumpVerify::framesBehindTheLastOneAreKnownByTheHeader()
{
    auto builder = threeFrames();
    builder.header.videoFrames = 5;
    QCOMPARE(
        losses(verify(builder)),
        QStringList{QStringLiteral("chunk 1 of the recording should have 5 frames, but has 3")});
}

void TestMlvDumpVerify::recordingThatWasNotClosedIsWhole()
{
    auto builder = threeFrames();
    builder.header.videoFrames = 0;
    const auto run = verify(builder);
    QCOMPARE(losses(run), QStringList());
    QCOMPARE(marked(run, "[NOTE]").size(), 1);
    QCOMPARE(run.status, 0);
}

void TestMlvDumpVerify::blockWithADamagedNameIsALoss()
{
    auto bytes = threeFrames().bytes();
    bytes[bytes.lastIndexOf("VIDF")] = '\x16';
    const auto run = verify(bytes);
    QVERIFY(run.hasLineWith(
        QStringLiteral("[LOST] chunk 1 of the recording has 1 blocks whose kind is damaged")));
    QCOMPARE(run.status, 1);
}

void TestMlvDumpVerify::levelsAreNotedWithoutALoss()
{
    QCOMPARE(runBuilt(QStringLiteral("mlv_sample"),
                      {QStringLiteral("--size"), QStringLiteral("128x72"),
                       QStringLiteral("--frames"), QStringLiteral("3"),
                       QStringLiteral("--recorded-black"), QStringLiteral("0"), out("s.MLV")})
                 .status,
             0);
    const auto run = verify(out("s.MLV"));
    QCOMPARE(run.status, 0);
    QVERIFY(run.hasLineWith(QStringLiteral("[NOTE] the recorded black level is 0")));
}

void TestMlvDumpVerify::unreadableRecordingsHaveAStatusOfTheirOwn_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("a letter") << QByteArray("this is a letter");
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("no frame") << RecordingBuilder().addRawInfo().bytes();
    QTest::newRow("no format") << RecordingBuilder().addFrame(0, 9).bytes();
}

void TestMlvDumpVerify::unreadableRecordingsHaveAStatusOfTheirOwn()
{
    QFETCH(QByteArray, bytes);
    const auto run = verify(bytes);
    QCOMPARE(run.status, 2);
    QCOMPARE(marked(run, "[UNUSABLE]").size(), 1);
    QCOMPARE(run.lines.constLast(), QStringLiteral("Done"));
}

void TestMlvDumpVerify::surveyTellsOnlyOfTags()
{
    QCOMPARE(
        runBuilt(QStringLiteral("mlv_sample"),
                 {QStringLiteral("--size"), QStringLiteral("128x72"), QStringLiteral("--frames"),
                  QStringLiteral("3"), QStringLiteral("--drop"), QStringLiteral("1"),
                  QStringLiteral("--recorded-black"), QStringLiteral("0"), out("s.MLV")})
            .status,
        0);
    const auto run =
        runBuilt(QStringLiteral("mlv_dump"), {QStringLiteral("--survey"), out("s.MLV")});
    QCOMPARE(run.status, 0);
    QCOMPARE(marked(run, "[NOTE]").size(), 1);
    QCOMPARE(losses(run), QStringList());
    QVERIFY(QFile::remove(out("s.MLV")));
    QVERIFY(m_folder->isValid() && QDir(m_folder->path()).isEmpty()); // nothing was written
}

void TestMlvDumpVerify::rangesOfNumbers()
{
    mlvdump::NumberRanges ranges;
    QVERIFY(ranges.isEmpty());
    ranges.add(0, 0);
    ranges.add(1, 3);
    ranges.add(7, 7);
    QCOMPARE(QString::fromStdString(ranges.text()), QStringLiteral("0-3, 7"));
    for (std::uint64_t number = 10; number < 1000; number += 2)
        ranges.add(number, number);
    QCOMPARE(ranges.count(), 5U + 495U);
    QVERIFY(QString::fromStdString(ranges.text()).endsWith(QStringLiteral(" and 397 more")));
    QVERIFY(ranges.text().size() < 1000);
}

FILMWRIGHT_TEST(TestMlvDumpVerify, QCoreApplication)
#include "tst_mlv_dump_verify.moc"
