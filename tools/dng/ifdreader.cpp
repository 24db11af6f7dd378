// SPDX-License-Identifier: MIT
#include "dng/ifdreader.h"

#include "dng/tags.h"
#include "dng/tifflayout.h"
#include "raw/error.h"

#include <algorithm>
#include <cstring>

namespace dng {
namespace {

using tifflayout::entryBytes;
using tifflayout::headerBytes;
using tifflayout::inlineBytes;
using tifflayout::littleEndian;

template <typename Value>
Value numberAt(std::span<const std::byte> bytes, std::size_t offset)
{
    Value value{};
    std::memcpy(&value, bytes.subspan(offset, sizeof value).data(), sizeof value);
    return value;
}

} // namespace

DirectoryReader::DirectoryReader(const raw::File &file)
    : m_file(file)
    , m_bytesLeft(file.size())
{
}

std::uint32_t DirectoryReader::firstDirectory()
{
    const auto header = bytes(0, headerBytes);
    if (!std::equal(littleEndian.begin(), littleEndian.end(), header.begin()))
        throw raw::Error("is not a little-endian TIFF file");
    return numberAt<std::uint32_t>(header, 4);
}

std::vector<Entry> DirectoryReader::entries(std::uint32_t directory)
{
    const std::size_t count = numberAt<std::uint16_t>(bytes(directory, 2), 0);
    const auto table = bytes(std::uint64_t{directory} + 2, count * entryBytes);
    std::vector<Entry> entries;
    for (std::size_t i = 0; i < count; ++i) {
        const auto entry = std::span(table).subspan(i * entryBytes, entryBytes);
        const auto type = static_cast<FieldType>(numberAt<std::uint16_t>(entry, 2));
        Field field{type, numberAt<std::uint32_t>(entry, 4), {}};
        const std::uint64_t size = std::uint64_t{field.count} * sizeOf(type);
        if (size <= inlineBytes) {
            const auto value = entry.subspan(8, static_cast<std::size_t>(size));
            field.data.assign(value.begin(), value.end());
        } else {
            field.data = bytes(numberAt<std::uint32_t>(entry, 8), size);
        }
        entries.push_back({numberAt<std::uint16_t>(entry, 0), std::move(field)});
    }
    return entries;
}

std::uint32_t DirectoryReader::successor(std::uint32_t directory)
{
    const std::uint64_t count = numberAt<std::uint16_t>(bytes(directory, 2), 0);
    return numberAt<std::uint32_t>(bytes(directory + 2 + count * entryBytes, 4), 0);
}

// The parts of a sound file don't overlap, so that together they are no larger than the file.
std::vector<std::byte> DirectoryReader::bytes(std::uint64_t offset, std::uint64_t size)
{
    if (offset > m_file.size() || size > m_file.size() - offset || size > m_bytesLeft)
        throw raw::Error("is a damaged TIFF file");
    m_bytesLeft -= size;
    std::vector<std::byte> result(static_cast<std::size_t>(size));
    m_file.read(offset, result);
    return result;
}

namespace {

Ifd ifdOf(std::vector<Entry> entries)
{
    Ifd ifd;
    for (Entry &entry : entries)
        if (!entry.field.data.empty())
            ifd.set(entry.tag, std::move(entry.field));
    return ifd;
}

} // namespace

Directories readDirectories(const raw::File &file)
{
    DirectoryReader reader(file);
    const Ifd all = ifdOf(reader.entries(reader.firstDirectory()));
    Directories directories;
    for (const auto &[tag, field] : all.fields())
        if (tag != tag::exifIfd && tag != tag::subIfds && tag != tag::gpsIfd)
            directories.image.set(tag, field);
    const auto exifOffset = wholeNumbers(all, tag::exifIfd);
    if (!exifOffset.empty())
        directories.exif = ifdOf(reader.entries(exifOffset.front()));
    return directories;
}

std::vector<std::uint32_t> wholeNumbers(const Ifd &ifd, std::uint16_t tag)
{
    std::vector<std::uint32_t> values;
    const auto found = ifd.fields().find(tag);
    if (found == ifd.fields().end())
        return values;
    const Field &field = found->second;
    const std::size_t size = sizeOf(field.type);
    for (std::size_t i = 0; i < field.count; ++i) {
        if (field.type == FieldType::Byte) {
            values.push_back(numberAt<std::uint8_t>(field.data, i * size));
        } else if (field.type == FieldType::Short) {
            values.push_back(numberAt<std::uint16_t>(field.data, i * size));
        } else if (field.type == FieldType::Long) {
            values.push_back(numberAt<std::uint32_t>(field.data, i * size));
        } else if (field.type == FieldType::Rational) {
            const auto ratio = numberAt<Rational>(field.data, i * size);
            if (ratio.denominator == 0 || ratio.numerator % ratio.denominator != 0)
                return {};
            values.push_back(ratio.numerator / ratio.denominator);
        }
    }
    return values;
}

} // namespace dng
