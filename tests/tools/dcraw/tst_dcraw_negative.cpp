// SPDX-License-Identifier: MIT
// Which DNGs are developed here, and what is read from them.
#include "negativewriter.h"

#include "dcraw/badpixels.h"
#include "dcraw/frame.h"
#include "dcraw/negative.h"
#include "dcraw/notcovered.h"
#include "dng/tags.h"
#include "raw/error.h"
#include "support/testprogram.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <functional>

namespace tag = dng::tag;

namespace {

using Change = std::function<void(NegativeWriter &)>;
using Damage = std::function<void(QByteArray &)>;

dng::Field fieldOf(dng::FieldType type, std::uint32_t count, std::size_t bytes)
{
    return {type, count, std::vector<std::byte>(bytes, std::byte{1})};
}

void addText(dng::Ifd &ifd, std::uint16_t tag, const QByteArray &text)
{
    const auto bytes = std::as_bytes(std::span(text.data(), static_cast<std::size_t>(text.size())));
    ifd.set(tag, {dng::FieldType::Ascii, static_cast<std::uint32_t>(text.size()),
                  std::vector<std::byte>(bytes.begin(), bytes.end())});
}

/// Without the field.
void drop(dng::Ifd &ifd, std::uint16_t tag)
{
    dng::Ifd rest;
    for (const auto &[other, field] : ifd.fields())
        if (other != tag)
            rest.set(other, field);
    ifd = rest;
}

constexpr qsizetype firstDirectory = 8;
constexpr qsizetype entryBytes = 12;

} // namespace

Q_DECLARE_METATYPE(Change)
Q_DECLARE_METATYPE(Damage)

class TestDcrawNegative : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void whatIsDeveloped_data();
    void whatIsDeveloped();
    void damagedFiles_data();
    void damagedFiles();
    void losslessStreams_data();
    void losslessStreams();
    void valuesAreRead();
    void dateOfTheExposureReplacesThatOfTheFile();
    void rowsAreUnpacked_data();
    void rowsAreUnpacked();
    void listsOfBadPixels_data();
    void listsOfBadPixels();
    void badPixelBecomesTheMeanOfItsColour();
    void listAboveTheWorkingFolderIsLeftToTheRealOne();

private:
    dcraw::Frame frameOf(const QByteArray &dng, const dcraw::Options &options) const;
    bool isCovered(const QByteArray &dng, dcraw::Options options = {}) const;

    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_before;
};

void TestDcrawNegative::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
    m_before = QDir::currentPath();
    QDir::setCurrent(m_folder->path());
}

void TestDcrawNegative::cleanup()
{
    QDir::setCurrent(m_before);
    m_folder.reset();
}

dcraw::Frame TestDcrawNegative::frameOf(const QByteArray &dng, const dcraw::Options &options) const
{
    QFile file(m_folder->filePath(QStringLiteral("frame.dng")));
    if (!file.open(QIODevice::WriteOnly) || file.write(dng) != dng.size())
        qFatal("the test's frame can't be written");
    file.close();
    dcraw::Options complete = options;
    complete.file = file.fileName().toStdString();
    return dcraw::readFrame(complete);
}

bool TestDcrawNegative::isCovered(const QByteArray &dng, dcraw::Options options) const
{
    options.cameraWhiteBalance = true;
    options.highlights = 3;
    try {
        frameOf(dng, options);
        return true;
    } catch (const dcraw::NotCovered &) {
        return false;
    } catch (const raw::Error &) {
        return false;
    }
}

