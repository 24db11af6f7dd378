// SPDX-License-Identifier: MIT
// What mlv_sample writes, read by other programs and block by block.
#include "recordedblocks.h"
#include "sampleprogram.h"

#include "mlv_sample/camera.h"
#include "mlv_sample/frames.h"
#include "mlv_sample/scene.h"
#include "mlv_sample/sound.h"
#include "raw/samples.h"
#include "support/testprogram.h"

#include <QFileInfo>
#include <QTest>
#include <QtEndian>

#include <cmath>

namespace {

sample::Settings smallSettings()
{
    sample::Settings settings;
    settings.width = 64;
    settings.height = 48;
    settings.frames = 3;
    return settings;
}

template <typename Value>
QByteArray bytesOf(const std::vector<Value> &values)
{
    return QByteArray(reinterpret_cast<const char *>(values.data()),
                      static_cast<qsizetype>(values.size() * sizeof(Value)));
}

std::vector<quint16> unpacked(const QByteArray &packed, int bits, std::size_t count)
{
    std::vector<quint16> samples(count);
    raw::unpackSamples(
        std::as_bytes(std::span(packed.constData(), static_cast<std::size_t>(packed.size()))), bits,
        raw::WordOrder::LittleEndian, samples);
    return samples;
}

std::vector<quint16> samplesOf(const RecordedBlock &frame, int bits, std::size_t count)
{
    const auto space = frame.as<mlv::VideoFrame>().frameSpace;
    return unpacked(frame.payload.mid(qsizetype{sizeof(mlv::VideoFrame)} + qsizetype{space}), bits,
                    count);
}

/// ffmpeg widens samples to 16 bits by repeating their upper bits.
QByteArray widened(std::vector<quint16> samples, int bits)
{
    for (quint16 &sample : samples)
        sample = static_cast<quint16>((sample << (16 - bits)) | (sample >> (2 * bits - 16)));
    return bytesOf(samples);
}

QByteArray ffmpegOutput(const QString &path, const QStringList &options, const QString &format)
{
    QStringList arguments{QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-i"),
                          path};
    arguments << options << QStringLiteral("-f") << format << QStringLiteral("-");
    return runProgram(QStringLiteral("ffmpeg"), arguments).output;
}

} // namespace

