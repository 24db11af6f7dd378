// SPDX-License-Identifier: MIT
#include "rawpicture.h"
#include "recordingbuilder.h"
#include "toolrun.h"

#include "raw/samples.h"
#include "support/testprogram.h"

#include <QDir>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <QtEndian>

namespace {

QString dngName(int number)
{
    return QStringLiteral("tmp%1.dng").arg(number, 6, 10, QLatin1Char('0'));
}

} // namespace

/// mlv_dump --dng, its files read back with dcraw.
class TestMlvDumpFrames : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void rawValuesAreThoseOfTheRecording_data();
    void rawValuesAreThoseOfTheRecording();
    void losslessFramesAreWrittenUncompressed_data();
    void losslessFramesAreWrittenUncompressed();
    void uncompressedValuesAreThoseThatFfmpegReads_data();
    void uncompressedValuesAreThoseThatFfmpegReads();
    void droppedFrameRepeatsTheOneBefore();
    void rangeIsExtractedUnderItsOwnNumbers();
    void renumberedRangeBeginsWithZero();
    void rowsThatEndWithinAWordAreReadRight_data();
    void rowsThatEndWithinAWordAreReadRight();
    void validatorFindsNothingToComplainOf_data();
    void validatorFindsNothingToComplainOf();
    void cameraIsDescribedForTheRawConverter();
    void changedExposureHoldsFromItsTimeOn();
    void skippedLinesStretchThePicture();
    void activeAreaHoldsWhereItFitsTheFrame();
    void recordingWithoutMetadataIsReadable();
    void inputIsNeverReplaced();
    void killedRunLeavesOnlyWholeFrames();