void TestDcrawNegative::whatIsDeveloped_data()
{
    QTest::addColumn<Change>("change");
    QTest::addColumn<bool>("covered");
    const auto row = [](const char *name, bool covered, const Change &change) {
        QTest::newRow(name) << change << covered;
    };
    constexpr bool ours = true;
    constexpr bool handedOver = false;

    row("a usual frame", ours, [](NegativeWriter &) {});
    row("without EXIF", ours, [](NegativeWriter &dng) { dng.exif = {}; });
    for (const std::uint16_t tag :
         {tag::imageWidth, tag::imageLength, tag::bitsPerSample, tag::compression,
          tag::photometricInterpretation, tag::make, tag::model, tag::samplesPerPixel,
          tag::cfaRepeatPatternDim, tag::cfaPattern, tag::dngVersion, tag::blackLevel,
          tag::whiteLevel, tag::colorMatrix1, tag::asShotNeutral}) {
        QTest::addRow("without tag %d", tag)
            << Change([tag](NegativeWriter &dng) { drop(dng.image, tag); }) << handedOver;
    }
    for (const std::uint16_t tag : {tag::orientation, tag::dateTime}) {
        QTest::addRow("without tag %d", tag)
            << Change([tag](NegativeWriter &dng) { drop(dng.image, tag); }) << ours;
    }
    for (const std::uint16_t tag :
         {tag::newSubFileType, tag::fillOrder, tag::rowsPerStrip, tag::planarConfiguration,
          tag::software, tag::dngBackwardVersion, tag::uniqueCameraModel, tag::defaultCropOrigin,
          tag::defaultCropSize, tag::baselineExposure, tag::cameraSerialNumber,
          tag::calibrationIlluminant1, tag::timeCodes, tag::frameRate, tag::reelName}) {
        QTest::addRow("anything in tag %d", tag) << Change([tag](NegativeWriter &dng) {
            dng.image.set(tag, fieldOf(dng::FieldType::Double, 2, 16));
        }) << ours;
    }
    for (const std::uint16_t tag : {tag::exifVersion, tag::lensModel, tag::lensSerialNumber}) {
        QTest::addRow("anything in tag %d", tag) << Change([tag](NegativeWriter &dng) {
            dng.exif.set(tag, fieldOf(dng::FieldType::Double, 2, 16));
        }) << ours;
    }
    row("an unknown tag", handedOver,
        [](NegativeWriter &dng) { dng.image.setLongs(tag::linearizationTable, {1}); });
    row("an unknown EXIF tag", handedOver,
        [](NegativeWriter &dng) { dng.exif.setLongs(37380, {1}); });
    row("width as a short number", handedOver,
        [](NegativeWriter &dng) { dng.image.setShorts(tag::imageWidth, {22}); });
    row("two black levels", handedOver, [](NegativeWriter &dng) {
        dng.image.setLongs(tag::blackLevel, {2048, 2048});
    });
    row("sensitivity as a long number", handedOver,
        [](NegativeWriter &dng) { dng.exif.setLongs(tag::isoSpeedRatings, {100}); });
    row("make without an end", handedOver,
        [](NegativeWriter &dng) { addText(dng.image, tag::make, "Canon"); });
    row("make without a byte", handedOver,
        [](NegativeWriter &dng) { addText(dng.image, tag::make, ""); });
    row("description without an end", handedOver,
        [](NegativeWriter &dng) { addText(dng.image, tag::imageDescription, "words"); });
    row("description of 600 bytes", ours, [](NegativeWriter &dng) {
        dng.image.setText(tag::imageDescription, std::string(600, 'x'));
    });
    row("date of another length", handedOver,
        [](NegativeWriter &dng) { dng.image.setText(tag::dateTime, "2026:03:21"); });
    row("a camera with its own rules", handedOver,
        [](NegativeWriter &dng) { dng.image.setText(tag::make, "Kodak"); });

    row("another photometric", handedOver,
        [](NegativeWriter &dng) { dng.image.setShorts(tag::photometricInterpretation, {34892}); });
    row("turned", handedOver,
        [](NegativeWriter &dng) { dng.image.setShorts(tag::orientation, {6}); });
    row("three samples a pixel", handedOver,
        [](NegativeWriter &dng) { dng.image.setShorts(tag::samplesPerPixel, {3}); });
    row("another compression", handedOver,
        [](NegativeWriter &dng) { dng.image.setShorts(tag::compression, {8}); });
    for (const int bits : {7, 8, 9, 15, 16, 17}) {
        QTest::addRow("%d bits", bits)
            << Change([bits](NegativeWriter &dng) { dng.setShape(24, 24, bits); })
            << (bits >= 8 && bits <= 16);
    }
    row("21 columns", handedOver, [](NegativeWriter &dng) { dng.setShape(21, 22, 14); });
    row("21 rows", handedOver, [](NegativeWriter &dng) { dng.setShape(22, 21, 14); });
    row("65536 columns", handedOver, [](NegativeWriter &dng) { dng.setShape(65536, 22, 8); });
    row("rows that fill no whole bytes and have no padding", handedOver, [](NegativeWriter &dng) {
        dng.setShape(23, 22, 14);
        dng.strip.resize((23 * 22 * 14 + 7) / 8);
    });
    row("more bytes than rows", ours,
        [](NegativeWriter &dng) { dng.strip.resize(22 * 22 * 14 / 8 + 22 + 100); });
    row("another camera's packing", handedOver, [](NegativeWriter &dng) {
        dng.setShape(40, 40, 8);
        dng.strip.resize(40 * 40 * 8 / 5);
    });
    row("four colours", handedOver, [](NegativeWriter &dng) {
        dng.image.setBytes(tag::cfaPattern, {0, 1, 3, 2});
    });
    row("greens in a row", handedOver, [](NegativeWriter &dng) {
        dng.image.setBytes(tag::cfaPattern, {1, 1, 0, 2});
    });
    row("a pattern of 6 by 6", handedOver, [](NegativeWriter &dng) {
        dng.image.setShorts(tag::cfaRepeatPatternDim, {6, 6});
    });
    row("DNG 1.1", ours, [](NegativeWriter &dng) {
        dng.image.setBytes(tag::dngVersion, {1, 1, 0, 0});
    });
    row("DNG 1.0", handedOver, [](NegativeWriter &dng) {
        dng.image.setBytes(tag::dngVersion, {1, 0, 255, 255});
    });

    row("an active area", ours, [](NegativeWriter &dng) {
        dng.setShape(30, 30, 14);
        dng.image.setLongs(tag::activeArea, {1, 3, 29, 28});
    });
    row("an active area that is too small", handedOver, [](NegativeWriter &dng) {
        dng.setShape(30, 30, 14);
        dng.image.setLongs(tag::activeArea, {0, 9, 30, 30});
    });
    row("an active area beyond the frame", handedOver, [](NegativeWriter &dng) {
        dng.image.setLongs(tag::activeArea, {0, 0, 23, 22});
    });
    row("an active area the wrong way round", handedOver, [](NegativeWriter &dng) {
        dng.image.setLongs(tag::activeArea, {22, 22, 0, 0});
    });
    row("an active area with a huge edge", handedOver, [](NegativeWriter &dng) {
        dng.image.setLongs(tag::activeArea, {4294967290, 0, 22, 22});
    });
    row("a size that is cut", handedOver, [](NegativeWriter &dng) { dng.setShape(3936, 2624, 8); });
    row("the same size with another active area", ours, [](NegativeWriter &dng) {
        dng.setShape(3936, 2624, 8);
        dng.image.setLongs(tag::activeArea, {0, 0, 22, 22});
    });

    row("white at black", handedOver,
        [](NegativeWriter &dng) { dng.image.setLongs(tag::whiteLevel, {2048}); });
    row("black is taken as 16 bits", ours,
        [](NegativeWriter &dng) { dng.image.setLongs(tag::blackLevel, {65536 + 2048}); });
    row("white above 31 bits", ours,
        [](NegativeWriter &dng) { dng.image.setLongs(tag::whiteLevel, {4294967295}); });
    const auto withNeutral = [](dng::Rational red) {
        return [red](NegativeWriter &dng) {
            const std::array<dng::Rational, 3> neutral{{red, {1, 1}, {1, 1}}};
            dng.image.setRationals(tag::asShotNeutral, neutral);
        };
    };
    row("neutral of 0", handedOver, withNeutral({0, 1}));
    row("neutral without a denominator", handedOver, withNeutral({1, 0}));
    row("neutral that leaves nothing of the others", handedOver, withNeutral({1, 100000}));
    row("a ratio of the matrix without a denominator", handedOver, [](NegativeWriter &dng) {
        const std::array<dng::SRational, 9> matrix{};
        dng.image.setSRationals(tag::colorMatrix1, matrix);
    });
    row("a matrix of another kind", handedOver, [](NegativeWriter &dng) {
        std::array<dng::SRational, 9> matrix{};
        matrix.fill({1, 2});
        dng.image.setSRationals(tag::colorMatrix1, matrix);
    });
    const auto withScale = [](dng::Rational horizontal, dng::Rational vertical) {
        return [horizontal, vertical](NegativeWriter &dng) {
            const std::array<dng::Rational, 2> scale{horizontal, vertical};
            dng.image.setRationals(tag::defaultScale, scale);
        };
    };
    row("stretched", ours, withScale({1, 1}, {5, 3}));
    row("stretched by 0", handedOver, withScale({1, 1}, {0, 3}));
    row("stretched without a denominator", handedOver, withScale({1, 0}, {1, 1}));
    row("stretched without an end", handedOver, withScale({1, 4294967295}, {4294967295, 1}));
    row("an exposure of 2146 s", ours, [](NegativeWriter &dng) {
        dng.exif.setRational(tag::exposureTime, {2146, 1});
    });
    row("an exposure of 2147 s", handedOver, [](NegativeWriter &dng) {
        dng.exif.setRational(tag::exposureTime, {2147, 1});
    });
    row("an F number without a denominator", handedOver, [](NegativeWriter &dng) {
        dng.exif.setRational(tag::fNumber, {4, 0});
    });
}

