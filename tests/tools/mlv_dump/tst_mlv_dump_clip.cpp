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

struct Chunk
{
    QByteArray type;
    QByteArray data;
};

/// The chunks of a WAV file; none when they don't fill it as its head says.
QList<Chunk> chunksOf(const QByteArray &wav)
{
    QList<Chunk> chunks;
    if (!wav.startsWith("RIFF") ||
        qFromLittleEndian<quint32>(wav.constData() + 4) + 8 != wav.size())
        return {};
    for (qsizetype at = 12; at < wav.size();) {
        const auto size = qsizetype(qFromLittleEndian<quint32>(wav.constData() + at + 4));
        chunks << Chunk{wav.mid(at, 4), wav.mid(at + 8, size)};
        at += 8 + size + size % 2;
    }
    return chunks;
}

} // namespace

/// Frames and sound with --cinema-dng.
class TestMlvDumpClip : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void framesWithoutTheOptionStayAsTheyWere();
    void shortSoundIsFilledToThePicture();
    void longSoundEndsWithThePicture();
    void soundOfACutBeginsWithItsTimecode();
    void chunksTellWhereTheSoundBelongs();
    void nameWithMarkupIsEscaped();
    void recordingWithoutARateIsRefused();

private:
    QString out(const char *name) const { return m_folder->filePath(QLatin1String(name)); }
    ProgramRun extract(const RecordingBuilder &builder, const QStringList &more = {},
                       const char *name = "a.MLV") const
    {
        return runBuilt(QStringLiteral("mlv_dump"),
                        QStringList{QStringLiteral("--dng"), builder.write(out(name)),
                                    QStringLiteral("--cinema-dng"), QStringLiteral("-o"),
                                    out("tmp")} +
                            more);
    }
    QList<Chunk> wav() const
    {
        QFile file(out("tmp.wav"));
        return file.open(QIODevice::ReadOnly) ? chunksOf(file.readAll()) : QList<Chunk>();
    }
    /// Three frames at 25 a second, 8000 mono samples of 16 bits a second: 320 a frame.
    static RecordingBuilder recording()
    {
        mlv::Clock clock{};
        clock.second = 2;
        clock.minute = 30;
        clock.hour = 14;
        clock.day = 1;
        clock.month = 4;
        clock.year = 126;
        RecordingBuilder builder;
        builder.addRawInfo()
            .add(blocktype::clock, clock)
            .add(blocktype::waveInfo, RecordingBuilder::waveInfo());
        for (std::uint32_t number = 0; number < 3; ++number)
            builder.addFrame(number, 3000);
        return builder;
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void TestMlvDumpClip::framesWithoutTheOptionStayAsTheyWere()
{
    const QString path = recording().write(out("a.MLV"));
    QCOMPARE(runBuilt(QStringLiteral("mlv_dump"),
                      {QStringLiteral("--dng"), path, QStringLiteral("-o"), out("tmp")})
                 .status,
             0);
    const QByteArray tags = outputOf(QStringLiteral("exiftool"),
                                     {QStringLiteral("-s"), QStringLiteral("-TimeCodes"),
                                      QStringLiteral("-SubSecTimeOriginal"), out("tmp000001.dng")});
    QCOMPARE(tags.simplified(), QByteArray("TimeCodes : 00:00:00.01"));
}

void TestMlvDumpClip::shortSoundIsFilledToThePicture()
{
    QCOMPARE(extract(recording().addSound(0, "0123456789")).status, 0);
    QCOMPARE(wav().constLast().type, QByteArray("data"));
    QCOMPARE(wav().constLast().data, "0123456789" + QByteArray(3 * 640 - 10, '\0'));
}

void TestMlvDumpClip::longSoundEndsWithThePicture()
{
    QCOMPARE(extract(recording().addSound(0, QByteArray(5000, 'a'))).status, 0);
    QCOMPARE(wav().constLast().data, QByteArray(3 * 640, 'a'));
}

void TestMlvDumpClip::soundOfACutBeginsWithItsTimecode()
{
    QCOMPARE(extract(recording().addSound(0, QByteArray(5000, 'a')),
                     {QStringLiteral("-f"), QStringLiteral("1-2")})
                 .status,
             0);
    QCOMPARE(wav().constLast().data, QByteArray(2 * 640, 'a'));
    const QByteArray extension = wav().constFirst().data;
    QCOMPARE(qFromLittleEndian<quint64>(extension.constData() + 338), quint64{52202} * 8000 + 320);
}

void TestMlvDumpClip::chunksTellWhereTheSoundBelongs()
{
    QCOMPARE(extract(recording().addSound(0, "0123456789")).status, 0);
    QByteArrayList types;
    for (const Chunk &chunk : wav())
        types << chunk.type;
    QCOMPARE(types, (QByteArrayList{"bext", "iXML", "fmt ", "data"}));

    const QByteArray extension = wav().constFirst().data;
    const auto field = [&extension](qsizetype at, qsizetype size) {
        return extension.mid(at, size).split('\0').constFirst();
    };
    QCOMPARE(field(0, 256), QByteArray("a"));
    QVERIFY(field(256, 32).startsWith("Filmwright mlv_dump "));
    QCOMPARE(field(288, 32).size(), 16);
    QCOMPARE(field(320, 10), QByteArray("2026-05-01"));
    QCOMPARE(field(330, 8), QByteArray("14:30:02"));
    QCOMPARE(qFromLittleEndian<quint64>(extension.constData() + 338), quint64{52202} * 8000);
    QCOMPARE(qFromLittleEndian<quint16>(extension.constData() + 346), 1);
    QVERIFY(extension.mid(602).startsWith("A=PCM,F=8000,W=16,M=mono,T=Filmwright mlv_dump "));
    QVERIFY(extension.endsWith("\r\n"));

    const QByteArray xml = wav().at(1).data;
    for (const char *element :
         {"<TAPE>a</TAPE>", "<SCENE>a</SCENE>", "<TAKE>1</TAKE>", "<MASTER_SPEED>25/1<",
          "<CURRENT_SPEED>25/1<", "<TIMECODE_RATE>25/1<", "<TIMECODE_FLAG>NDF<",
          "<FILE_SAMPLE_RATE>8000<", "<AUDIO_BIT_DEPTH>16<",
          "<TIMESTAMP_SAMPLES_SINCE_MIDNIGHT_HI>0<",
          "<TIMESTAMP_SAMPLES_SINCE_MIDNIGHT_LO>417616000<"})
        QVERIFY2(xml.contains(element), element);
}

void TestMlvDumpClip::nameWithMarkupIsEscaped()
{
    QCOMPARE(extract(recording().addSound(0, "01"), {}, "R&B <1>.MLV").status, 0);
    QVERIFY(wav().at(1).data.contains("<TAPE>R&amp;B &lt;1&gt;</TAPE>"));
}

void TestMlvDumpClip::recordingWithoutARateIsRefused()
{
    auto builder = recording();
    builder.header.frameRateNumerator = 0;
    const ProgramRun run = extract(builder);
    QCOMPARE(run.status, 1);
    QVERIFY(run.hasLineWith(QStringLiteral("[UNUSABLE] The recording has no frame rate")));
}

FILMWRIGHT_TEST(TestMlvDumpClip, QCoreApplication)
#include "tst_mlv_dump_clip.moc"
