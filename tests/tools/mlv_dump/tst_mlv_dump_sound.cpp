// SPDX-License-Identifier: MIT
#include "recordingbuilder.h"
#include "toolrun.h"

#include "support/testprogram.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>
#include <QtEndian>

namespace blocktype = mlv::blocktype;

namespace {

/// The data of the sound blocks of all chunks, as they stand in the files.
QByteArray soundBlocks(const QString &recording)
{
    QByteArray sound;
    for (const char *extension : {"MLV", "M00", "M01"}) {
        QFile file(
            testData(QStringLiteral("recordings/%1.%2").arg(recording, QLatin1String(extension))));
        if (!file.open(QIODevice::ReadOnly))
            continue;
        const auto bytes = file.readAll();
        for (auto at = bytes.indexOf("AUDF"); at >= 0; at = bytes.indexOf("AUDF", at + 1))
            sound += bytes.mid(at + 24, 7680);
    }
    return sound;
}

} // namespace

/// The WAV file beside the frames.
class TestMlvDumpSound : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void headDescribesTheSamples();
    void samplesAreThoseOfTheRecording_data();
    void samplesAreThoseOfTheRecording();
    void blocksAreJoinedByTheirNumbers();
    void laterSoundStartsWithSilence();
    void earlierSoundStartsWithThePicture();
    void soundStartsWithTheFirstSelectedFrame();
    void soundEndsWithTheLastSelectedFrame();
    void soundStartsWithinAGap();
    void lostBlockIsSilent();
    void silenceOf8BitSoundIsItsMiddle();
    void oddSizeIsPadded();
    void recordingWithoutSoundHasNoFile_data();
    void recordingWithoutSoundHasNoFile();
    void unreadableSoundIsLeftOutWithAWarning_data();
    void unreadableSoundIsLeftOutWithAWarning();
    void prefixMayContainUnderscores();