void TestDcrawNegative::whatIsDeveloped()
{
    QFETCH(Change, change);
    NegativeWriter dng;
    change(dng);
    QTEST(isCovered(dng.encoded()), "covered");
}

void TestDcrawNegative::damagedFiles_data()
{
    QTest::addColumn<Damage>("damage");
    const auto row = [](const char *name, const Damage &damage) { QTest::newRow(name) << damage; };
    row("empty", [](QByteArray &file) { file.clear(); });
    row("31 bytes", [](QByteArray &file) { file.truncate(31); });
    row("big-endian", [](QByteArray &file) { file.replace(0, 4, QByteArray("MM\0*", 4)); });
    row("not 42", [](QByteArray &file) { file[2] = 43; });
    row("another camera's mark", [](QByteArray &file) { file.replace(4, 4, "IIII"); });
    row("directory behind the end", [](QByteArray &file) { file[7] = 0x10; });
    row("tags that fall", [](QByteArray &file) { file[firstDirectory + 2] = char(0xff); });
    row("the same tag twice", [](QByteArray &file) {
        file.replace(firstDirectory + 2 + entryBytes, 2, file.mid(firstDirectory + 2, 2));
    });
    row("a second directory", [](QByteArray &file) {
        const qsizetype count = static_cast<quint8>(file[firstDirectory]);
        file[firstDirectory + 2 + count * entryBytes] = 8;
    });
    row("strip behind the end", [](QByteArray &file) { file.chop(1); });
    row("cut off in the directory", [](QByteArray &file) { file.truncate(60); });
}

