// SPDX-License-Identifier: MIT
#include "mlv_dump/frametags.h"

#include "dng/tags.h"
#include "mlv_dump/cameraclock.h"
#include "mlv_dump/text.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>

namespace mlvdump {
namespace {

namespace tag = dng::tag;

constexpr std::uint16_t illuminantD65 = 21;
constexpr std::uint8_t red = 0;
constexpr std::uint8_t green = 1;
constexpr std::uint8_t blue = 2;

dng::Rational ratio(double value)
{
    constexpr std::uint32_t denominator = 1000000;
    return {static_cast<std::uint32_t>(std::lround(value * denominator)), denominator};
}

dng::SRational signedRatio(double value)
{
    constexpr std::int32_t denominator = 10000;
    return {static_cast<std::int32_t>(std::lround(value * denominator)), denominator};
}

/// The digits of the second's fraction.
std::string milliseconds(const CameraTime &time)
{
    using namespace std::chrono;
    const auto fraction = floor<std::chrono::milliseconds>(time - floor<seconds>(time));
    return format("%03d", static_cast<int>(fraction.count()));
}

/// How much higher than wide the pixels are, as the sensor was sampled. Movies of the common kinds
/// have even sides: where the stretched one would be odd, the ratio is that of the nearest even
/// one.
dng::Rational pixelHeight(const mlv::RawCapture &capture, std::uint32_t width, std::uint32_t height)
{
    const std::uint32_t columns = std::uint32_t{capture.binningX} + capture.skippingX;
    const std::uint32_t lines = std::uint32_t{capture.binningY} + capture.skippingY;
    if (columns == 0 || lines == 0)
        return {1, 1};
    // The shorter measure is stretched, so that no sample is lost.
    const bool isHigher = lines >= columns;
    const std::uint32_t side = isHigher ? height : width;
    const double stretched = 1.0 * side * std::max(lines, columns) / std::min(lines, columns);
    if (std::lround(stretched) % 2 == 0 || lines == columns)
        return {lines, columns};
    const auto even = static_cast<std::uint32_t>(std::lround(stretched / 2) * 2);
    return isHigher ? dng::Rational{even, side} : dng::Rational{side, even};
}

} // namespace

FrameTags::FrameTags(const mlv::Recording &recording, const mlv::FrameFormat &format,
                     const ColourMatrix &matrix, const std::string &reelName,
                     const Choices &choices)
    : m_recording(recording)
    , m_matrix(matrix)
    , m_choices(choices)
{
    m_common.setBytes(tag::dngVersion, {1, 4, 0, 0});
    m_common.setBytes(tag::dngBackwardVersion, {1, 1, 0, 0});
    m_common.setText(tag::software, "Filmwright mlv_dump " FILMWRIGHT_VERSION);
    m_common.setText(tag::reelName, asciiText(harmless(reelName)));
    m_common.setText(tag::imageDescription, asciiText(harmless(recording.info())));
    setShape(format);
    setCamera();
    setLevels(format);
    setColour();
    setAreas(format);
    setRate();
}

void FrameTags::setShape(const mlv::FrameFormat &format)
{
    const auto width = static_cast<std::uint32_t>(format.width);
    const auto height = static_cast<std::uint32_t>(format.height);
    m_common.setLongs(tag::newSubFileType, {0});
    m_common.setLongs(tag::imageWidth, {width});
    m_common.setLongs(tag::imageLength, {height});
    m_common.setShorts(tag::bitsPerSample, {static_cast<std::uint16_t>(format.bitsPerSample)});
    m_common.setShorts(tag::compression, {dng::compression::none});
    m_common.setShorts(tag::photometricInterpretation, {dng::photometric::colourFilterArray});
    m_common.setShorts(tag::fillOrder, {1});
    m_common.setShorts(tag::orientation, {1});
    m_common.setShorts(tag::samplesPerPixel, {1});
    m_common.setLongs(tag::rowsPerStrip, {height});
    m_common.setShorts(tag::planarConfiguration, {1});
    m_common.setShorts(tag::cfaRepeatPatternDim, {2, 2});
    m_common.setBytes(tag::cfaPattern, {red, green, green, blue});
}

void FrameTags::setCamera()
{
    const auto &identity = m_recording.identity();
    std::string name = identity ? asciiText(harmless(identity->name)) : std::string();
    if (name.empty())
        name = "Unknown camera"; // readers refuse a file without a name
    m_common.setText(tag::make, name.substr(0, name.find(' ')));
    m_common.setText(tag::model, name);
    m_common.setText(tag::uniqueCameraModel, name);
    if (identity)
        m_common.setText(tag::cameraSerialNumber, asciiText(harmless(identity->serial)));
}

void FrameTags::setLevels(const mlv::FrameFormat &format)
{
    const auto &rawInfo = *m_recording.rawInfo();
    m_common.setLongs(tag::blackLevel, {static_cast<std::uint32_t>(format.blackLevel)});
    m_common.setLongs(tag::whiteLevel, {static_cast<std::uint32_t>(format.whiteLevel)});
    const std::int32_t denominator = rawInfo.exposureBiasDenominator;
    const double recorded = denominator > 0 ? 1.0 * rawInfo.exposureBiasNumerator / denominator : 0;
    if (m_choices.exposure != 0) {
        constexpr double most = 100; // of what a hostile recording may say
        setBias(signedRatio(std::clamp(recorded, -most, most) + m_choices.exposure));
    } else if (denominator > 0) {
        setBias({rawInfo.exposureBiasNumerator, denominator});
    } else if (m_choices.slate) {
        setBias({0, 1});
    }
}

void FrameTags::setBias(const dng::SRational &bias)
{
    m_common.setSRationals(tag::baselineExposure, {&bias, 1});
}

void FrameTags::setColour()
{
    // Recorders store the camera's matrix for daylight of 6500 K.
    std::array<dng::SRational, 9> matrix{};
    std::transform(m_matrix.begin(), m_matrix.end(), matrix.begin(), signedRatio);
    m_common.setSRationals(tag::colorMatrix1, matrix);
    m_common.setShorts(tag::calibrationIlluminant1, {illuminantD65});
}

void FrameTags::setAreas(const mlv::FrameFormat &format)
{
    const auto &rawInfo = *m_recording.rawInfo();
    // The stored area belongs to the read-out of the sensor: a frame that was cut out of it is
    // active everywhere.
    const bool holds =
        rawInfo.activeTop >= 0 && rawInfo.activeLeft >= 0 &&
        rawInfo.activeBottom <= format.height && rawInfo.activeRight <= format.width &&
        rawInfo.activeTop < rawInfo.activeBottom && rawInfo.activeLeft < rawInfo.activeRight;
    const auto top = static_cast<std::uint32_t>(holds ? rawInfo.activeTop : 0);
    const auto left = static_cast<std::uint32_t>(holds ? rawInfo.activeLeft : 0);
    const auto bottom = static_cast<std::uint32_t>(holds ? rawInfo.activeBottom : format.height);
    const auto right = static_cast<std::uint32_t>(holds ? rawInfo.activeRight : format.width);
    m_common.setLongs(tag::activeArea, {top, left, bottom, right});
    m_common.setLongs(tag::defaultCropOrigin, {0, 0});
    m_common.setLongs(tag::defaultCropSize, {right - left, bottom - top});

    const auto capture = m_recording.rawCapture().value_or(mlv::RawCapture{});
    const std::array<dng::Rational, 2> scale{
        {{1, 1}, pixelHeight(capture, right - left, bottom - top)}};
    m_common.setRationals(tag::defaultScale, scale);
}

void FrameTags::setRate()
{
    if (m_choices.slate) {
        const dng::SRational exact{static_cast<std::int32_t>(m_choices.slate->rate.numerator),
                                   static_cast<std::int32_t>(m_choices.slate->rate.denominator)};
        m_common.setSRationals(tag::frameRate, {&exact, 1});
        return;
    }
    const auto &header = m_recording.header();
    constexpr std::uint32_t largest = std::numeric_limits<std::int32_t>::max();
    if (m_recording.framesPerSecond() > 0 && header.frameRateNumerator <= largest &&
        header.frameRateDenominator <= largest) {
        const dng::SRational rate{static_cast<std::int32_t>(header.frameRateNumerator),
                                  static_cast<std::int32_t>(header.frameRateDenominator)};
        m_common.setSRationals(tag::frameRate, {&rate, 1});
    }
}

dng::Ifd FrameTags::image(std::uint32_t number, const mlv::DataBlock &block) const
{
    dng::Ifd image = m_common;
    image.setText(tag::dateTime, dateTime(block.timestamp));

    const auto *balance = m_recording.whiteBalance().at(block.timestamp);
    const auto neutral = m_choices.neutral.value_or(
        asShotNeutral(balance == nullptr ? nullptr : &balance->value, m_matrix));
    const std::array<dng::Rational, 3> ratios{ratio(neutral[0]), ratio(neutral[1]),
                                              ratio(neutral[2])};
    image.setRationals(tag::asShotNeutral, ratios);

    setTimeCode(image, number);
    return image;
}

void FrameTags::setTimeCode(dng::Ifd &image, std::uint32_t number) const
{
    if (m_choices.slate) {
        if (const auto bytes = m_choices.slate->timeCode(number))
            image.setBytes(tag::timeCodes, *bytes);
        return;
    }
    // The frame in its second has two decimal digits, of two and four bits.
    const auto rate = static_cast<std::uint64_t>(
        std::lround(std::clamp(m_recording.framesPerSecond(), 0.0, 1000.0)));
    if (rate > 0 && rate < 40)
        image.setBytes(tag::timeCodes, timeCodeBytes(number / rate, number % rate));
}

dng::Ifd FrameTags::exif(const mlv::DataBlock &block) const
{
    dng::Ifd exif;
    exif.setUndefined(tag::exifVersion, "0230");
    exif.setText(tag::dateTimeOriginal, dateTime(block.timestamp));
    if (const auto time = cameraTime(m_recording, block.timestamp); time && m_choices.slate)
        exif.setText(tag::subSecTimeOriginal, milliseconds(*time));
    if (const auto *entry = m_recording.exposure().at(block.timestamp)) {
        const auto &exposure = entry->value;
        const auto shutter = static_cast<std::uint32_t>(
            std::min<std::uint64_t>(exposure.shutter, std::numeric_limits<std::uint32_t>::max()));
        if (shutter > 0)
            exif.setRational(tag::exposureTime, {shutter, 1000000});
        if (exposure.iso > 0) {
            exif.setShorts(tag::isoSpeedRatings,
                           {static_cast<std::uint16_t>(std::min(exposure.iso, 65535U))});
        }
    }
    if (const auto *entry = m_recording.lens().at(block.timestamp)) {
        const auto &lens = entry->value;
        if (lens.aperture > 0)
            exif.setRational(tag::fNumber, {lens.aperture, 100});
        if (lens.focalLength > 0)
            exif.setRational(tag::focalLength, {lens.focalLength, 1});
        exif.setText(tag::lensModel, asciiText(harmless(lens.name)));
        exif.setText(tag::lensSerialNumber, asciiText(harmless(lens.serial)));
    }
    return exif;
}

std::string FrameTags::dateTime(std::uint64_t timestamp) const
{
    const auto time = cameraTime(m_recording, timestamp);
    return time ? timeText(*time, ':') : std::string();
}

} // namespace mlvdump
