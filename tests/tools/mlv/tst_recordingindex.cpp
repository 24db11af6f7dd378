// SPDX-License-Identifier: MIT
#include "mlv/recording.h"

#include "raw/error.h"
#include "recordingbuilder.h"
#include "support/ordinaryuser.h"
#include "support/testprogram.h"

#include <QScopeGuard>
#include <QTemporaryDir>
#include <QTest>

using mlv::Recording;
namespace blocktype = mlv::blocktype;

namespace {

QList<quint32> numbers(const mlv::DataIndex &index)
{
    QList<quint32> list;
    for (const auto &block : index)
        list.append(block.number);
    return list;
}

bool warns(const Recording &recording, const std::string &text)
{
    return std::any_of(recording.warnings().begin(), recording.warnings().end(),
                       [&](const std::string &line) { return line.find(text) != line.npos; });
}

} // namespace

class TestRecordingIndex : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void framesComeByNumberWhateverTheirPlace();
    void ofRepeatedNumbersTheLastFrameCounts();
    void soundBlocksComeByNumber();
    void firstRawInfoHolds();
    void otherLevelsOnTheWayAreTold_data();
    void otherLevelsOnTheWayAreTold();
    void anotherFrameSizeIsNoticed();
    void framesTellTheirPlaceInTheReadOut();
    void shortBlockIsReadAsFarAsItGoes();
    void longerFileHeaderIsSteppedOver();
    void unknownBlocksAndFillersAreSteppedOver();
    void frameSpaceIsLeftOut();
    void frameSpaceBeyondTheBlockLeavesTheFrameOut();
    void shortFrameIsLeftOut();
    void ofAnImpossibleDepthNoFrameIsTooShort();
    void cutOffTailKeepsTheFramesBefore();
    void everyCutKeepsTheWholeFrames();
    void impossibleSizeEndsTheFile();
    void lastBytesOfLessThanAHeaderAreNoDamage();
    void fillerWithoutSizeIsSteppedOverToTheNextBoundary();
    void fillerBeyondTheEndIsNoDamage();
    void chunksAreReadTogether();
    void chunksAreFoundInAnyLetterCase_data();
    void chunksAreFoundInAnyLetterCase();
    void ofTwoSpellingsTheOneOfThisRecordingIsRead();
    void chunkOpenedByItselfIsReadAlone();
    void chunkBehindAMissingOneIsRead();
    void chunksOfAnotherRecordingLeaveNoHole();
    void folderThatCannotBeListedIsTold();
    void foreignChunkIsNotRead();
    void fileThatIsNoChunkIsNotRead();
    void zeroRateDenominatorIsNoRate();
    void fileWithoutHeaderIsRefused_data();
    void fileWithoutHeaderIsRefused();
    void missingFileAndFolderAreRefused();
    void fileThatBecomesShorterIsNoDamage();

