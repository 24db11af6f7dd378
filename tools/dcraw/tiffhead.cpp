// SPDX-License-Identifier: MIT
#include "dcraw/tiffhead.h"

#include "dcraw/bytes.h"
#include "dng/ifd.h"
#include "dng/tags.h"
#include "dng/tifflayout.h"

#include <string>

namespace dcraw {
namespace {

namespace tag = dng::tag;
using dng::FieldType;

// The real dcraw writes a structure of fixed places, which readers of its files may know.
namespace place {
constexpr std::uint32_t directory = 10;
constexpr std::uint32_t exifDirectory = 294;
constexpr std::uint32_t bitsPerSample = 468;
constexpr std::uint32_t ratios = 476;
constexpr std::uint32_t description = 620;
constexpr std::uint32_t make = 1132;
constexpr std::uint32_t model = 1196;
constexpr std::uint32_t software = 1260;
constexpr std::uint32_t date = 1292;
constexpr std::uint32_t artist = 1312;
constexpr std::uint32_t end = 1376;
} // namespace place

constexpr std::uint32_t ratioBytes = 8;
constexpr std::uint32_t xResolution = place::ratios;
constexpr std::uint32_t yResolution = xResolution + ratioBytes;
constexpr std::uint32_t exposureTime = yResolution + ratioBytes;
constexpr std::uint32_t fNumber = exposureTime + ratioBytes;
constexpr std::uint32_t focalLength = fNumber + ratioBytes;

constexpr std::uint16_t yResolutionTag = 283;
constexpr std::uint16_t artistTag = 315;
constexpr std::uint16_t resolutionUnitTag = 296;
constexpr std::uint16_t iccProfileTag = 34675;
constexpr std::uint16_t rgb = 2;
constexpr std::uint16_t inch = 2;

using LittleEndianBytes = BytesAt<std::endian::little>;

/// Writes the entries of a directory one after the other.
class DirectoryWriter
{
public:
    DirectoryWriter(LittleEndianBytes &bytes, std::uint32_t place)
        : m_bytes(bytes)
        , m_place(place)
    {
    }

    template <typename Value>
    void add(std::uint16_t tag, FieldType type, std::uint32_t count, Value valueOrPlace)
    {
        const std::size_t entry = m_place + 2 + m_count * dng::tifflayout::entryBytes;
        m_bytes.number(entry, tag);
        m_bytes.number(entry + 2, static_cast<std::uint16_t>(type));
        m_bytes.number(entry + 4, count);
        m_bytes.number(entry + 8, valueOrPlace);
        m_bytes.number(m_place, ++m_count);
    }

    void addLong(std::uint16_t tag, std::uint32_t value) { add(tag, FieldType::Long, 1, value); }
    void addShort(std::uint16_t tag, std::uint16_t value) { add(tag, FieldType::Short, 1, value); }
    void addRatio(std::uint16_t tag, std::uint32_t place)
    {
        add(tag, FieldType::Rational, 1, place);
    }

    /// Writes the text to its place and its entry. A short one stands in the entry, too.
    void addText(std::uint16_t tag, std::uint32_t place, const std::string &text)
    {
        m_bytes.text(place, text);
        const auto count = static_cast<std::uint32_t>(text.size() + 1);
        if (count > dng::tifflayout::inlineBytes) {
            add(tag, FieldType::Ascii, count, place);
            return;
        }
        std::array<char, dng::tifflayout::inlineBytes> value{};
        std::copy(text.begin(), text.end(), value.begin());
        add(tag, FieldType::Ascii, count, std::bit_cast<std::uint32_t>(value));
    }

private:
    LittleEndianBytes &m_bytes;
    std::uint32_t m_place;
    std::uint16_t m_count = 0;
};

void putMillionths(LittleEndianBytes &bytes, std::uint32_t place, float value)
{
    constexpr std::int32_t million = 1000000;
    bytes.number(place, static_cast<std::int32_t>(million * value));
    bytes.number(place + 4, million);
}

void putNumbers(LittleEndianBytes &bytes, const Negative &negative, const Development &development)
{
    for (std::uint32_t i = 0; i < 4; ++i) { // a fourth, though a pixel has three samples
        bytes.number(place::bitsPerSample + i * 2,
                     static_cast<std::uint16_t>(development.sixteenBits ? 16 : 8));
    }
    for (const std::uint32_t resolution : {xResolution, yResolution}) {
        bytes.number(resolution, std::uint32_t{300});
        bytes.number(resolution + 4, std::uint32_t{1});
    }
    putMillionths(bytes, exposureTime, negative.exposureSeconds);
    putMillionths(bytes, fNumber, negative.fNumber);
    putMillionths(bytes, focalLength, negative.focalLength);
}

void putImageDirectory(LittleEndianBytes &bytes, const Negative &negative,
                       const Development &development, std::uint32_t profileBytes)
{
    const auto width = static_cast<std::uint32_t>(development.outputWidth());
    const auto height = static_cast<std::uint32_t>(development.outputHeight());
    const auto pixelBytes = static_cast<std::uint32_t>(development.outputRowBytes()) * height;
    DirectoryWriter directory(bytes, place::directory);
    directory.addLong(tag::newSubFileType, 0);
    directory.addLong(tag::imageWidth, width);
    directory.addLong(tag::imageLength, height);
    directory.add(tag::bitsPerSample, FieldType::Short, 3, place::bitsPerSample);
    directory.addShort(tag::compression, dng::compression::none);
    directory.addShort(tag::photometricInterpretation, rgb);
    directory.addText(tag::imageDescription, place::description, negative.texts.description);
    directory.addText(tag::make, place::make, negative.texts.make);
    directory.addText(tag::model, place::model, negative.texts.model);
    directory.addLong(tag::stripOffsets, place::end + profileBytes);
    directory.addShort(tag::samplesPerPixel, 3);
    directory.addLong(tag::rowsPerStrip, height);
    directory.addLong(tag::stripByteCounts, pixelBytes);
    directory.addRatio(tag::xResolution, xResolution);
    directory.addRatio(yResolutionTag, yResolution);
    directory.addShort(tag::planarConfiguration, 1);
    directory.addShort(resolutionUnitTag, inch);
    directory.addText(tag::software, place::software, "dcraw v9.28");
    directory.addText(tag::dateTime, place::date, timeText(negative.time));
    directory.addText(artistTag, place::artist, {});
    directory.addLong(tag::exifIfd, place::exifDirectory);
    if (profileBytes > 0)
        directory.add(iccProfileTag, FieldType::Undefined, profileBytes, place::end);
}

void putExifDirectory(LittleEndianBytes &bytes, const Negative &negative)
{
    DirectoryWriter directory(bytes, place::exifDirectory);
    directory.addRatio(tag::exposureTime, exposureTime);
    directory.addRatio(tag::fNumber, fNumber);
    directory.addShort(tag::isoSpeedRatings, negative.iso);
    directory.addRatio(tag::focalLength, focalLength);
}

} // namespace

std::vector<std::byte> tiffHead(const Negative &negative, const Development &development,
                                std::span<const std::byte> profile)
{
    std::vector<std::byte> head(place::end + profile.size());
    LittleEndianBytes bytes(head);
    bytes.put(0, dng::tifflayout::littleEndian);
    bytes.number(dng::tifflayout::littleEndian.size(), place::directory);
    putNumbers(bytes, negative, development);
    putImageDirectory(bytes, negative, development, static_cast<std::uint32_t>(profile.size()));
    putExifDirectory(bytes, negative);
    bytes.put(place::end, profile);
    return head;
}

} // namespace dcraw