private:
    QString out(const QString &name) const { return m_folder->filePath(name); }
    ProgramRun extract(const QString &recording, const QStringList &more = {}) const
    {
        return runBuilt(QStringLiteral("mlv_dump"),
                        QStringList{QStringLiteral("--dng"), recording, QStringLiteral("-o"),
                                    out(QStringLiteral("tmp"))} +
                            more);
    }
    QStringList dngs() const
    {
        return QDir(m_folder->path()).entryList({QStringLiteral("*.dng")}, QDir::Files);
    }
    QString exif(const char *tag, int number) const
    {
        const auto value =
            outputOf(QStringLiteral("exiftool"),
                     {QStringLiteral("-s3"), QStringLiteral("-n"),
                      QStringLiteral("-") + QLatin1String(tag), out(dngName(number))});
        return QString::fromUtf8(value).trimmed();
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void TestMlvDumpFrames::rawValuesAreThoseOfTheRecording_data()
{
    QTest::addColumn<QString>("recording");
    QTest::addColumn<QString>("expected");
    QTest::addColumn<int>("frames");
    const auto row = [](const char *recording, const char *expected, int frames) {
        QTest::newRow(recording) << QString::fromLatin1(recording) << QString::fromLatin1(expected)
                                 << frames;
    };
    row("plain14", "plain14", 4);
    row("bits10", "bits10", 3);
    row("bits12", "bits12", 3);
    row("bits16", "bits16", 2);
    row("lossless14", "plain14", 4);
    row("lossless12", "bits12", 3);
    row("lzma14", "plain14", 4);
    row("split", "split", 6);
    row("shuffled", "shuffled", 5);
    row("dropped", "dropped", 6);
    row("nolens", "nolens", 2);
    row("dark", "dark", 6);
    row("flat", "flat", 4);
}

void TestMlvDumpFrames::rawValuesAreThoseOfTheRecording()
{
    QFETCH(QString, recording);
    QFETCH(QString, expected);
    QFETCH(int, frames);
    const auto run =
        extract(testData(QStringLiteral("recordings/%1.MLV").arg(recording)),
                {QStringLiteral("--no-cs"), QStringLiteral("-f"), QStringLiteral("0-0")});
    QCOMPARE(run.status, 0);
    QCOMPARE(run.lines.last(), QStringLiteral("Done"));
    QCOMPARE(dngs().size(), frames);
    for (int i = 0; i < frames; ++i) {
        const auto path = QStringLiteral("recordings/expected/%1/%2.pgm.gz")
                              .arg(expected)
                              .arg(i, 6, 10, QLatin1Char('0'));
        QCOMPARE(readDng(out(dngName(i))).largestDifference(readPackedPgm(testData(path))), 0);
    }
}

void TestMlvDumpFrames::losslessFramesAreWrittenUncompressed_data()
{
    QTest::addColumn<QString>("recording");
    QTest::addColumn<int>("bits");
    QTest::newRow("14 bits") << QStringLiteral("lossless14") << 14;
    QTest::newRow("12 bits") << QStringLiteral("lossless12") << 12;
}

// Many converters refuse the shapes and predictors of lossless JPEG that cameras use.
void TestMlvDumpFrames::losslessFramesAreWrittenUncompressed()
{
    QFETCH(QString, recording);
    QFETCH(int, bits);
    const auto path = testData(QStringLiteral("recordings/%1.MLV").arg(recording));
    QCOMPARE(extract(path).status, 0);
    QCOMPARE(exif("Compression", 0), QStringLiteral("1"));
    const int samples = exif("ImageWidth", 0).toInt() * exif("ImageHeight", 0).toInt();
    QVERIFY(samples > 0);
    QCOMPARE(exif("StripByteCounts", 0).toInt(), samples * bits / 8);
}

void TestMlvDumpFrames::uncompressedValuesAreThoseThatFfmpegReads_data()
{
    QTest::addColumn<QString>("recording");
    QTest::addColumn<int>("bits");
    QTest::newRow("10 bits") << QStringLiteral("bits10") << 10;
    QTest::newRow("12 bits") << QStringLiteral("bits12") << 12;
    QTest::newRow("14 bits") << QStringLiteral("plain14") << 14;
    QTest::newRow("16 bits") << QStringLiteral("bits16") << 16;
}

void TestMlvDumpFrames::uncompressedValuesAreThoseThatFfmpegReads()
{
    QFETCH(QString, recording);
    QFETCH(int, bits);
    const auto path = testData(QStringLiteral("recordings/%1.MLV").arg(recording));
    // It stretches samples to 16 bits by repeating their upper bits.
    const auto stretched =
        outputOf(QStringLiteral("ffmpeg"),
                 {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-i"), path,
                  QStringLiteral("-map"), QStringLiteral("0:v"), QStringLiteral("-f"),
                  QStringLiteral("rawvideo"), QStringLiteral("-")});
    QCOMPARE(extract(path).status, 0);
    qsizetype offset = 0;
    for (int i = 0; i < dngs().size(); ++i) {
        for (const auto sample : readDng(out(dngName(i))).samples) {
            QVERIFY(offset + 2 <= stretched.size());
            const auto value = qFromLittleEndian<quint16>(stretched.constData() + offset);
            QCOMPARE(int(sample), value >> (16 - bits));
            offset += 2;
        }
    }
    QCOMPARE(offset, stretched.size());
    QVERIFY(offset > 0);
}

void TestMlvDumpFrames::droppedFrameRepeatsTheOneBefore()
{
    const auto path = RecordingBuilder().addRawInfo().addFrame(5, 3000).addFrame(7, 4000).write(
        out(QStringLiteral("a.MLV")));
    const auto run = extract(path);
    QVERIFY(run.hasLineWith(QStringLiteral("1 dropped frame is filled by the frame before it")));
    QCOMPARE(run.lastTwoLines(),
             (QStringList{QStringLiteral("Processed 3 video frames at 25.00 FPS (0.12 s)"),
                          QStringLiteral("Done")}));
    QCOMPARE(dngs().size(), 3);
    QCOMPARE(readDng(out(dngName(0))).level(), 3000);
    QCOMPARE(readDng(out(dngName(1))).level(), 3000);
    QCOMPARE(readDng(out(dngName(2))).level(), 4000);
}

void TestMlvDumpFrames::rangeIsExtractedUnderItsOwnNumbers()
{
    const auto run = extract(testData(QStringLiteral("recordings/shuffled.MLV")),
                             {QStringLiteral("-f"), QStringLiteral("2-3")});
    QCOMPARE(dngs(), (QStringList{dngName(2), dngName(3)}));
    QVERIFY(run.lines.last() == QStringLiteral("Done"));
    const auto none = extract(testData(QStringLiteral("recordings/shuffled.MLV")),
                              {QStringLiteral("-f"), QStringLiteral("20-30")});
    QCOMPARE(none.status, 1);
    QVERIFY(none.hasLineWith(QStringLiteral("[UNUSABLE] The recording has none of the frames")));
}

void TestMlvDumpFrames::renumberedRangeBeginsWithZero()
{
    const auto bytes = [this](int number) {
        QFile file(out(dngName(number)));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    };
    const auto recording = testData(QStringLiteral("recordings/shuffled.MLV"));
    const QStringList range{QStringLiteral("-f"), QStringLiteral("2-3")};
    extract(recording, range);
    const QByteArrayList frames{bytes(2), bytes(3)};
    QVERIFY(QFile::remove(out(dngName(2))) && QFile::remove(out(dngName(3))));
    QCOMPARE(extract(recording, range + QStringList{QStringLiteral("--renumber")}).status, 0);
    QCOMPARE(dngs(), (QStringList{dngName(0), dngName(1)}));
    QCOMPARE((QByteArrayList{bytes(0), bytes(1)}), frames); // with their own time codes
}

void TestMlvDumpFrames::rowsThatEndWithinAWordAreReadRight_data()
{
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("bits");
    for (const int bits : {10, 12, 14})
        for (const int width : {34, 36, 38})
            QTest::addRow("%d samples of %d bits", width, bits) << width << bits;
}

void TestMlvDumpFrames::rowsThatEndWithinAWordAreReadRight()
{
    QFETCH(int, width);
    QFETCH(int, bits);
    const int height = 24;
    auto info = RecordingBuilder::rawInfo();
    info.width = static_cast<quint16>(width);
    info.height = static_cast<quint16>(height);
    info.activeRight = width;
    info.activeBottom = height;
    info.bitsPerSample = bits;
    info.blackLevel = 10;
    info.whiteLevel = (1 << bits) - 1;
    std::vector<quint16> samples(static_cast<std::size_t>(width * height));
    for (std::size_t i = 0; i < samples.size(); ++i)
        samples[i] = static_cast<quint16>(i * 31 % static_cast<std::size_t>(info.whiteLevel));
    QByteArray packed(static_cast<qsizetype>(raw::packedSize(samples.size(), bits)), '\0');
    raw::packSamples(
        samples, bits, raw::WordOrder::LittleEndian,
        std::as_writable_bytes(std::span(packed.data(), static_cast<std::size_t>(packed.size()))));
    RecordingBuilder builder;
    builder.add(mlv::blocktype::rawInfo, info).addFrameData(0, packed);
    QCOMPARE(extract(builder.write(out(QStringLiteral("a.MLV")))).status, 0);
    const auto picture = readDng(out(dngName(0)));
    QCOMPARE(picture.width, width);
    QVERIFY(picture.samples == samples);
}

void TestMlvDumpFrames::validatorFindsNothingToComplainOf_data()
{
    QTest::addColumn<QString>("recording");
    for (const char *name :
         {"plain14", "bits10", "bits12", "bits16", "lossless14", "lzma14", "nolens", "dropped"})
        QTest::newRow(name) << QString::fromLatin1(name);
}

void TestMlvDumpFrames::validatorFindsNothingToComplainOf()
{
    QFETCH(QString, recording);
    QCOMPARE(extract(testData(QStringLiteral("recordings/%1.MLV").arg(recording))).status, 0);
    const auto verdict =
        outputOf(QStringLiteral("exiftool"),
                 {QStringLiteral("-validate"), QStringLiteral("-warning"), QStringLiteral("-error"),
                  QStringLiteral("-a"), QStringLiteral("-s3"), out(dngName(0))});
    QCOMPARE(QString::fromUtf8(verdict).trimmed(), QStringLiteral("OK"));
}

void TestMlvDumpFrames::cameraIsDescribedForTheRawConverter()
{
    QCOMPARE(extract(testData(QStringLiteral("recordings/plain14.MLV"))).status, 0);
    QCOMPARE(exif("Make", 1), QStringLiteral("Canon"));
    QCOMPARE(exif("Model", 1), QStringLiteral("Canon EOS 5D Mark III"));
    QCOMPARE(exif("ExposureTime", 1), QStringLiteral("0.02"));
    QCOMPARE(exif("FNumber", 1), QStringLiteral("2.8"));
    QCOMPARE(exif("ISO", 1), QStringLiteral("400"));
    QCOMPARE(exif("FocalLength", 1), QStringLiteral("35"));
    QCOMPARE(exif("LensModel", 1), QStringLiteral("EF24-70mm f/2.8L II USM"));
    QCOMPARE(exif("DateTimeOriginal", 1), QStringLiteral("2014:06:12 15:30:07"));
    QCOMPARE(exif("BlackLevel", 1), QStringLiteral("2048"));
    QCOMPARE(exif("WhiteLevel", 1), QStringLiteral("15000"));
    QCOMPARE(exif("AsShotNeutral", 1), QStringLiteral("0.494368 1 0.612731"));
    QCOMPARE(exif("CalibrationIlluminant1", 1), QStringLiteral("21"));
    QCOMPARE(exif("ColorMatrix1", 1),
             QStringLiteral("0.6722 -0.0635 -0.0963 -0.4287 1.246 0.2028 -0.0908 0.2162 0.5668"));
    QCOMPARE(exif("ActiveArea", 1), QStringLiteral("0 0 72 128"));
    QCOMPARE(exif("TimeCodes", 1).left(11), QStringLiteral("01.00.00.00"));
}

void TestMlvDumpFrames::changedExposureHoldsFromItsTimeOn()
{
    const auto exposure = [](quint32 iso, quint64 shutter) {
        return mlv::Exposure{0, iso, 72, 0, shutter};
    };
    const auto path =
        RecordingBuilder()
            .addRawInfo()
            .add(mlv::blocktype::exposure, exposure(100, 250))
            .add(mlv::blocktype::exposure, exposure(1600, 8000), RecordingBuilder::frameTime)
            .addFrame(0, 3000)
            .addFrame(1, 3000)
            .write(out(QStringLiteral("a.MLV")));
    QCOMPARE(extract(path).status, 0);
    QCOMPARE(exif("ISO", 0), QStringLiteral("100"));
    QCOMPARE(exif("ExposureTime", 0), QStringLiteral("0.00025"));
    QCOMPARE(exif("ISO", 1), QStringLiteral("1600"));
    QCOMPARE(exif("ExposureTime", 1), QStringLiteral("0.008"));
}

void TestMlvDumpFrames::skippedLinesStretchThePicture()
{
    const mlv::RawCapture capture{5760, 3840, 100, 0, 3, 0, 1, 4, 0, 0};
    const auto path = RecordingBuilder()
                          .addRawInfo()
                          .add(mlv::blocktype::rawCapture, capture)
                          .addFrame(0, 3000)
                          .write(out(QStringLiteral("a.MLV")));
    QCOMPARE(extract(path).status, 0);
    QCOMPARE(exif("DefaultScale", 0), QStringLiteral("1 1.666666667"));
}

void TestMlvDumpFrames::activeAreaHoldsWhereItFitsTheFrame()
{
    auto info = RecordingBuilder::rawInfo();
    info.activeLeft = 4;
    info.activeTop = 2;
    const auto areaWith = [&](int right) {
        info.activeRight = right;
        extract(RecordingBuilder()
                    .add(mlv::blocktype::rawInfo, info)
                    .addFrame(0, 3000)
                    .write(out(QStringLiteral("a.MLV"))));
        return exif("ActiveArea", 0);
    };
    QCOMPARE(areaWith(30), QStringLiteral("2 4 24 30"));
    QCOMPARE(areaWith(33), QStringLiteral("0 0 24 32")); // it belongs to a larger read-out
    QCOMPARE(areaWith(-1), QStringLiteral("0 0 24 32"));
}

void TestMlvDumpFrames::recordingWithoutMetadataIsReadable()
{
    const auto path =
        RecordingBuilder().addRawInfo().addFrame(0, 3000).write(out(QStringLiteral("a.MLV")));
    QCOMPARE(extract(path).status, 0);
    QCOMPARE(readDng(out(dngName(0))).level(), 3000);
    QCOMPARE(exif("Model", 0), QStringLiteral("Unknown camera"));
    QCOMPARE(exif("AsShotNeutral", 0), QStringLiteral("0.480037 1 0.63659"));
    QCOMPARE(exif("ExposureTime", 0), QString());
    QCOMPARE(exif("LensModel", 0), QString());
}

void TestMlvDumpFrames::inputIsNeverReplaced()
{
    const RecordingBuilder builder = RecordingBuilder().addRawInfo().addFrame(0, 3000);
    const auto path = builder.write(out(dngName(0)));
    const auto run = extract(path);
    QCOMPARE(run.status, 1);
    QVERIFY(run.hasLineWith(QStringLiteral("[UNUSABLE] The output would replace a file")));
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), builder.bytes());
}