private:
    QString path(const char *name) const { return m_folder->filePath(QLatin1String(name)); }
    Recording open(const RecordingBuilder &builder, const char *name = "a.MLV") const
    {
        return Recording(builder.write(path(name)).toStdString());
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void TestRecordingIndex::framesComeByNumberWhateverTheirPlace()
{
    const auto recording =
        open(RecordingBuilder().addRawInfo().addFrame(3, 9).addFrame(0, 9).addFrame(7, 9));
    QCOMPARE(numbers(recording.videoFrames()), (QList<quint32>{0, 3, 7}));
    QVERIFY(recording.warnings().empty());
}

void TestRecordingIndex::ofRepeatedNumbersTheLastFrameCounts()
{
    const auto recording =
        open(RecordingBuilder().addRawInfo().addFrame(0, 1).addFrame(1, 2).addFrame(1, 3));
    QCOMPARE(numbers(recording.videoFrames()), (QList<quint32>{0, 1}));
    QVERIFY(recording.videoFrames()[1].offset > recording.videoFrames()[0].offset + 2 * 1344);
    QVERIFY(warns(recording, "1 frames have the number of a later one"));
}

void TestRecordingIndex::soundBlocksComeByNumber()
{
    const auto recording = open(RecordingBuilder().addSound(1, "cd", 9).addSound(0, "ab", 5));
    QCOMPARE(numbers(recording.audioBlocks()), (QList<quint32>{0, 1}));
    std::array<char, 2> data{};
    recording.read(recording.audioBlocks()[0], std::as_writable_bytes(std::span(data)));
    QCOMPARE(QByteArray(data.data(), 2), QByteArray("ab"));
    QCOMPARE(recording.audioBlocks()[0].timestamp, 5U);
}

void TestRecordingIndex::firstRawInfoHolds()
{
    auto later = RecordingBuilder::rawInfo();
    later.blackLevel = 7;
    const auto recording =
        open(RecordingBuilder().addRawInfo().add(blocktype::rawInfo, later).addFrame(0, 1));
    QCOMPARE(recording.rawInfo()->blackLevel, 2048);
    QVERIFY(!recording.changesFormat());
}

void TestRecordingIndex::otherLevelsOnTheWayAreTold_data()
{
    QTest::addColumn<int>("field");
    QTest::newRow("black") << 0;
    QTest::newRow("white") << 1;
    QTest::newRow("matrix") << 2;
    QTest::newRow("the same again") << 3;
}

void TestRecordingIndex::otherLevelsOnTheWayAreTold()
{
    QFETCH(const int, field);
    auto later = RecordingBuilder::rawInfo();
    later.blackLevel += field == 0 ? 1 : 0;
    later.whiteLevel += field == 1 ? 1 : 0;
    later.colourMatrix[4] += field == 2 ? 1 : 0;
    // Frames are numbered from the first one on when they are written.
    const auto recording = open(RecordingBuilder()
                                    .addRawInfo()
                                    .addFrame(10, 1)
                                    .addFrame(11, 1)
                                    .add(blocktype::rawInfo, later)
                                    .addFrame(13, 1)
                                    .addFrame(12, 1));
    QCOMPARE(warns(recording, "from frame 2 on other levels or colours are recorded; the first "
                              "ones hold"),
             field < 3);
    QCOMPARE(recording.warnings().size(), std::size_t{field < 3 ? 1U : 0U});
    QCOMPARE(recording.rawInfo()->blackLevel, 2048);
    // Without a frame behind it, it says nothing of any.
    const auto last =
        open(RecordingBuilder().addRawInfo().addFrame(0, 1).add(blocktype::rawInfo, later));
    QVERIFY(last.warnings().empty());
}

void TestRecordingIndex::framesTellTheirPlaceInTheReadOut()
{
    mlv::VideoFrame frame{};
    frame.cropX = 72;
    frame.cropY = 28;
    const auto recording = open(RecordingBuilder().addRawInfo().add(
        blocktype::videoFrame, frame, 1, RecordingBuilder::frameOf(3000)));
    QCOMPARE(recording.videoFrames().at(0).cropX, quint16{72});
    QCOMPARE(recording.videoFrames().at(0).cropY, quint16{28});
}

void TestRecordingIndex::anotherFrameSizeIsNoticed()
{
    auto later = RecordingBuilder::rawInfo();
    later.width *= 2;
    QVERIFY(open(RecordingBuilder().addRawInfo().add(blocktype::rawInfo, later)).changesFormat());
}

void TestRecordingIndex::shortBlockIsReadAsFarAsItGoes()
{
    const auto recording =
        open(RecordingBuilder().addBytes(blocktype::exposure, QByteArray::fromHex("0100000064")));
    const auto &exposure = recording.exposure().at(0)->value;
    QCOMPARE(exposure.isoMode, 1U);
    QCOMPARE(exposure.iso, 100U);
    QCOMPARE(exposure.shutter, 0U);
}

void TestRecordingIndex::longerFileHeaderIsSteppedOver()
{
    RecordingBuilder builder;
    builder.header.size += 12;
    builder.addRaw(QByteArray(12, 'x')).addRawInfo().addFrame(0, 1);
    QCOMPARE(open(builder).videoFrames().size(), std::size_t{1});
}

void TestRecordingIndex::unknownBlocksAndFillersAreSteppedOver()
{
    const auto recording = open(RecordingBuilder()
                                    .addBytes({'Q', 'Q', 'Q', 'Q'}, QByteArray(33, 'x'))
                                    .addRawInfo()
                                    .addBytes(blocktype::filler, QByteArray(500, 'V'))
                                    .addBytes(blocktype::backup, "")
                                    .addFrame(0, 1));
    QCOMPARE(recording.videoFrames().size(), std::size_t{1});
    QVERIFY(recording.warnings().empty());
}

void TestRecordingIndex::frameSpaceIsLeftOut()
{
    mlv::VideoFrame frame{};
    frame.frameSpace = 5;
    const auto data = RecordingBuilder::frameOf(77);
    const auto recording =
        open(RecordingBuilder().addRawInfo().add(blocktype::videoFrame, frame, 1, "space" + data));
    QCOMPARE(recording.videoFrames()[0].size, static_cast<quint32>(data.size()));
    QByteArray read(data.size(), '\0');
    recording.read(
        recording.videoFrames()[0],
        std::as_writable_bytes(std::span(read.data(), static_cast<std::size_t>(read.size()))));
    QCOMPARE(read, data);
}

void TestRecordingIndex::frameSpaceBeyondTheBlockLeavesTheFrameOut()
{
    mlv::VideoFrame frame{};
    const auto data = RecordingBuilder::frameOf(77);
    for (const quint32 space : {quint32(data.size()) + 1, 0xffffffffU}) {
        frame.frameSpace = space;
        const auto recording = open(RecordingBuilder()
                                        .addRawInfo()
                                        .add(blocktype::videoFrame, frame, 1, data)
                                        .addFrame(1, 5));
        QCOMPARE(numbers(recording.videoFrames()), QList<quint32>{1});
        QVERIFY(warns(recording, "1 damaged frame or sound blocks"));
    }
}

void TestRecordingIndex::shortFrameIsLeftOut()
{
    const auto recording = open(RecordingBuilder()
                                    .addRawInfo()
                                    .addFrameData(0, RecordingBuilder::frameOf(5).chopped(1))
                                    .addFrame(1, 5));
    QCOMPARE(numbers(recording.videoFrames()), QList<quint32>{1});
    QVERIFY(warns(recording, "1 damaged frame or sound blocks"));
}

void TestRecordingIndex::ofAnImpossibleDepthNoFrameIsTooShort()
{
    for (const int bits : {0, 9, -1, std::numeric_limits<int>::min()}) {
        auto rawInfo = RecordingBuilder::rawInfo();
        rawInfo.bitsPerSample = bits;
        const auto recording =
            open(RecordingBuilder().add(blocktype::rawInfo, rawInfo).addFrame(0, 1).addFrame(1, 1));
        QCOMPARE(numbers(recording.videoFrames()), (QList<quint32>{0, 1}));
        QVERIFY(recording.warnings().empty());
    }
}

void TestRecordingIndex::cutOffTailKeepsTheFramesBefore()
{
    RecordingBuilder builder;
    builder.addRawInfo().addFrame(0, 1).addFrame(1, 2);
    const auto recording =
        open(RecordingBuilder().addRaw(builder.bytes().mid(sizeof(mlv::FileHeader)).chopped(1)));
    QCOMPARE(numbers(recording.videoFrames()), QList<quint32>{0});
    QCOMPARE(recording.warnings().size(), std::size_t{1});
    QVERIFY(warns(recording, "is cut off"));
}

void TestRecordingIndex::everyCutKeepsTheWholeFrames()
{
    RecordingBuilder builder;
    builder.addRawInfo().addFrame(0, 1).addFrame(1, 2);
    const auto blocks = builder.bytes().mid(sizeof(mlv::FileHeader));
    const qsizetype frameBlock = 32 + RecordingBuilder::frameOf(0).size();
    for (qsizetype size = 0; size <= blocks.size(); ++size) {
        const auto recording = open(RecordingBuilder().addRaw(blocks.left(size)));
        const qsizetype whole = std::max<qsizetype>(0, (size - 180) / frameBlock);
        QCOMPARE(recording.videoFrames().size(), static_cast<std::size_t>(whole));
    }
}

void TestRecordingIndex::impossibleSizeEndsTheFile()
{
    for (const char *size : {"00000000", "0f000000", "01000010", "ffffffff"}) {
        const auto recording =
            open(RecordingBuilder()
                     .addRawInfo()
                     .addFrame(0, 1)
                     .addRaw("VIDF" + QByteArray::fromHex(size) + QByteArray(300, 'x'))
                     .addFrame(1, 1));
        QCOMPARE(numbers(recording.videoFrames()), QList<quint32>{0});
        QVERIFY(warns(recording, "is damaged at byte"));
    }
}

void TestRecordingIndex::lastBytesOfLessThanAHeaderAreNoDamage()
{
    const auto recording =
        open(RecordingBuilder().addRawInfo().addFrame(0, 1).addRaw(QByteArray(15, 'x')));
    QCOMPARE(recording.videoFrames().size(), std::size_t{1});
    QVERIFY(recording.warnings().empty());
}

void TestRecordingIndex::fillerWithoutSizeIsSteppedOverToTheNextBoundary()
{
    RecordingBuilder builder;
    builder.addRawInfo().addFrame(0, 1);
    const auto used = builder.bytes().size() % 512;
    builder.addRaw("NULL" + QByteArray(4, '\0') + QByteArray(512 - used - 8, 'x'));
    builder.addFrame(1, 1);
    const auto recording = open(builder);
    QCOMPARE(numbers(recording.videoFrames()), (QList<quint32>{0, 1}));
    QVERIFY(recording.warnings().empty()); // nothing is lost
    QCOMPARE(recording.remarks().size(), std::size_t{1});
    QVERIFY(recording.remarks()[0].find("filler blocks without a size") != std::string::npos);
}

void TestRecordingIndex::fillerBeyondTheEndIsNoDamage()
{
    const auto recording = open(RecordingBuilder().addRawInfo().addFrame(0, 1).addRaw(
        "NULL\xff\xff\xff\xff" + QByteArray(100, 'x')));
    QCOMPARE(recording.videoFrames().size(), std::size_t{1});
    QVERIFY(recording.warnings().empty());
}

void TestRecordingIndex::chunksAreReadTogether()
{
    RecordingBuilder second;
    second.addFrame(1, 1).addFrame(3, 1).write(path("a.M00"));
    RecordingBuilder third;
    third.addFrame(4, 1).write(path("a.M01"));
    RecordingBuilder first;
    first.header.chunkCount = 3;
    const auto recording = open(first.addRawInfo().addFrame(0, 1).addFrame(2, 1));
    QCOMPARE(recording.chunks().size(), std::size_t{3});
    QCOMPARE(numbers(recording.videoFrames()), (QList<quint32>{0, 1, 2, 3, 4}));
    QCOMPARE(int(recording.videoFrames()[1].chunk), 1);
    QVERIFY(recording.warnings().empty());
}

void TestRecordingIndex::chunksAreFoundInAnyLetterCase_data()
{
    QTest::addColumn<QByteArray>("first");
    QTest::addColumn<QByteArray>("second");
    QTest::newRow("capital") << QByteArray("b.MLV") << QByteArray("b.M00");
    QTest::newRow("small") << QByteArray("b.mlv") << QByteArray("b.m00");
    QTest::newRow("mixed") << QByteArray("b.mLv") << QByteArray("b.m00");
    QTest::newRow("copied by a system that changes it")
        << QByteArray("b.MLV") << QByteArray("b.m00");
    QTest::newRow("the other way round") << QByteArray("b.mlv") << QByteArray("b.M00");
}

void TestRecordingIndex::chunksAreFoundInAnyLetterCase()
{
    QFETCH(QByteArray, first);
    QFETCH(QByteArray, second);
    RecordingBuilder().addFrame(1, 1).write(path(second.constData()));
    const auto recording = open(RecordingBuilder().addRawInfo().addFrame(0, 1), first.constData());
    QCOMPARE(recording.videoFrames().size(), std::size_t{2});
    QVERIFY(recording.warnings().empty());
}

void TestRecordingIndex::ofTwoSpellingsTheOneOfThisRecordingIsRead()
{
    RecordingBuilder foreign;
    foreign.header.guid = 43;
    foreign.addFrame(5, 1).write(path("b.M00"));
    RecordingBuilder().addFrame(1, 1).write(path("b.m00"));
    const auto recording = open(RecordingBuilder().addRawInfo().addFrame(0, 1), "b.MLV");
    QCOMPARE(numbers(recording.videoFrames()), (QList<quint32>{0, 1}));
}

void TestRecordingIndex::chunkOpenedByItselfIsReadAlone()
{
    RecordingBuilder().addFrame(2, 1).write(path("c.M01"));
    const auto recording = open(RecordingBuilder().addFrame(1, 1), "c.M00");
    QCOMPARE(recording.chunks().size(), std::size_t{1});
}

void TestRecordingIndex::chunkBehindAMissingOneIsRead()
{
    RecordingBuilder().addFrame(1, 1).write(path("a.M00"));
    RecordingBuilder().addFrame(3, 1).write(path("a.M02"));
    const auto recording = open(RecordingBuilder().addRawInfo().addFrame(0, 1));
    QCOMPARE(numbers(recording.videoFrames()), (QList<quint32>{0, 1, 3}));
    QCOMPARE(recording.warnings().size(), std::size_t{1});
    QVERIFY(warns(recording, "the file with the extension .M01 is missing, and with it its part of "
                             "the recording"));
}

void TestRecordingIndex::chunksOfAnotherRecordingLeaveNoHole()
{
    RecordingBuilder foreign;
    foreign.header.guid = 43;
    foreign.addFrame(1, 1).write(path("a.M01"));
    const auto recording = open(RecordingBuilder().addRawInfo().addFrame(0, 1));
    QCOMPARE(recording.warnings().size(), std::size_t{1});
    QVERIFY(warns(recording, "the file with the extension .M01 belongs to another recording"));
}

void TestRecordingIndex::folderThatCannotBeListedIsTold()
{
    const QString folder = path("closed");
    QVERIFY(QDir().mkdir(folder));
    const QString file =
        RecordingBuilder().addRawInfo().addFrame(0, 1).write(folder + QStringLiteral("/a.MLV"));
    constexpr auto closed = QFile::ExeOwner | QFile::ExeGroup | QFile::ExeOther;
    QVERIFY(QFile::setPermissions(m_folder->path(), closed));
    QVERIFY(QFile::setPermissions(folder, closed));
    const auto reopen = qScopeGuard([&] {
        constexpr auto open = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner;
        QFile::setPermissions(m_folder->path(), open);
        QFile::setPermissions(folder, open);
    });
    const OrdinaryUser user;
    QVERIFY(warns(Recording(file.toStdString()), "its folder can't be listed (Permission denied)"));
}

void TestRecordingIndex::foreignChunkIsNotRead()
{
    RecordingBuilder foreign;
    foreign.header.guid = 43;
    foreign.addFrame(1, 1).write(path("a.M00"));
    const auto recording = open(RecordingBuilder().addRawInfo().addFrame(0, 1));
    QCOMPARE(recording.chunks().size(), std::size_t{1});
    QVERIFY(warns(recording, "the file with the extension .M00 belongs to another recording"));
}

void TestRecordingIndex::fileThatIsNoChunkIsNotRead()
{
    QFile file(path("a.M00"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("hello");
    file.close();
    const auto recording = open(RecordingBuilder().addRawInfo().addFrame(0, 1));
    QCOMPARE(recording.chunks().size(), std::size_t{1});
    QVERIFY(warns(recording, "the file with the extension .M00 is not read"));
}

void TestRecordingIndex::zeroRateDenominatorIsNoRate()
{
    RecordingBuilder builder;
    QCOMPARE(open(builder).framesPerSecond(), 25.0);
    builder.header.frameRateDenominator = 0;
    QCOMPARE(open(builder).framesPerSecond(), 0.0);
}

void TestRecordingIndex::fileWithoutHeaderIsRefused_data()
{
    QTest::addColumn<QByteArray>("bytes");
    const auto whole = RecordingBuilder().bytes();
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("text") << QByteArray(1000, 't');
    QTest::newRow("header cut off") << whole.chopped(1);
    QTest::newRow("only the mark") << QByteArray("MLVI");
    QTest::newRow("header size of 8") << QByteArray("MLVI\x08\0\0\0", 8) + QByteArray(99, '\0');
    QTest::newRow("header size beyond the file")
        << QByteArray("MLVI\xff\xff\0\0", 8) + QByteArray(99, '\0');
}

void TestRecordingIndex::fileWithoutHeaderIsRefused()
{
    QFETCH(QByteArray, bytes);
    QFile file(path("a.MLV"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(bytes);
    file.close();
    QVERIFY_THROWS_EXCEPTION(raw::Error, Recording(path("a.MLV").toStdString()));
}

void TestRecordingIndex::missingFileAndFolderAreRefused()
{
    QVERIFY_THROWS_EXCEPTION(raw::ReadError, Recording(path("none.MLV").toStdString()));
    QVERIFY_THROWS_EXCEPTION(raw::ReadError, Recording(m_folder->path().toStdString()));
}

void TestRecordingIndex::fileThatBecomesShorterIsNoDamage()
{
    const auto recording = open(RecordingBuilder().addRawInfo().addFrame(0, 1));
    QVERIFY(QFile::resize(path("a.MLV"), 1000));
    std::array<std::byte, 1344> frame{};
    try {
        recording.read(recording.videoFrames()[0], frame);
        QFAIL("the frame was read");
    } catch (const raw::ReadError &error) {
        QCOMPARE(QByteArray(error.what()), QByteArray("became shorter while it was read"));
    }
}

FILMWRIGHT_TEST(TestRecordingIndex, QCoreApplication)
#include "tst_recordingindex.moc"
