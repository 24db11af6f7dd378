// SPDX-License-Identifier: MIT
#include "dcraw/negative.h"

#include "dcraw/fields.h"
#include "dng/tags.h"

#include <cmath>
#include <string_view>

namespace dcraw {
namespace {

namespace tag = dng::tag;

// Those that mlv_dump and cr2hdr write.
constexpr std::array imageTags{tag::newSubFileType,
                               tag::imageWidth,
                               tag::imageLength,
                               tag::bitsPerSample,
                               tag::compression,
                               tag::photometricInterpretation,
                               tag::fillOrder,
                               tag::imageDescription,
                               tag::make,
                               tag::model,
                               tag::stripOffsets,
                               tag::orientation,
                               tag::samplesPerPixel,
                               tag::rowsPerStrip,
                               tag::stripByteCounts,
                               tag::planarConfiguration,
                               tag::software,
                               tag::dateTime,
                               tag::cfaRepeatPatternDim,
                               tag::cfaPattern,
                               tag::exifIfd,
                               tag::dngVersion,
                               tag::dngBackwardVersion,
                               tag::uniqueCameraModel,
                               tag::blackLevel,
                               tag::whiteLevel,
                               tag::defaultScale,
                               tag::defaultCropOrigin,
                               tag::defaultCropSize,
                               tag::colorMatrix1,
                               tag::asShotNeutral,
                               tag::baselineExposure,
                               tag::cameraSerialNumber,
                               tag::calibrationIlluminant1,
                               tag::activeArea,
                               tag::timeCodes,
                               tag::frameRate,
                               tag::reelName};
constexpr std::array exifTags{tag::exposureTime, tag::fNumber,          tag::isoSpeedRatings,
                              tag::exifVersion,  tag::dateTimeOriginal, tag::focalLength,
                              tag::lensModel,    tag::lensSerialNumber};

constexpr std::uint32_t largestSide = 65535;

void requirePlainStart(const raw::File &file)
{
    std::array<char, 32> start{};
    file.read(0, std::as_writable_bytes(std::span(start)));
    const std::string_view text(start.data(), start.size());
    // Marks of other cameras' files.
    require(text.find("IIII") == std::string_view::npos &&
                text.find("MMMM") == std::string_view::npos,
            "begins like another camera's file");
}

template <typename Ratio>
double quotient(Ratio ratio)
{
    require(ratio.denominator != 0, "has a ratio without a denominator");
    return static_cast<double>(ratio.numerator) / ratio.denominator;
}

/// The text up to its NUL, cut to `size` bytes; nothing when the field isn't there.
std::string text(const Fields &fields, std::uint16_t tag, std::size_t size)
{
    const auto bytes = fields.text(tag);
    if (!bytes)
        return {};
    const std::size_t end = bytes->find('\0');
    require(end != std::string::npos, "has a text without an end");
    return bytes->substr(0, std::min(end, size));
}

std::time_t timeOf(const Fields &fields, std::uint16_t tag)
{
    const auto bytes = fields.text(tag);
    if (!bytes)
        return 0;
    require(bytes->size() == 20, "has a date of another form");
    return parseTime(*bytes);
}

int side(const Fields &fields, std::uint16_t tag)
{
    const auto size = fields.needed<std::uint32_t>(tag);
    require(size <= largestSide, "is too large");
    return static_cast<int>(size);
}

Area activeArea(const Fields &fields, int width, int height)
{
    constexpr int leastSide = 22;
    Area area{0, 0, height, width};
    if (const auto stored = fields.values<std::uint32_t, 4>(tag::activeArea)) {
        require(std::all_of(stored->begin(), stored->end(),
                            [](std::uint32_t edge) { return edge <= largestSide; }),
                "has an impossible active area");
        area = {static_cast<int>((*stored)[0]), static_cast<int>((*stored)[1]),
                static_cast<int>((*stored)[2]), static_cast<int>((*stored)[3])};
    }
    require(area.bottom <= height && area.right <= width && area.width() >= leastSide &&
                area.height() >= leastSide,
            "has an active area that is too small or not inside the frame");
    return area;
}

/// Sizes of which the real dcraw cuts off the edges that certain cameras mask.
void requireUncutSize(const Area &area)
{
    constexpr std::array<std::array<int, 2>, 3> cutSizes{
        {{3936, 2624}, {4864, 3136}, {4096, 3014}}};
    require(std::none_of(cutSizes.begin(), cutSizes.end(),
                         [&area](const auto &size) {
                             return area.width() == size[0] && area.height() == size[1];
                         }),
            "has the size of a camera with rules of its own");
}

std::array<std::uint8_t, 4> pattern(const Fields &fields)
{
    constexpr std::array<std::array<std::uint8_t, 4>, 4> bayerPatterns{
        {{0, 1, 1, 2}, {1, 0, 2, 1}, {1, 2, 0, 1}, {2, 1, 1, 0}}};
    require(fields.needed<std::uint16_t, 2>(tag::cfaRepeatPatternDim) ==
                std::array<std::uint16_t, 2>{2, 2},
            "has a large colour pattern");
    const auto pattern = fields.needed<std::uint8_t, 4>(tag::cfaPattern);
    require(std::find(bayerPatterns.begin(), bayerPatterns.end(), pattern) != bayerPatterns.end(),
            "has no Bayer pattern");
    return pattern;
}

double pixelAspect(const Fields &fields)
{
    const auto scale = fields.values<dng::Rational, 2>(tag::defaultScale);
    if (!scale)
        return 1;
    const double horizontal = quotient((*scale)[0]);
    const double vertical = quotient((*scale)[1]);
    require(horizontal > 0 && vertical > 0, "has an impossible scale");
    return horizontal / vertical;
}

void readShape(const Fields &fields, Negative &negative)
{
    require(fields.needed<std::uint16_t>(tag::photometricInterpretation) ==
                dng::photometric::colourFilterArray,
            "holds another kind of picture");
    require(fields.value<std::uint16_t>(tag::orientation).value_or(1) == 1, "is turned");
    require(fields.needed<std::uint16_t>(tag::samplesPerPixel) == 1,
            "has several samples for each pixel");
    const auto compression = fields.needed<std::uint16_t>(tag::compression);
    require(compression == dng::compression::none || compression == dng::compression::losslessJpeg,
            "is compressed in another way");
    negative.isLosslessJpeg = compression == dng::compression::losslessJpeg;
    negative.bitsPerSample = fields.needed<std::uint16_t>(tag::bitsPerSample);
    require(negative.bitsPerSample >= 8 && negative.bitsPerSample <= 16,
            "has an unusual number of bits for each sample");
    negative.width = side(fields, tag::imageWidth);
    negative.height = side(fields, tag::imageLength);
    negative.active = activeArea(fields, negative.width, negative.height);
    requireUncutSize(negative.active);
    negative.pattern = pattern(fields);
    negative.pixelAspect = pixelAspect(fields);
}

void readStrip(const Fields &fields, std::uint64_t fileBytes, Negative &negative)
{
    negative.stripOffset = fields.needed<std::uint32_t>(tag::stripOffsets);
    negative.stripBytes = fields.needed<std::uint32_t>(tag::stripByteCounts);
    require(negative.stripOffset <= fileBytes &&
                negative.stripBytes <= fileBytes - negative.stripOffset,
            "ends before its samples do");
    // By this ratio the real dcraw knows another camera's way of packing.
    const auto samples =
        static_cast<std::uint32_t>(negative.width) * static_cast<std::uint32_t>(negative.height);
    require(negative.stripBytes * std::uint32_t{5} != samples * std::uint32_t{8},
            "has the size of another camera's packing");
}

void readColour(const Fields &fields, Negative &negative)
{
    constexpr std::array<std::uint8_t, 4> oldestVersion{1, 1, 0, 0};
    require(fields.needed<std::uint8_t, 4>(tag::dngVersion) >= oldestVersion,
            "is of an old version of DNG");
    negative.black = fields.needed<std::uint32_t>(tag::blackLevel) % 65536;
    negative.white = fields.needed<std::uint32_t>(tag::whiteLevel);
    require(negative.white > negative.black, "has impossible levels");
    const auto matrix = fields.needed<dng::SRational, 9>(tag::colorMatrix1);
    for (std::size_t i = 0; i < matrix.size(); ++i)
        negative.colorMatrix[i / 3][i % 3] = quotient(matrix[i]);
    const auto neutral = fields.needed<dng::Rational, 3>(tag::asShotNeutral);
    std::transform(neutral.begin(), neutral.end(), negative.neutral.begin(),
                   quotient<dng::Rational>);
    require(std::all_of(negative.neutral.begin(), negative.neutral.end(),
                        [](double value) { return value > 0; }),
            "has an impossible white balance");
}

float exifValue(const Fields &exif, std::uint16_t tag)
{
    constexpr float largest = 2147; // millionths of more don't fit into a ratio of 32 bits
    const auto ratio = exif.value<dng::Rational>(tag);
    const auto value = ratio ? static_cast<float>(quotient(*ratio)) : 0;
    require(value < largest, "has extreme exposure values");
    return value;
}

void readExif(const Fields &exif, Negative &negative)
{
    negative.exposureSeconds = exifValue(exif, tag::exposureTime);
    negative.fNumber = exifValue(exif, tag::fNumber);
    negative.focalLength = exifValue(exif, tag::focalLength);
    negative.iso = exif.value<std::uint16_t>(tag::isoSpeedRatings).value_or(0);
    if (const std::time_t time = timeOf(exif, tag::dateTimeOriginal); time > 0)
        negative.time = time;
}

Texts readTexts(const Fields &fields)
{
    constexpr std::size_t longestDescription = 511;
    constexpr std::size_t longestName = 63;
    return normalised({text(fields, tag::imageDescription, longestDescription),
                       text(fields, tag::make, longestName),
                       text(fields, tag::model, longestName)});
}

} // namespace

Negative readNegative(const raw::File &file)
{
    requirePlainStart(file);
    dng::DirectoryReader reader(file);
    const auto directory = reader.firstDirectory();
    const Fields fields(reader.entries(directory), imageTags);
    require(reader.successor(directory) == 0, "holds several pictures");

    Negative negative;
    readShape(fields, negative);
    readStrip(fields, file.size(), negative);
    readColour(fields, negative);
    negative.texts = readTexts(fields);
    negative.time = timeOf(fields, tag::dateTime);
    if (const auto exif = fields.value<std::uint32_t>(tag::exifIfd))
        readExif(Fields(reader.entries(*exif), exifTags), negative);
    return negative;
}

} // namespace dcraw
