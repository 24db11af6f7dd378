// SPDX-License-Identifier: MIT
#include "mlv_dump/frametags.h"

#include "dng/tags.h"
#include "recordingbuilder.h"
#include "support/testprogram.h"

#include <QSize>
#include <QTemporaryDir>
#include <QTest>

using mlvdump::FrameTags;

namespace {

namespace tag = dng::tag;
namespace blocktype = mlv::blocktype;

/// The clock at ten past eight in the evening of 28 February 2023.
mlv::Clock clockOf2023()
{
    mlv::Clock clock{};
    clock.second = 30;
    clock.minute = 10;
    clock.hour = 20;
    clock.day = 28;
    clock.month = 1;
    clock.year = 123;
    return clock;
}

/// The value of a field as it stands in a file; null when the field is not there.
QByteArray value(const dng::Ifd &ifd, std::uint16_t tag)
{
    const auto found = ifd.fields().find(tag);
    if (found == ifd.fields().end())
        return {};
    const auto &data = found->second.data;
    return QByteArray(reinterpret_cast<const char *>(data.data()),
                      static_cast<qsizetype>(data.size()));
}

/// The text of a field without its NUL.
QByteArray text(const dng::Ifd &ifd, std::uint16_t tag)
{
    return value(ifd, tag).chopped(ifd.fields().contains(tag) ? 1 : 0);
}

template <typename Number>
QByteArray encoded(std::initializer_list<Number> numbers)
{
    QByteArray bytes;
    for (const Number number : numbers)
        bytes.append(reinterpret_cast<const char *>(&number), sizeof number);
    return bytes;
}

} // namespace

using Change = std::function<void(mlv::Clock &)>;
Q_DECLARE_METATYPE(Change)

class TestFrameTags : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void clockGoesOnWithTheRecording_data();
    void clockGoesOnWithTheRecording();
    void impossibleClockIsLeftOut_data();
    void impossibleClockIsLeftOut();
    void timeCodeCountsFramesSecondsAndMinutes();
    void fastRecordingsHaveNoTimeCode();
    void exposureBeyondATagIsTheLargestOrLeftOut();
    void unknownLensValuesAreLeftOut();
    void namesAreAsciiWithoutMarks();
    void cameraWithoutANameIsUnknown();
    void exposureBiasIsKept();
    void chosenExposureIsAddedToTheBias();
    void chosenWhiteIsThatOfEveryFrame();
    void stretchGivesEvenSides_data();
    void stretchGivesEvenSides();

private:
    using Tags = std::pair<dng::Ifd, dng::Ifd>; // image and EXIF

    /// The tags of a frame at a time, in microseconds.
    Tags tagsOf(const RecordingBuilder &builder, std::uint32_t number = 0,
                std::uint64_t timestamp = 0, const char *reelName = "a",
                const FrameTags::Choices &choices = {}) const
    {
        const mlv::Recording recording(
            builder.write(m_folder.filePath(QStringLiteral("a.MLV"))).toStdString());
        const FrameTags tags(recording, mlv::frameFormat(*recording.rawInfo()),
                             mlvdump::colourMatrix(*recording.rawInfo()), reelName, choices);
        const mlv::DataBlock block{0, timestamp, 0, number, 0};
        return {tags.image(number, block), tags.exif(block)};
    }

    QTemporaryDir m_folder;
};

void TestFrameTags::clockGoesOnWithTheRecording_data()
{
    QTest::addColumn<quint64>("seconds");
    QTest::addColumn<QByteArray>("expected");
    QTest::newRow("before the clock was read") << quint64{0} << QByteArray("2023:02:28 20:10:30");
    QTest::newRow("a minute later") << quint64{61} << QByteArray("2023:02:28 20:11:30");
    QTest::newRow("in the next month")
        << quint64{4 * 3600 + 1} << QByteArray("2023:03:01 00:10:30");
    QTest::newRow("a forged time, a day later at the most")
        << quint64{9000000000} << QByteArray("2023:03:01 20:10:30");
}

void TestFrameTags::clockGoesOnWithTheRecording()
{
    QFETCH(quint64, seconds);
    QFETCH(QByteArray, expected);
    const auto [image, exif] =
        tagsOf(RecordingBuilder().addRawInfo().add(blocktype::clock, clockOf2023(), 1000000), 0,
               seconds * 1000000);
    QCOMPARE(text(image, tag::dateTime), expected);
    QCOMPARE(text(exif, tag::dateTimeOriginal), expected);
}