void TestDcrawNegative::damagedFiles()
{
    QFETCH(Damage, damage);
    QByteArray file = NegativeWriter().encoded();
    QVERIFY(isCovered(file));
    damage(file);
    QVERIFY(!isCovered(file));
}

void TestDcrawNegative::losslessStreams_data()
{
    QTest::addColumn<Damage>("damage");
    QTest::addColumn<bool>("covered");
    const auto row = [](const char *name, bool covered, const Damage &damage) {
        QTest::newRow(name) << damage << covered;
    };
    const auto insertBehindStart = [](const char *hex) {
        return [hex](QByteArray &stream) { stream.insert(2, QByteArray::fromHex(hex)); };
    };
    const auto setScanByte = [](qsizetype behindMarker, char value) {
        return [behindMarker, value](QByteArray &stream) {
            stream[stream.indexOf("\xff\xda") + behindMarker] = value;
        };
    };
    row("whole", true, [](QByteArray &) {});
    row("without the end marker", true, [](QByteArray &stream) { stream.chop(2); });
    row("with a comment", true, insertBehindStart("fffe00041234"));
    row("with application data", true, insertBehindStart("ffe100041234"));
    row("with restarts", false, insertBehindStart("ffdd00040010"));
    row("with a restart interval of 0", false, insertBehindStart("ffdd00040000"));
    row("fill byte before a marker", false, insertBehindStart("ff"));
    row("another process", false,
        [](QByteArray &stream) { stream[stream.indexOf("\xff\xc3") + 1] = char(0xc0); });
    row("predictor 0", false, setScanByte(9, 0));
    row("predictor 8", false, setScanByte(9, 8));
    row("point transform", false, setScanByte(11, 1));
    row("tables the other way round", false, [](QByteArray &stream) {
        const qsizetype scan = stream.indexOf("\xff\xda");
        stream[scan + 6] = 0x10;
        stream[scan + 8] = 0x00;
    });
    row("subsampled", false,
        [](QByteArray &stream) { stream[stream.indexOf("\xff\xc3") + 11] = 0x22; });
    row("cut off", false, [](QByteArray &stream) { stream.truncate(stream.size() * 3 / 4); });
    row("a marker in the data", false, [](QByteArray &stream) {
        stream.replace(stream.size() / 2, 2, QByteArray::fromHex("ffd0"));
    });
    row("one row less", false, [](QByteArray &stream) {
        const qsizetype lines = stream.indexOf("\xff\xc3") + 6;
        stream[lines] = static_cast<char>(stream[lines] - 1);
    });
    row("samples beyond the precision", false,
        [](QByteArray &stream) { stream[stream.indexOf("\xff\xc3") + 4] = 8; });
}

