// SPDX-License-Identifier: MIT
#include "measuredrun.h"
#include "rawpicture.h"
#include "recordingbuilder.h"
#include "toolrun.h"

#include "support/testprogram.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

namespace {

QString number(int frame)
{
    return QStringLiteral("%1").arg(frame, 6, 10, QLatin1Char('0'));
}

} // namespace

/// What is left of damaged recordings.
class TestMlvDumpDamage : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void cutOffRecordingGivesItsWholeFrames();
    void damagedFrameIsReplacedByTheOneBefore_data();
    void damagedFrameIsReplacedByTheOneBefore();
    void damagedFirstFramesAreReplacedByTheFirstGoodOne();
    void averageLeavesDamagedFramesOut();
    void wildFrameNumberDoesNotFillTheDisk();
    void wildSoundNumberDoesNotFillTheDisk();
    void wildTimesDoNotFillTheDisk();
    void unreadableKindsAreRefused_data();
    void unreadableKindsAreRefused();
    void forgedFrameSizeTakesNoMemory();
    void foreignChunkIsSaid();

private:
    QString out(const QString &name) const { return m_folder->filePath(name); }
    QString write(const QByteArray &bytes) const
    {
        QFile file(out(QStringLiteral("a.MLV")));
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
            qFatal("The test's recording can't be written");
        return file.fileName();
    }
    ProgramRun extract(const QByteArray &recording) const
    {
        return runBuilt(QStringLiteral("mlv_dump"),
                        {QStringLiteral("--dng"), write(recording), QStringLiteral("-o"),
                         out(QStringLiteral("tmp"))});
    }
    int differenceTo(const char *folder, int frame, int expectedFrame) const
    {
        const auto expected =
            readPackedPgm(testData(QStringLiteral("recordings/expected/%1/%2.pgm.gz")
                                       .arg(QLatin1String(folder), number(expectedFrame))));
        return readDng(out(QStringLiteral("tmp%1.dng").arg(number(frame))))
            .largestDifference(expected);
    }
    int frames() const
    {
        return static_cast<int>(
            QDir(m_folder->path()).entryList({QStringLiteral("tmp*.dng")}, QDir::Files).size());
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void TestMlvDumpDamage::cutOffRecordingGivesItsWholeFrames()
{
    const auto whole = recordingBytes("dark");
    const auto run = extract(whole.left(frameData(whole, 4) + 5000));
    QCOMPARE(run.status, 0);
    QCOMPARE(run.lines.filter(QStringLiteral("[WARNING]")).size(), 1);
    QVERIFY(run.hasLineWith(QStringLiteral("is cut off")));
    QCOMPARE(frames(), 4);
    QCOMPARE(differenceTo("dark", 3, 3), 0);
    QCOMPARE(run.lastTwoLines(),
             (QStringList{QStringLiteral("Processed 4 video frames at 25.00 FPS (0.16 s)"),
                          QStringLiteral("Done")}));
}

void TestMlvDumpDamage::damagedFrameIsReplacedByTheOneBefore_data()
{
    QTest::addColumn<QByteArray>("recording");
    QTest::newRow("lossless") << QByteArray("lossless14");
    QTest::newRow("LZMA") << QByteArray("lzma14");
}

void TestMlvDumpDamage::damagedFrameIsReplacedByTheOneBefore()
{
    QFETCH(QByteArray, recording);
    auto bytes = recordingBytes(recording.constData());
    for (const int place : {2, 3})
        bytes.replace(frameData(bytes, place), 1000, QByteArray(1000, '\xee'));
    const auto run = extract(bytes);
    QCOMPARE(run.status, 0);
    QCOMPARE(
        run.lines.filter(QStringLiteral("[WARNING]")),
        (QStringList{
            QStringLiteral("[WARNING] frame 2 is damaged and replaced by the frame before it"),
            QStringLiteral("[WARNING] frame 3 is damaged and replaced by the frame before it")}));
    QCOMPARE(frames(), 4);
    for (int frame = 0; frame < 4; ++frame)
        QCOMPARE(differenceTo("plain14", frame, std::min(frame, 1)), 0);
}

void TestMlvDumpDamage::damagedFirstFramesAreReplacedByTheFirstGoodOne()
{
    auto bytes = recordingBytes("lossless14");
    for (const int place : {0, 1})
        bytes.replace(frameData(bytes, place), 1000, QByteArray(1000, '\xee'));
    const auto run = extract(bytes);
    QCOMPARE(run.status, 0);
    QVERIFY(run.hasLineWith(QStringLiteral("[WARNING] the first 2 frames are damaged")));
    QCOMPARE(frames(), 4);
    for (int frame = 0; frame < 4; ++frame)
        QCOMPARE(differenceTo("plain14", frame, std::max(frame, 2)), 0);
}

void TestMlvDumpDamage::averageLeavesDamagedFramesOut()
{
    auto bytes = recordingBytes("lossless14");
    bytes.replace(frameData(bytes, 1), 1000, QByteArray(1000, '\xee'));
    const auto run =
        runBuilt(QStringLiteral("mlv_dump"), {QStringLiteral("-a"), write(bytes),
                                              QStringLiteral("-o"), out(QStringLiteral("b.mlv"))});
    QCOMPARE(run.status, 0);
    QVERIFY(run.hasLineWith(QStringLiteral("[WARNING] 1 damaged frames are left out")));
    QVERIFY(run.lines.at(run.lines.size() - 2).startsWith(QStringLiteral("Processed 3 ")));
}

void TestMlvDumpDamage::wildFrameNumberDoesNotFillTheDisk()
{
    const auto run =
        extract(RecordingBuilder().addRawInfo().addFrame(0, 9).addFrame(0xfffffff0, 10).bytes());
    QCOMPARE(run.status, 0);
    QCOMPARE(frames(), 2);
    QVERIFY(run.hasLineWith(QStringLiteral("the frame numbers jump too far")));
}

void TestMlvDumpDamage::wildSoundNumberDoesNotFillTheDisk()
{
    const auto run = extract(RecordingBuilder()
                                 .addRawInfo()
                                 .addFrame(0, 9)
                                 .add(mlv::blocktype::waveInfo, RecordingBuilder::waveInfo())
                                 .addSound(0, "aaaa")
                                 .addSound(0xfffffff0, "bbbb")
                                 .bytes());
    QCOMPARE(run.status, 0);
    QVERIFY(run.hasLineWith(QStringLiteral("jump too far")));
    QCOMPARE(QFileInfo(out(QStringLiteral("tmp.wav"))).size(), 44 + 8);
}

void TestMlvDumpDamage::wildTimesDoNotFillTheDisk()
{
    const auto run = extract(RecordingBuilder()
                                 .addRawInfo()
                                 .addFrame(0, 9)
                                 .add(mlv::blocktype::waveInfo, RecordingBuilder::waveInfo())
                                 .addSound(0, "aaaa", 0xffffffffffffffff)
                                 .bytes());
    QCOMPARE(run.status, 0);
    QCOMPARE(QFileInfo(out(QStringLiteral("tmp.wav"))).size(), 44 + 4);
}

void TestMlvDumpDamage::unreadableKindsAreRefused_data()
{
    QTest::addColumn<QByteArray>("recording");
    QTest::addColumn<QString>("error");
    const auto withClass = [](quint16 videoClass) {
        RecordingBuilder builder;
        builder.header.videoClass = videoClass;
        return builder.addRawInfo().addFrame(0, 1).bytes();
    };
    QTest::newRow("H.264") << withClass(4) << QStringLiteral("holds no raw video");
    QTest::newRow("no video") << withClass(0) << QStringLiteral("holds no raw video");
    QTest::newRow("differences") << withClass(0x41) << QStringLiteral("stored as differences");
    QTest::newRow("both compressions")
        << withClass(0xa1) << QStringLiteral("a compression that can't be read");
    QTest::newRow("no RAWI") << RecordingBuilder().addFrame(0, 1).bytes()
                             << QStringLiteral("(no RAWI block)");
    auto deep = RecordingBuilder::rawInfo();
    deep.bitsPerSample = 13;
    QTest::newRow("13 bits")
        << RecordingBuilder().add(mlv::blocktype::rawInfo, deep).addFrame(0, 1).bytes()
        << QStringLiteral("has frames of 13 bits");
    auto wide = RecordingBuilder::rawInfo();
    wide.width *= 2;
    QTest::newRow("size changes on the way")
        << RecordingBuilder().addRawInfo().addFrame(0, 1).add(mlv::blocktype::rawInfo, wide).bytes()
        << QStringLiteral("changes the size or depth");
    QTest::newRow("no frames") << RecordingBuilder().addRawInfo().bytes()
                               << QStringLiteral("holds no whole frame");
}

void TestMlvDumpDamage::unreadableKindsAreRefused()
{
    QFETCH(QByteArray, recording);
    QFETCH(QString, error);
    const auto run = extract(recording);
    QCOMPARE(run.status, 1);
    QCOMPARE(run.lines.size(), 1);
    QVERIFY(run.lines[0].startsWith(QStringLiteral("[UNUSABLE] The recording ")));
    QVERIFY(run.lines[0].contains(error));
    QCOMPARE(frames(), 0);
    const auto report = runBuilt(QStringLiteral("mlv_dump"),
                                 {QStringLiteral("-m"), QStringLiteral("-v"), write(recording)});
    QCOMPARE(report.status, 1);
    QCOMPARE(report.lines.filter(QStringLiteral("[UNUSABLE]")), run.lines);
    QVERIFY(report.lines.contains(QStringLiteral("File Header (MLVI)")));
    QCOMPARE(report.lastTwoLines(),
             (QStringList{QStringLiteral("Processed 0 video frames at 25.00 FPS (0.00 s)"),
                          QStringLiteral("Done")}));
}

void TestMlvDumpDamage::forgedFrameSizeTakesNoMemory()
{
    auto info = RecordingBuilder::rawInfo();
    info.width = 12000;
    info.height = 12000;
    for (const quint16 videoClass : {quint16{0x01}, quint16{0x21}, quint16{0x81}}) {
        RecordingBuilder builder;
        builder.header.videoClass = videoClass;
        builder.add(mlv::blocktype::rawInfo, info)
            .addFrameData(0, QByteArray::fromHex("00107b0f5d00001000") + QByteArray(99, 'x'));
        const auto path = write(builder.bytes());
        const auto run = runMeasured(
            QStringLiteral("mlv_dump"),
            {QStringLiteral("--dng"), path, QStringLiteral("-o"), out(QStringLiteral("tmp"))},
            std::chrono::seconds(60));
        QVERIFY(run.output.contains("[UNUSABLE] The recording holds no"));
        if (memoryIsTheProgramsOwn)
            QVERIFY(run.peakMemory < 32 << 20); // a frame of that size has 252 MB
    }
}

void TestMlvDumpDamage::foreignChunkIsSaid()
{
    RecordingBuilder foreign;
    foreign.header.guid = 1;
    foreign.addFrame(1, 9).write(out(QStringLiteral("a.M00")));
    const auto run = extract(RecordingBuilder().addRawInfo().addFrame(0, 9).bytes());
    QCOMPARE(run.status, 0);
    QVERIFY(run.hasLineWith(QStringLiteral("[WARNING] the file with the extension .M00 belongs to "
                                           "another recording and is not read")));
    QCOMPARE(frames(), 1);
}

FILMWRIGHT_TEST(TestMlvDumpDamage, QCoreApplication)
#include "tst_mlv_dump_damage.moc"