void TestMlvDumpFrames::killedRunLeavesOnlyWholeFrames()
{
    RecordingBuilder builder;
    builder.addRawInfo().add(mlv::blocktype::waveInfo, RecordingBuilder::waveInfo());
    const int frames = 3000;
    for (int i = 0; i < frames; ++i)
        builder.addFrame(static_cast<quint32>(i), 3000);
    builder.addSound(0, QByteArray(4000, 's'));
    const auto path = builder.write(out(QStringLiteral("a.MLV")));
    QProcess process;
    process.start(
        qEnvironmentVariable("FILMWRIGHT_BUILD_RESOURCES") + QStringLiteral("/mlv_dump"),
        {QStringLiteral("--dng"), path, QStringLiteral("-o"), out(QStringLiteral("tmp"))});
    QVERIFY(process.waitForReadyRead());
    process.kill();
    QVERIFY(process.waitForFinished());

    const auto names = dngs();
    for (const auto &name : names)
        QCOMPARE(QFileInfo(out(name)).size(), QFileInfo(out(names.last())).size());
    // The last frame has its name only when everything is there, the sound too.
    if (names.contains(dngName(frames - 1)))
        QCOMPARE(names.size(), frames);
    QCOMPARE(QFileInfo(out(QStringLiteral("tmp.wav"))).size(), 44 + 4000);
}

FILMWRIGHT_TEST(TestMlvDumpFrames, QCoreApplication)
#include "tst_mlv_dump_frames.moc"
