// SPDX-License-Identifier: MIT
#include "dng/filehead.h"

#include "dng/tags.h"
#include "dng/tifflayout.h"

#include <algorithm>
#include <span>

namespace dng {
namespace {

using tifflayout::entryBytes;
using tifflayout::headerBytes;
using tifflayout::inlineBytes;

constexpr std::size_t roundUp(std::size_t size, std::size_t step)
{
    return (size + step - 1) / step * step;
}

/// Values of more than four bytes stand behind their directory, each on an even place.
std::size_t encodedSize(const Ifd &ifd)
{
    std::size_t size = 2 + ifd.fields().size() * entryBytes + 4;
    for (const auto &[tag, field] : ifd.fields())
        size += field.data.size() > inlineBytes ? roundUp(field.data.size(), 2) : 0;
    return size;
}

class Writer
{
public:
    template <typename Value>
    void number(Value value)
    {
        bytes(std::as_bytes(std::span<const Value, 1>(&value, 1)));
    }

    void bytes(std::span<const std::byte> data)
    {
        m_bytes.insert(m_bytes.end(), data.begin(), data.end());
    }

    void padTo(std::size_t size) { m_bytes.resize(std::max(size, m_bytes.size())); }

    void directory(const Ifd &ifd)
    {
        std::size_t valueOffset = m_bytes.size() + 2 + ifd.fields().size() * entryBytes + 4;
        number(static_cast<std::uint16_t>(ifd.fields().size()));
        for (const auto &[tag, field] : ifd.fields()) {
            number(tag);
            number(field.type);
            number(field.count);
            if (field.data.size() > inlineBytes) {
                number(static_cast<std::uint32_t>(valueOffset));
                valueOffset += roundUp(field.data.size(), 2);
            } else {
                bytes(field.data);
                padTo(m_bytes.size() + inlineBytes - field.data.size());
            }
        }
        number(std::uint32_t{0}); // no further directory
        for (const auto &[tag, field] : ifd.fields()) {
            if (field.data.size() > inlineBytes) {
                bytes(field.data);
                padTo(roundUp(m_bytes.size(), 2));
            }
        }
    }

    std::vector<std::byte> take() { return std::move(m_bytes); }

private:
    std::vector<std::byte> m_bytes;
};

} // namespace

std::vector<std::byte> encodeFileHead(Ifd image, const Ifd &exif, std::uint32_t stripBytes)
{
    const bool hasExif = !exif.fields().empty();
    image.setLongs(tag::stripByteCounts, {stripBytes});
    image.setLongs(tag::stripOffsets, {0});
    if (hasExif)
        image.setLongs(tag::exifIfd, {0});
    const std::size_t exifOffset = headerBytes + encodedSize(image);
    const std::size_t end = exifOffset + (hasExif ? encodedSize(exif) : 0);
    const std::size_t stripOffset = roundUp(end, 16);
    image.setLongs(tag::stripOffsets, {static_cast<std::uint32_t>(stripOffset)});
    if (hasExif)
        image.setLongs(tag::exifIfd, {static_cast<std::uint32_t>(exifOffset)});

    Writer writer;
    writer.bytes(tifflayout::littleEndian);
    writer.number(static_cast<std::uint32_t>(headerBytes));
    writer.directory(image);
    if (hasExif)
        writer.directory(exif);
    writer.padTo(stripOffset);
    return writer.take();
}

} // namespace dng
