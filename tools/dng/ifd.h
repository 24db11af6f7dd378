// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <map>
#include <span>
#include <string_view>
#include <vector>

namespace dng {

/// The field types of TIFF 6.0, with its numbers.
enum class FieldType : std::uint16_t {
    Byte = 1,
    Ascii = 2,
    Short = 3,
    Long = 4,
    Rational = 5,
    SByte = 6,
    Undefined = 7,
    SShort = 8,
    SLong = 9,
    SRational = 10,
    Float = 11,
    Double = 12,
};

/// Bytes that one value of the type takes; 0 for a type that is not in the list above.
std::size_t sizeOf(FieldType type);

struct Field
{
    FieldType type;
    std::uint32_t count;         ///< of values
    std::vector<std::byte> data; ///< the values, little-endian
};

struct Rational
{
    std::uint32_t numerator;
    std::uint32_t denominator;
};

struct SRational
{
    std::int32_t numerator;
    std::int32_t denominator;
};

/// An image file directory: fields by tag. Setting a tag again replaces its field.
class Ifd
{
public:
    /// A field as it was read from a file.
    void set(std::uint16_t tag, Field field);

    void setBytes(std::uint16_t tag, std::initializer_list<std::uint8_t> values);
    void setBytes(std::uint16_t tag, std::span<const std::uint8_t> values);
    void setUndefined(std::uint16_t tag, std::string_view bytes);
    /// The text ends at its first NUL; an empty one leaves the tag out, because readers refuse
    /// files with empty names.
    void setText(std::uint16_t tag, std::string_view text);
    void setShorts(std::uint16_t tag, std::initializer_list<std::uint16_t> values);
    void setLongs(std::uint16_t tag, std::initializer_list<std::uint32_t> values);
    void setRationals(std::uint16_t tag, std::span<const Rational> values);
    void setRational(std::uint16_t tag, Rational value);
    void setSRationals(std::uint16_t tag, std::span<const SRational> values);

    const std::map<std::uint16_t, Field> &fields() const { return m_fields; }

private:
    template <typename Value>
    void setValues(std::uint16_t tag, FieldType type, std::span<const Value> values);

    std::map<std::uint16_t, Field> m_fields;
};

} // namespace dng
