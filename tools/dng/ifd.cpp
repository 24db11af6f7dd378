// SPDX-License-Identifier: MIT
#include "dng/ifd.h"

#include <bit>
#include <utility>

namespace dng {

static_assert(std::endian::native == std::endian::little, "values are copied as they are");

std::size_t sizeOf(FieldType type)
{
    switch (type) {
    case FieldType::Byte:
    case FieldType::Ascii:
    case FieldType::SByte:
    case FieldType::Undefined:
        return 1;
    case FieldType::Short:
    case FieldType::SShort:
        return 2;
    case FieldType::Long:
    case FieldType::SLong:
    case FieldType::Float:
        return 4;
    case FieldType::Rational:
    case FieldType::SRational:
    case FieldType::Double:
        return 8;
    }
    return 0;
}

void Ifd::set(std::uint16_t tag, Field field)
{
    m_fields.insert_or_assign(tag, std::move(field));
}

template <typename Value>
void Ifd::setValues(std::uint16_t tag, FieldType type, std::span<const Value> values)
{
    const auto bytes = std::as_bytes(values);
    set(tag, {type, static_cast<std::uint32_t>(bytes.size() / sizeOf(type)),
              std::vector<std::byte>(bytes.begin(), bytes.end())});
}

void Ifd::setBytes(std::uint16_t tag, std::initializer_list<std::uint8_t> values)
{
    setValues<std::uint8_t>(tag, FieldType::Byte, values);
}

void Ifd::setBytes(std::uint16_t tag, std::span<const std::uint8_t> values)
{
    setValues(tag, FieldType::Byte, values);
}

void Ifd::setUndefined(std::uint16_t tag, std::string_view bytes)
{
    setValues<char>(tag, FieldType::Undefined, bytes);
}

void Ifd::setText(std::uint16_t tag, std::string_view text)
{
    text = text.substr(0, text.find('\0'));
    if (text.empty()) {
        m_fields.erase(tag);
        return;
    }
    setValues<char>(tag, FieldType::Ascii, text);
    auto &field = m_fields.at(tag);
    field.data.push_back(std::byte{0});
    ++field.count;
}

void Ifd::setShorts(std::uint16_t tag, std::initializer_list<std::uint16_t> values)
{
    setValues<std::uint16_t>(tag, FieldType::Short, values);
}

void Ifd::setLongs(std::uint16_t tag, std::initializer_list<std::uint32_t> values)
{
    setValues<std::uint32_t>(tag, FieldType::Long, values);
}

void Ifd::setRationals(std::uint16_t tag, std::span<const Rational> values)
{
    setValues(tag, FieldType::Rational, values);
}

void Ifd::setRational(std::uint16_t tag, Rational value)
{
    setRationals(tag, {&value, 1});
}

void Ifd::setSRationals(std::uint16_t tag, std::span<const SRational> values)
{
    setValues(tag, FieldType::SRational, values);
}

} // namespace dng