void TestDcrawNegative::losslessStreams()
{
    QFETCH(Damage, damage);
    NegativeWriter dng;
    dng.setLossless(sample::LosslessShape::Camera, 1);
    const QByteArray file = dng.encoded();
    dng.strip = file.mid(file.indexOf(QByteArray::fromHex("ffd8ffc4")));
    damage(dng.strip);
    QTEST(isCovered(dng.encoded()), "covered");
}

void TestDcrawNegative::valuesAreRead()
{
    NegativeWriter dng;
    dng.setShape(30, 28, 12);
    dng.image.setLongs(tag::activeArea, {1, 2, 27, 29});
    dng.image.setLongs(tag::blackLevel, {65536 + 100});
    const std::array<dng::Rational, 2> scale{{{1, 1}, {5, 3}}};
    dng.image.setRationals(tag::defaultScale, scale);
    isCovered(dng.encoded());
    const raw::File file(m_folder->filePath(QStringLiteral("frame.dng")).toStdString());
    const auto negative = dcraw::readNegative(file);
    QCOMPARE(negative.width, 30);
    QCOMPARE(negative.height, 28);
    QCOMPARE(negative.active.top, 1);
    QCOMPARE(negative.active.left, 2);
    QCOMPARE(negative.active.height(), 26);
    QCOMPARE(negative.active.width(), 27);
    QCOMPARE(negative.black, 100U);
    QCOMPARE(negative.pixelAspect, 1 / (5.0 / 3));
    QCOMPARE(negative.exposureSeconds, 0.02F);
    QCOMPARE(negative.fNumber, 2.8F);
    QCOMPARE(negative.focalLength, 50.0F);
    QCOMPARE(negative.iso, std::uint16_t{800});
    QCOMPARE(negative.colorMatrix[1][2], 0.2028);
    QCOMPARE(negative.texts.model, std::string("EOS 5D Mark III"));
}

void TestDcrawNegative::dateOfTheExposureReplacesThatOfTheFile()
{
    const auto time = [this](const char *ofFile, const char *ofExposure) {
        NegativeWriter dng;
        dng.image.setText(tag::dateTime, ofFile);
        dng.exif.setText(tag::dateTimeOriginal, ofExposure);
        isCovered(dng.encoded());
        return dcraw::readNegative(
                   raw::File(m_folder->filePath(QStringLiteral("frame.dng")).toStdString()))
            .time;
    };
    QCOMPARE(time("2026:01:01 00:00:00", "1970:01:01 00:00:09"), std::time_t{9});
    QCOMPARE(time("1970:01:01 00:00:09", "0000:00:00 00:00:00"), std::time_t{9});
}

void TestDcrawNegative::rowsAreUnpacked_data()
{
    QTest::addColumn<int>("bits");
    QTest::addColumn<bool>("isLossless");
    for (int bits = 8; bits <= 16; ++bits)
        QTest::addRow("%d bits", bits) << bits << false;
    QTest::newRow("lossless") << 14 << true;
}

void TestDcrawNegative::rowsAreUnpacked()
{
    QFETCH(int, bits);
    QFETCH(bool, isLossless);
    constexpr int width = 54;
    constexpr int height = 34;
    for (const int left : {0, 1, 7, 8, 13}) {
        for (const int columns : {22, 24, 37}) {
            NegativeWriter dng;
            dng.setShape(width, height, bits);
            dng.image.setLongs(tag::blackLevel, {0});
            std::uint32_t value = 1;
            for (auto &sample : dng.samples) {
                value = value * 1664525 + 1013904223;
                sample = static_cast<std::uint16_t>(value >> 16 & ((1U << bits) - 1));
            }
            if (isLossless)
                dng.setLossless(sample::LosslessShape::Folded, 4);
            dng.image.setLongs(tag::activeArea, {5, static_cast<std::uint32_t>(left), 34,
                                                 static_cast<std::uint32_t>(left + columns)});
            const auto frame = frameOf(dng.encoded(), {});
            QCOMPARE(frame.development.width, columns);
            std::vector<std::uint16_t> row(static_cast<std::size_t>(columns));
            for (int y = 0; y < 29; ++y) {
                frame.samples->read(y, row);
                QVERIFY(std::equal(row.begin(), row.end(),
                                   dng.samples.begin() + (y + 5) * width + left));
            }
        }
    }
}