void TestFrameTags::impossibleClockIsLeftOut_data()
{
    QTest::addColumn<Change>("change");
    const auto row = [](const char *name, const Change &change) { QTest::newRow(name) << change; };
    row("day 0", [](mlv::Clock &clock) { clock.day = 0; });
    row("29 February", [](mlv::Clock &clock) { clock.day = 29; });
    row("day 257, 1 in a byte", [](mlv::Clock &clock) { clock.day = 257; });
    row("month 12", [](mlv::Clock &clock) { clock.month = 12; });
    row("month 256, 0 in a byte", [](mlv::Clock &clock) { clock.month = 256; });
    row("year of five digits", [](mlv::Clock &clock) { clock.year = 8100; });
    row("largest year", [](mlv::Clock &clock) { clock.year = 65535; });
    row("hour 24", [](mlv::Clock &clock) { clock.hour = 24; });
    row("minute 60", [](mlv::Clock &clock) { clock.minute = 60; });
    row("second 60", [](mlv::Clock &clock) { clock.second = 60; });
}

void TestFrameTags::impossibleClockIsLeftOut()
{
    QFETCH(Change, change);
    auto clock = clockOf2023();
    change(clock);
    const auto [image, exif] = tagsOf(RecordingBuilder().addRawInfo().add(blocktype::clock, clock));
    QVERIFY(!image.fields().contains(tag::dateTime));
    QVERIFY(!exif.fields().contains(tag::dateTimeOriginal));
}

void TestFrameTags::timeCodeCountsFramesSecondsAndMinutes()
{
    const std::uint32_t number = ((13 * 60 + 47) * 60 + 59) * 25 + 24; // at 25 frames a second
    const auto [image, exif] = tagsOf(RecordingBuilder().addRawInfo(), number);
    QCOMPARE(value(image, tag::timeCodes), QByteArray("\x24\x59\x47\x13\0\0\0\0", 8));
}

void TestFrameTags::fastRecordingsHaveNoTimeCode()
{
    RecordingBuilder builder;
    builder.header.frameRateNumerator = 60000;
    builder.header.frameRateDenominator = 1000;
    const auto [image, exif] = tagsOf(builder.addRawInfo());
    QVERIFY(!image.fields().contains(tag::timeCodes));
    QCOMPARE(value(image, tag::frameRate), encoded<std::int32_t>({60000, 1000}));
}

void TestFrameTags::exposureBeyondATagIsTheLargestOrLeftOut()
{
    const auto exifOf = [this](std::uint32_t iso, std::uint64_t shutter) {
        return tagsOf(RecordingBuilder().addRawInfo().add(blocktype::exposure,
                                                          mlv::Exposure{0, iso, 0, 0, shutter}))
            .second;
    };
    const auto beyond = exifOf(102400, std::uint64_t{1} << 40);
    QCOMPARE(value(beyond, tag::isoSpeedRatings), encoded<std::uint16_t>({65535}));
    QCOMPARE(value(beyond, tag::exposureTime), encoded<std::uint32_t>({0xffffffffU, 1000000}));
    const auto none = exifOf(0, 0);
    QVERIFY(!none.fields().contains(tag::isoSpeedRatings));
    QVERIFY(!none.fields().contains(tag::exposureTime));
}

void TestFrameTags::unknownLensValuesAreLeftOut()
{
    const auto [image, exif] =
        tagsOf(RecordingBuilder().addRawInfo().add(blocktype::lens, mlv::Lens{}));
    for (const auto lensTag :
         {tag::fNumber, tag::focalLength, tag::lensModel, tag::lensSerialNumber})
        QVERIFY(!exif.fields().contains(lensTag));
}

void TestFrameTags::namesAreAsciiWithoutMarks()
{
    mlv::Identity identity{{"Caméra [ERROR] "}, 1, {"12\x01\xff"}};
    const auto [image, exif] =
        tagsOf(RecordingBuilder().addRawInfo().add(blocktype::identity, identity), 0, 0, "Zür 山");
    QCOMPARE(text(image, tag::make), QByteArray("Cam?ra"));
    QCOMPARE(text(image, tag::model), QByteArray("Cam?ra (ERROR)"));
    QCOMPARE(text(image, tag::cameraSerialNumber), QByteArray("12 ?"));
    QCOMPARE(text(image, tag::reelName), QByteArray("Z?r ?"));
}

void TestFrameTags::cameraWithoutANameIsUnknown()
{
    const auto [image, exif] =
        tagsOf(RecordingBuilder().addRawInfo().add(blocktype::identity, mlv::Identity{}));
    QCOMPARE(text(image, tag::make), QByteArray("Unknown"));
    QCOMPARE(text(image, tag::uniqueCameraModel), QByteArray("Unknown camera"));
    QVERIFY(!image.fields().contains(tag::cameraSerialNumber));
}

void TestFrameTags::exposureBiasIsKept()
{
    auto rawInfo = RecordingBuilder::rawInfo();
    rawInfo.exposureBiasNumerator = -2;
    rawInfo.exposureBiasDenominator = 3;
    const auto biased = tagsOf(RecordingBuilder().add(blocktype::rawInfo, rawInfo)).first;
    QCOMPARE(value(biased, tag::baselineExposure), encoded<std::int32_t>({-2, 3}));
    rawInfo.exposureBiasDenominator = 0; // none
    const auto plain = tagsOf(RecordingBuilder().add(blocktype::rawInfo, rawInfo)).first;
    QVERIFY(!plain.fields().contains(tag::baselineExposure));
}