class TestRecording : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void ffmpegReadsTheSamplesThatWerePutIn_data()
    {
        QTest::addColumn<int>("bits");
        for (const int bits : {10, 12, 14, 16})
            QTest::addRow("%d bits", bits) << bits;
    }

    void ffmpegReadsTheSamplesThatWerePutIn()
    {
        QFETCH(int, bits);
        const QString path =
            writeSample(m_folder, {QStringLiteral("--bits"), QString::number(bits)});

        sample::Settings settings = smallSettings();
        settings.bits = bits;
        sample::FrameMaker frames(settings);
        QByteArray expected;
        for (int i = 0; i < 3; ++i)
            expected += widened(frames.make(i), bits);
        QCOMPARE(ffmpegOutput(path, {QStringLiteral("-an")}, QStringLiteral("rawvideo")), expected);
    }

    void ffmpegReadsTheSoundThatWasPutIn()
    {
        const QString path =
            writeSample(m_folder, {QStringLiteral("--fps"), QStringLiteral("23.976"),
                                   QStringLiteral("--frames"), QStringLiteral("30")});
        sample::Settings settings = smallSettings();
        settings.frames = 30;
        settings.rateNumerator = 23976;
        const auto count = static_cast<std::size_t>(std::llround(settings.seconds() * 48000));
        const QByteArray expected = bytesOf(sample::makeSound(settings, 0, count));

        QByteArray recorded;
        QByteArray read = ffmpegOutput(path, {QStringLiteral("-vn")}, QStringLiteral("s16le"));
        QByteArray readPieces;
        for (const RecordedBlock &piece : readRecording(path).ofType("AUDF")) {
            const qsizetype size = piece.payload.size() - qsizetype{sizeof(mlv::AudioFrame)};
            recorded += piece.payload.right(size);
            readPieces += read.left(size);
            read.remove(0, size + 8); // with each piece ffmpeg takes 8 bytes of the next block
        }
        QCOMPARE(recorded, expected);
        QCOMPARE(readPieces, expected);
    }

    void dcrawDevelopsThePatchesInTheirColours()
    {
        const QString prefix = m_folder.filePath(QStringLiteral("tmp"));
        const QString path =
            writeSample(m_folder, {QStringLiteral("--size"), QStringLiteral("640x360"),
                                   QStringLiteral("--frames"), QStringLiteral("1"),
                                   QStringLiteral("--perfect")});
        QCOMPARE(runProgram(builtProgram(QStringLiteral("mlv_dump")),
                            {QStringLiteral("--dng"), QStringLiteral("-o"), prefix, path})
                     .status,
                 0);
        // Linear values, 16 bits, big-endian.
        const QByteArray picture =
            runProgram(QStringLiteral("dcraw"),
                       {QStringLiteral("-c"), QStringLiteral("-w"), QStringLiteral("-4"),
                        prefix + QStringLiteral("000000.dng")})
                .output.right(640 * 360 * 6);
        QCOMPARE(picture.size(), 640 * 360 * 6);
        for (const sample::Patch &patch : sample::colourPatches()) {
            const int x = static_cast<int>((patch.area.left + patch.area.right) / 2 * 640);
            const int y = static_cast<int>((patch.area.top + patch.area.bottom) / 2 * 360);
            const char *pixel = picture.constData() + (y * 640 + x) * 6;
            double sum = 0;
            double expectedSum = 0;
            for (std::size_t i = 0; i < 3; ++i) {
                sum += qFromBigEndian<quint16>(pixel + 2 * i);
                expectedSum += sample::linearFromSrgb(patch.srgb[i]);
            }
            for (std::size_t i = 0; i < 3; ++i) {
                const double share = qFromBigEndian<quint16>(pixel + 2 * i) / sum;
                QVERIFY(std::abs(share - sample::linearFromSrgb(patch.srgb[i]) / expectedSum) <
                        0.01);
            }
        }
    }

    void theLampGoesOnWhenTheTickSounds()
    {
        sample::Settings settings = smallSettings();
        settings.perfect = true;
        const int frame = sample::lampFrame(settings, 0);
        QCOMPARE(frame, 12); // half a second at 24 frames a second

        sample::FrameMaker frames(settings);
        const std::size_t inLamp = 44 * 64 + 58;
        const int before = frames.make(frame - 1)[inLamp];
        const int lit = frames.make(frame)[inLamp];
        QVERIFY(lit - 2048 > 50 * (before - 2048));

        const auto sound = sample::makeSound(settings, 0, 48000);
        const auto tick = std::find_if(sound.begin(), sound.end(), [](int s) { return s > 3000; });
        const auto tickSample = std::distance(sound.begin(), tick) / 2;
        QVERIFY(tickSample >= 24000);
        QVERIFY(tickSample < 24010);
    }

    void theSameOptionsGiveTheSameFile()
    {
        const auto recorded = [this](const QString &seed) {
            QFile file(writeSample(m_folder, {QStringLiteral("--seed"), seed}));
            return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
        };
        const QByteArray first = recorded(QStringLiteral("5"));
        QVERIFY(first.size() > 3 * 64 * 48 * 14 / 8);
        QCOMPARE(recorded(QStringLiteral("5")), first);
        QVERIFY(recorded(QStringLiteral("6")) != first);
    }

    void theHeadDescribesTheRecording()
    {
        const RecordedFile file = readRecording(
            writeSample(m_folder, {QStringLiteral("--bits"), QStringLiteral("12"),
                                   QStringLiteral("--fps"), QStringLiteral("30000/1001"),
                                   QStringLiteral("--iso"), QStringLiteral("400")}));
        QCOMPARE(file.header.videoFrames, 3U);
        QCOMPARE(file.header.audioFrames, 3U);
        QCOMPARE(file.header.frameRateNumerator, 30000U);
        QCOMPARE(file.header.frameRateDenominator, 1001U);
        QCOMPARE(file.blocks.first().type, "RAWI");
        const auto raw = file.blocks.first().as<mlv::RawInfo>();
        QCOMPARE(raw.width, 64);
        QCOMPARE(raw.height, 48);
        QCOMPARE(raw.bitsPerSample, 12);
        QCOMPARE(raw.blackLevel, 512);
        QCOMPARE(raw.whiteLevel, 3750);
        QCOMPARE(file.ofType("EXPO").first().as<mlv::Exposure>().iso, 400U);
        QCOMPARE(file.ofType("EXPO").first().as<mlv::Exposure>().isoAnalog, 88U);
        QCOMPARE(file.ofType("INFO").first().payload, "Synthetic recording: moving chart");
    }

    void calibrationRecordingsHaveNoSound_data()
    {
        QTest::addColumn<QString>("option");
        QTest::newRow("dark") << QStringLiteral("--dark");
        QTest::newRow("flat") << QStringLiteral("--flat");
    }

    void calibrationRecordingsHaveNoSound()
    {
        QFETCH(QString, option);
        const RecordedFile file = readRecording(writeSample(m_folder, {option}));
        QCOMPARE(file.header.audioClass, mlv::audioclass::none);
        QVERIFY(file.ofType("WAVI").isEmpty());
        QVERIFY(file.ofType("AUDF").isEmpty());
        QCOMPARE(file.header.videoFrames, 3U);
    }

    void aSplitRecordingContinuesInNumberedFiles()
    {
        const QString path = writeSample(m_folder, {QStringLiteral("--split"), QStringLiteral("3")},
                                         QStringLiteral("split.mlv"));
        const QStringList paths{path, m_folder.filePath(QStringLiteral("split.m00")),
                                m_folder.filePath(QStringLiteral("split.m01"))};
        const quint64 guid = readRecording(path).header.guid;
        QList<quint32> numbers;
        quint32 counted = 0;
        for (quint16 chunk = 0; chunk < 3; ++chunk) {
            const RecordedFile file = readRecording(paths[chunk]);
            QCOMPARE(file.header.chunk, chunk);
            QCOMPARE(file.header.chunkCount, quint16{3});
            QCOMPARE(file.header.guid, guid);
            QCOMPARE(file.ofType("RAWI").isEmpty(), chunk > 0);
            counted += file.header.videoFrames;
            numbers += file.numbers("VIDF");
        }
        QCOMPARE(counted, 3U);
        QCOMPARE(numbers, (QList<quint32>{0, 1, 2}));
    }

    void listedFramesAndSoundsAreLeftOutOrRepeated()
    {
        const RecordedFile file = readRecording(writeSample(
            m_folder, {QStringLiteral("--frames"), QStringLiteral("8"), QStringLiteral("--drop"),
                       QStringLiteral("0,3-5"), QStringLiteral("--drop-sound"), QStringLiteral("2"),
                       QStringLiteral("--repeat"), QStringLiteral("6")}));
        QCOMPARE(file.numbers("VIDF"), (QList<quint32>{1, 2, 6, 6, 7}));
        QCOMPARE(file.numbers("AUDF"), (QList<quint32>{0, 1, 3, 4, 5, 6, 7}));
        QCOMPARE(file.header.videoFrames, 5U);
        QCOMPARE(file.header.audioFrames, 7U);
    }

    void aShuffledRecordingHasAllBlocksInAnotherOrder()
    {
        const RecordedFile file =
            readRecording(writeSample(m_folder, {QStringLiteral("--frames"), QStringLiteral("10"),
                                                 QStringLiteral("--shuffle")}));
        QList<quint32> numbers = file.numbers("VIDF");
        QVERIFY(!std::is_sorted(numbers.begin(), numbers.end()));
        std::sort(numbers.begin(), numbers.end());
        QCOMPARE(numbers, (QList<quint32>{0, 1, 2, 3, 4, 5, 6, 7, 8, 9}));
    }

    void anUnclosedRecordingCountsNothing()
    {
        const RecordedFile file =
            readRecording(writeSample(m_folder, {QStringLiteral("--zero-counts")}));
        QCOMPARE(file.header.videoFrames, 0U);
        QCOMPARE(file.header.audioFrames, 0U);
        QCOMPARE(file.ofType("VIDF").size(), 3);
    }

    void aCutRecordingEndsInTheMiddleOfABlock()
    {
        const qint64 whole =
            QFileInfo(writeSample(m_folder, {QStringLiteral("--no-sound")})).size();
        const QString path =
            writeSample(m_folder, {QStringLiteral("--no-sound"), QStringLiteral("--cut"),
                                   QStringLiteral("100")});
        QCOMPARE(QFileInfo(path).size(), whole - 100);
        QCOMPARE(readRecording(path).numbers("VIDF"), (QList<quint32>{0, 1}));
    }

    void namedBlocksAreOmitted()
    {
        const RecordedFile file = readRecording(
            writeSample(m_folder, {QStringLiteral("--omit"), QStringLiteral("LENS,INFO")}));
        QVERIFY(file.ofType("LENS").isEmpty());
        QVERIFY(file.ofType("INFO").isEmpty());
        QCOMPARE(file.ofType("EXPO").size(), 1);
    }

    void soundCanStartAtAnotherTimeAndInLongerPieces()
    {
        const RecordedFile file = readRecording(
            writeSample(m_folder, {QStringLiteral("--frames"), QStringLiteral("24"),
                                   QStringLiteral("--sound-delay"), QStringLiteral("-250"),
                                   QStringLiteral("--sound-piece"), QStringLiteral("400")}));
        const auto sounds = file.ofType("AUDF");
        QCOMPARE(sounds.size(), 3);
        QCOMPARE(sounds.first().timestamp + 250000, file.ofType("VIDF").first().timestamp);
        QCOMPARE(sounds[1].timestamp - sounds[0].timestamp, 400000U);
        QCOMPARE(sounds.first().payload.size(), 8 + 19200 * 4);
        QCOMPARE(sounds.last().payload.size(), 8 + 9600 * 4);
    }

    void paddedFramesHoldTheSameSamples()
    {
        const RecordedFile plain = readRecording(writeSample(m_folder, {}));
        const RecordedFile padded =
            readRecording(writeSample(m_folder, {QStringLiteral("--padding")}));
        QVERIFY(!padded.ofType("NULL").isEmpty());
        QVERIFY(!padded.ofType("XTRA").isEmpty());
        QVERIFY(padded.ofType("VIDF").first().as<mlv::VideoFrame>().frameSpace > 0);
        QCOMPARE(samplesOf(padded.ofType("VIDF")[1], 14, 64 * 48),
                 samplesOf(plain.ofType("VIDF")[1], 14, 64 * 48));
    }

    void exposureAndLensChangeHalfway()
    {
        const RecordedFile file =
            readRecording(writeSample(m_folder, {QStringLiteral("--frames"), QStringLiteral("4"),
                                                 QStringLiteral("--change")}));
        const auto exposures = file.ofType("EXPO");
        const auto lenses = file.ofType("LENS");
        QCOMPARE(exposures.size(), 2);
        QCOMPARE(exposures[1].as<mlv::Exposure>().iso, 200U);
        QCOMPARE(exposures[1].timestamp, file.ofType("VIDF")[2].timestamp);
        QCOMPARE(lenses.size(), 2);
        QVERIFY(lenses[1].as<mlv::Lens>().focalLength != lenses[0].as<mlv::Lens>().focalLength);
    }

    void anLzmaFrameIsThePackedFrame()
    {
        const RecordedFile plain = readRecording(writeSample(m_folder, {}));
        const RecordedFile packed = readRecording(
            writeSample(m_folder, {QStringLiteral("--compress"), QStringLiteral("lzma")}));
        QCOMPARE(packed.header.videoClass, mlv::videoclass::raw | mlv::videoclass::lzma);

        const QByteArray expected = plain.ofType("VIDF").first().payload.mid(16);
        const QByteArray payload = packed.ofType("VIDF").first().payload.mid(16);
        QVERIFY(payload.size() < expected.size());
        QCOMPARE(payload.left(4), QByteArray::fromHex("00150000")); // 64 × 48 × 14 ÷ 8
        // An .lzma file has the properties, the size in 8 bytes, and the stream.
        const QByteArray file =
            payload.mid(4, 5) + payload.left(4) + QByteArray(4, '\0') + payload.mid(9);
        QCOMPARE(runProgram(QStringLiteral("xz"),
                            {QStringLiteral("--format=lzma"), QStringLiteral("-dc")}, file)
                     .output,
                 expected);
    }

    void wrongUsageIsRefused_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QByteArray>("line");
        const auto row = [](const char *name, const char *arguments, const char *line) {
            QTest::newRow(name) << QString::fromLatin1(arguments).split(QLatin1Char(' '),
                                                                        Qt::SkipEmptyParts)
                                << QByteArray(line);
        };
        row("nothing", "", "no output file is given");
        row("unknown option", "--nonsense out.MLV", "unknown option: --nonsense");
        row("no value", "out.MLV --bits", "--bits needs a value");
        row("no number", "--frames many out.MLV", "--frames can't be \"many\"");
        row("depth", "--bits 11 out.MLV", "--bits must be 10, 12, 14 or 16");
        row("width", "--size 65x48 out.MLV", "--size must be a multiple of 8 by a multiple of 2");
        row("dual ISO", "--dual-iso 800/100 out.MLV",
            "--dual-iso needs the lower sensitivity first");
        row("compression", "--compress zip out.MLV", "--compress can't be \"zip\"");
        row("extension", "--split 2 out.raw2", "--split needs an output file that ends in .MLV");
        row("two outputs", "a.MLV b.MLV", "more than one output file is given");
    }

    void wrongUsageIsRefused()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QByteArray, line);
        const Ended ended = runProgram(builtProgram(QStringLiteral("mlv_sample")), arguments);
        QCOMPARE(ended.status, 2);
        QCOMPARE(ended.errors, "mlv_sample: " + line + "\nTry mlv_sample --help.\n");
    }

    void helpAndVersionNeedNoOutput()
    {
        const QString program = builtProgram(QStringLiteral("mlv_sample"));
        const Ended help = runProgram(program, {QStringLiteral("--help")});
        QCOMPARE(help.status, 0);
        QVERIFY(help.output.startsWith("Usage: mlv_sample [options] OUT.MLV\n"));
        const Ended version = runProgram(program, {QStringLiteral("--version")});
        QCOMPARE(version.status, 0);
        QVERIFY(version.output.startsWith("mlv_sample "));
    }

    void anOutputThatCannotBeWrittenIsNamed()
    {
        const QString path = m_folder.filePath(QStringLiteral("missing/clip.MLV"));
        const Ended ended = runProgram(builtProgram(QStringLiteral("mlv_sample")), {path});
        QCOMPARE(ended.status, 1);
        QCOMPARE(ended.errors,
                 "mlv_sample: " + path.toLocal8Bit() + ": No such file or directory\n");
    }

private:
    QTemporaryDir m_folder;
};

FILMWRIGHT_TEST(TestRecording, QCoreApplication)
#include "tst_recording.moc"