void TestDcrawNegative::listsOfBadPixels_data()
{
    QTest::addColumn<QByteArray>("list");
    QTest::addColumn<int>("pixels"); // -1: handed over
    QTest::newRow("empty") << QByteArray() << 0;
    QTest::newRow("one") << QByteArray("1 2 3\n") << 1;
    QTest::newRow("more on the line") << QByteArray("1 2 3 dead since\n") << 1;
    QTest::newRow("without a line end") << QByteArray("1 2 3") << 1;
    QTest::newRow("signs and white space") << QByteArray("\t-1 +2\v3\r\n") << 1;
    QTest::newRow("two signs") << QByteArray("+-1 2 3\n") << 0;
    QTest::newRow("two numbers") << QByteArray("1 2\n3 4\n") << 0;
    QTest::newRow("words") << QByteArray("a 1 2 3\n") << 0;
    QTest::newRow("commented out") << QByteArray("# 1 2 3\n1 2 # 3\n") << 0;
    QTest::newRow("a long line is several") << QByteArray(127, ' ') + "1 2 3\n" << 1;
    QTest::newRow("a comment ends with its piece of the line")
        << '#' + QByteArray(126, ' ') + "1 2 3\n"
        << 1;
    QTest::newRow("eleven digits") << QByteArray("00000000001 2 3\n") << -1;
    QTest::newRow("eleven digits in a comment") << QByteArray("# 00000000001\n") << 0;
    QTest::newRow("beyond 32 bits") << QByteArray("1 2 2147483648\n") << -1;
    QTest::newRow("32 bits") << QByteArray("1 2 -2147483648\n") << 1;
    QTest::newRow("no text") << QByteArray("1 2 3\0\n", 7) << -1;
}

void TestDcrawNegative::listsOfBadPixels()
{
    QFETCH(QByteArray, list);
    QFile file(m_folder->filePath(QStringLiteral("bad.txt")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(list);
    file.close();
    int pixels = -1;
    try {
        pixels = static_cast<int>(dcraw::readBadPixels(file.fileName().toStdString()).size());
    } catch (const dcraw::NotCovered &) {
    }
    QTEST(pixels, "pixels");
}

void TestDcrawNegative::badPixelBecomesTheMeanOfItsColour()
{
    NegativeWriter dng;
    std::fill(dng.samples.begin(), dng.samples.end(), std::uint16_t{1000});
    dng.samples[2 * 22 + 2] = 9000; // two columns and rows from the bad one
    dng.samples[1] = 7000;          // another colour
    QFile list(m_folder->filePath(QStringLiteral("bad.txt")));
    QVERIFY(list.open(QIODevice::WriteOnly));
    // The second time lies behind the picture's; the third line sees what the first has done.
    list.write("0 0 0\n4 4 2000000000\n0 2 0\n30 30 0\n-1 0 0\n");
    list.close();
    dcraw::Options options;
    options.badPixels = list.fileName().toStdString();
    const auto frame = frameOf(dng.encoded(), options);
    std::vector<std::uint16_t> row(22);
    frame.samples->read(0, row);
    QCOMPARE(row[0], std::uint16_t{(1000 + 1000 + 9000) / 3});
    QCOMPARE(row[1], std::uint16_t{7000});
    frame.samples->read(2, row);
    QCOMPARE(row[0], std::uint16_t{(3666 + 1000 + 9000 + 1000 + 1000) / 5});
    frame.samples->read(4, row);
    QCOMPARE(row[4], std::uint16_t{1000});
}

void TestDcrawNegative::listAboveTheWorkingFolderIsLeftToTheRealOne()
{
    const QByteArray dng = NegativeWriter().encoded();
    QVERIFY(QDir().mkpath(QStringLiteral("a/b")));
    QDir::setCurrent(m_folder->filePath(QStringLiteral("a/b")));
    QVERIFY(isCovered(dng));
    QFile list(m_folder->filePath(QStringLiteral(".badpixels")));
    QVERIFY(list.open(QIODevice::WriteOnly));
    list.close();
    QVERIFY(!isCovered(dng));
    // A list that is named is the only one.
    dcraw::Options options;
    options.badPixels = list.fileName().toStdString();
    QVERIFY(isCovered(dng, options));
}

FILMWRIGHT_TEST(TestDcrawNegative, QCoreApplication)
#include "tst_dcraw_negative.moc"