private:
    QString out(const char *name) const { return m_folder->filePath(QLatin1String(name)); }
    ProgramRun extract(const QString &path, const QStringList &more = {}) const
    {
        return runBuilt(
            QStringLiteral("mlv_dump"),
            QStringList{QStringLiteral("--dng"), path, QStringLiteral("-o"), out("tmp")} + more);
    }
    ProgramRun extract(const RecordingBuilder &builder, const QStringList &more = {}) const
    {
        return extract(builder.write(out("a.MLV")), more);
    }
    QByteArray wav() const
    {
        QFile file(out("tmp.wav"));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    QByteArray samples() const { return wav().mid(44); }
    /// One frame at the start of the recording, 8000 mono samples of 16 bits a second.
    static RecordingBuilder recording()
    {
        return RecordingBuilder().addRawInfo().addFrame(0, 3000).add(blocktype::waveInfo,
                                                                     RecordingBuilder::waveInfo());
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void TestMlvDumpSound::headDescribesTheSamples()
{
    QCOMPARE(extract(recording().addSound(0, "0123456789")).status, 0);
    const auto head = wav().left(44);
    QCOMPARE(head.toHex(), QByteArray("524946462e00000057415645"
                                      "666d74201000000001000100401f0000803e000002001000"
                                      "646174610a000000"));
}

void TestMlvDumpSound::samplesAreThoseOfTheRecording_data()
{
    QTest::addColumn<QString>("recording");
    QTest::addColumn<int>("blocks");
    QTest::newRow("plain14") << QStringLiteral("plain14") << 4;
    QTest::newRow("split") << QStringLiteral("split") << 6;
    QTest::newRow("dropped") << QStringLiteral("dropped") << 5;
}

void TestMlvDumpSound::samplesAreThoseOfTheRecording()
{
    QFETCH(QString, recording);
    QFETCH(int, blocks);
    const auto path = testData(QStringLiteral("recordings/%1.MLV").arg(recording));
    QCOMPARE(extract(path).status, 0);
    QCOMPARE(samples().size(), blocks * 7680);
    QCOMPARE(samples(), soundBlocks(recording));
}

void TestMlvDumpSound::blocksAreJoinedByTheirNumbers()
{
    extract(recording().addSound(1, "cccc").addSound(0, "aaaa").addSound(2, "ee"));
    QCOMPARE(samples(), QByteArray("aaaaccccee"));
}

void TestMlvDumpSound::laterSoundStartsWithSilence()
{
    extract(recording().addSound(0, "aaaa", 1000)); // 8 samples
    QCOMPARE(samples(), QByteArray(16, '\0') + "aaaa");
}

void TestMlvDumpSound::earlierSoundStartsWithThePicture()
{
    auto builder = RecordingBuilder();
    builder.addRawInfo().add(blocktype::waveInfo, RecordingBuilder::waveInfo());
    builder.addFrame(1, 3000); // after 40 ms: 320 samples
    builder.addSound(0, QByteArray(600, 'a'), 0).addSound(1, QByteArray(600, 'b'), 37500);
    extract(builder);
    QCOMPARE(samples(), QByteArray(560, 'b'));
}

void TestMlvDumpSound::soundStartsWithTheFirstSelectedFrame()
{
    auto builder = recording();
    builder.addFrame(1, 3000).addSound(0, QByteArray(640, 'a') + QByteArray(40, 'b'), 0);
    extract(builder, {QStringLiteral("-f"), QStringLiteral("1-0")});
    QCOMPARE(samples(), QByteArray(40, 'b'));
}

void TestMlvDumpSound::soundEndsWithTheLastSelectedFrame()
{
    auto builder = recording(); // 25 frames a second: 640 bytes of sound each
    builder.addFrame(1, 3000).addFrame(2, 3000);
    builder.addSound(0, QByteArray(640, 'a') + QByteArray(640, 'b') + QByteArray(900, 'c'), 0);
    extract(builder, {QStringLiteral("-f"), QStringLiteral("1-1")});
    QCOMPARE(samples(), QByteArray(640, 'b'));
    extract(builder, {QStringLiteral("-f"), QStringLiteral("1")});
    QCOMPARE(samples(), QByteArray(640, 'a') + QByteArray(640, 'b'));
    extract(builder, {QStringLiteral("-f"), QStringLiteral("2-2")});
    QCOMPARE(samples(), QByteArray(900, 'c')); // the recording's own end
}

void TestMlvDumpSound::soundStartsWithinAGap()
{
    auto builder = recording();
    builder.addFrame(3, 3000);
    builder.addSound(0, QByteArray(640, 'a') + QByteArray(640, 'b') + QByteArray(1280, 'c'), 0);
    extract(builder, {QStringLiteral("-f"), QStringLiteral("1-1")});
    QCOMPARE(samples(), QByteArray(640, 'b'));
}

void TestMlvDumpSound::lostBlockIsSilent()
{
    const auto run = extract(recording().addSound(0, "aaaa").addSound(2, "bbbb"));
    QCOMPARE(samples(), QByteArray("aaaa\0\0\0\0bbbb", 12));
    QVERIFY(run.hasLineWith(QStringLiteral("[WARNING] 1 lost sound blocks are silent")));
}

void TestMlvDumpSound::silenceOf8BitSoundIsItsMiddle()
{
    auto builder = RecordingBuilder();
    builder.addRawInfo().addFrame(0, 3000).add(blocktype::waveInfo,
                                               mlv::WaveInfo{1, 1, 8000, 8000, 1, 8});
    extract(builder.addSound(0, "aaaa", 500));
    QCOMPARE(samples(), QByteArray(4, '\x80') + "aaaa");
}

void TestMlvDumpSound::oddSizeIsPadded()
{
    auto builder = RecordingBuilder();
    builder.addRawInfo().addFrame(0, 3000).add(blocktype::waveInfo,
                                               mlv::WaveInfo{1, 1, 8000, 8000, 1, 8});
    extract(builder.addSound(0, "aaa"));
    QCOMPARE(wav().size(), 48);
    QCOMPARE(qFromLittleEndian<quint32>(wav().constData() + 40), 3U);
    QCOMPARE(qFromLittleEndian<quint32>(wav().constData() + 4), 40U);
}

void TestMlvDumpSound::recordingWithoutSoundHasNoFile_data()
{
    QTest::addColumn<QByteArray>("recording");
    QTest::newRow("no sound at all") << RecordingBuilder().addRawInfo().addFrame(0, 1).bytes();
    QTest::newRow("format but no sound") << recording().bytes();
}

void TestMlvDumpSound::recordingWithoutSoundHasNoFile()
{
    QFETCH(QByteArray, recording);
    QFile file(out("a.MLV"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(recording);
    file.close();
    QCOMPARE(extract(file.fileName()).status, 0);
    QVERIFY(!QFile::exists(out("tmp.wav")));
}

void TestMlvDumpSound::unreadableSoundIsLeftOutWithAWarning_data()
{
    QTest::addColumn<QByteArray>("recording");
    QTest::addColumn<QString>("warning");
    const auto unreadable = QStringLiteral("[WARNING] the sound is of a kind that can't be read");
    const auto with = [](const mlv::WaveInfo &info, quint16 audioClass) {
        RecordingBuilder builder;
        builder.header.audioClass = audioClass;
        builder.addRawInfo().addFrame(0, 1).add(blocktype::waveInfo, info);
        return builder.addSound(0, "ab").bytes();
    };
    QTest::newRow("no format")
        << RecordingBuilder().addRawInfo().addFrame(0, 1).addSound(0, "ab").bytes()
        << QStringLiteral("[WARNING] the recording does not say what its sound is");
    QTest::newRow("A-law") << with({6, 1, 8000, 8000, 1, 8}, 1) << unreadable;
    QTest::newRow("no channels") << with({1, 0, 8000, 16000, 2, 16}, 1) << unreadable;
    QTest::newRow("a rate beyond hearing")
        << with({1, 1, 0xffffffff, 16000, 2, 16}, 1) << unreadable;
    QTest::newRow("12 bits") << with({1, 1, 8000, 16000, 2, 12}, 1) << unreadable;
    QTest::newRow("compressed") << with({1, 1, 8000, 16000, 2, 16}, 0x81) << unreadable;
}

void TestMlvDumpSound::unreadableSoundIsLeftOutWithAWarning()
{
    QFETCH(QByteArray, recording);
    QFETCH(QString, warning);
    QFile file(out("a.MLV"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(recording);
    file.close();
    const auto run = extract(file.fileName());
    QCOMPARE(run.status, 0);
    QVERIFY(run.hasLineWith(warning));
    QVERIFY(!QFile::exists(out("tmp.wav")));
}

void TestMlvDumpSound::prefixMayContainUnderscores()
{
    QVERIFY(QDir(m_folder->path()).mkdir(QStringLiteral("a_b")));
    const auto path = recording().addSound(0, "aa").write(out("a.MLV"));
    runBuilt(QStringLiteral("mlv_dump"),
             {QStringLiteral("--dng"), path, QStringLiteral("-o"), out("a_b/tmp")});
    QVERIFY(QFile::exists(out("a_b/tmp.wav")));
    QVERIFY(QFile::exists(out("a_b/tmp000000.dng")));
}

FILMWRIGHT_TEST(TestMlvDumpSound, QCoreApplication)
#include "tst_mlv_dump_sound.moc"