void TestFrameTags::chosenExposureIsAddedToTheBias()
{
    auto rawInfo = RecordingBuilder::rawInfo();
    rawInfo.exposureBiasNumerator = -1;
    rawInfo.exposureBiasDenominator = 2;
    const FrameTags::Choices brighter{{}, 1.25};
    const auto biased =
        tagsOf(RecordingBuilder().add(blocktype::rawInfo, rawInfo), 0, 0, "a", brighter).first;
    QCOMPARE(value(biased, tag::baselineExposure), encoded<std::int32_t>({7500, 10000}));
    rawInfo.exposureBiasDenominator = 0; // none
    const auto plain =
        tagsOf(RecordingBuilder().add(blocktype::rawInfo, rawInfo), 0, 0, "a", brighter).first;
    QCOMPARE(value(plain, tag::baselineExposure), encoded<std::int32_t>({12500, 10000}));
    rawInfo.exposureBiasNumerator = std::numeric_limits<std::int32_t>::max();
    rawInfo.exposureBiasDenominator = 1;
    const auto forged =
        tagsOf(RecordingBuilder().add(blocktype::rawInfo, rawInfo), 0, 0, "a", brighter).first;
    QCOMPARE(value(forged, tag::baselineExposure), encoded<std::int32_t>({1012500, 10000}));
}

void TestFrameTags::chosenWhiteIsThatOfEveryFrame()
{
    const FrameTags::Choices chosen{mlvdump::Neutral{0.5, 1, 0.25}, 0};
    const mlv::WhiteBalance custom{mlv::WhiteBalanceMode::Custom, 0, 512, 1024, 2048, 0, 0};
    const auto builder =
        RecordingBuilder().addRawInfo().add(blocktype::whiteBalance, custom, 1000000);
    for (const std::uint64_t time : {0U, 2000000U}) {
        QCOMPARE(value(tagsOf(builder, 0, time, "a", chosen).first, tag::asShotNeutral),
                 encoded<std::uint32_t>({500000, 1000000, 1000000, 1000000, 250000, 1000000}));
    }
    QCOMPARE(value(tagsOf(builder, 0, 2000000).first, tag::asShotNeutral),
             encoded<std::uint32_t>({500000, 1000000, 1000000, 1000000, 2000000, 1000000}));
}

void TestFrameTags::stretchGivesEvenSides_data()
{
    using Scale = QList<quint32>; // horizontal and vertical, numerator and denominator each
    QTest::addColumn<QSize>("size");
    QTest::addColumn<int>("columns");
    QTest::addColumn<int>("lines");
    QTest::addColumn<Scale>("scale");
    QTest::newRow("square pixels") << QSize(320, 431) << 3 << 3 << Scale{1, 1, 3, 3};
    QTest::newRow("even by itself") << QSize(320, 432) << 3 << 5 << Scale{1, 1, 5, 3};
    QTest::newRow("717 lines") << QSize(320, 430) << 3 << 5 << Scale{1, 1, 716, 430};
    QTest::newRow("723 lines") << QSize(320, 434) << 3 << 5 << Scale{1, 1, 724, 434};
    QTest::newRow("1627 lines") << QSize(320, 976) << 3 << 5 << Scale{1, 1, 1626, 976};
    QTest::newRow("an odd height, even by itself")
        << QSize(320, 431) << 3 << 5 << Scale{1, 1, 5, 3};
    QTest::newRow("three times as wide") << QSize(320, 432) << 3 << 1 << Scale{1, 1, 1, 3};
    QTest::newRow("an odd width, stretched") << QSize(101, 432) << 3 << 1 << Scale{1, 1, 101, 304};
}

void TestFrameTags::stretchGivesEvenSides()
{
    QFETCH(const QSize, size);
    QFETCH(const int, columns);
    QFETCH(const int, lines);
    QFETCH(const QList<quint32>, scale);
    auto rawInfo = RecordingBuilder::rawInfo();
    rawInfo.width = static_cast<std::uint16_t>(size.width());
    rawInfo.height = static_cast<std::uint16_t>(size.height());
    rawInfo.activeRight = size.width();
    rawInfo.activeBottom = size.height();
    mlv::RawCapture capture{};
    capture.binningX = static_cast<std::uint8_t>(columns);
    capture.binningY = static_cast<std::uint8_t>(lines);
    const auto image =
        tagsOf(
            RecordingBuilder().add(blocktype::rawInfo, rawInfo).add(blocktype::rawCapture, capture))
            .first;
    QCOMPARE(value(image, tag::defaultScale),
             encoded<std::uint32_t>({scale[0], scale[1], scale[2], scale[3]}));
}

FILMWRIGHT_TEST(TestFrameTags, QCoreApplication)
#include "tst_frametags.moc"
