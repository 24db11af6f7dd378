// SPDX-License-Identifier: MIT
#pragma once

#include "dcraw/notcovered.h"
#include "dng/ifdreader.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace dcraw {

/// How the values of one C++ type are stored in a field.
template <typename Value>
inline constexpr dng::FieldType fieldType = dng::FieldType::Undefined;
template <>
inline constexpr dng::FieldType fieldType<std::uint8_t> = dng::FieldType::Byte;
template <>
inline constexpr dng::FieldType fieldType<std::uint16_t> = dng::FieldType::Short;
template <>
inline constexpr dng::FieldType fieldType<std::uint32_t> = dng::FieldType::Long;
template <>
inline constexpr dng::FieldType fieldType<dng::Rational> = dng::FieldType::Rational;
template <>
inline constexpr dng::FieldType fieldType<dng::SRational> = dng::FieldType::SRational;

/// A directory whose fields are read in the one type and count that each is written with: read in
/// another, the real dcraw finds other numbers than they say.
class Fields
{
public:
    /// Throws NotCovered unless the tags rise and each is one of `known`, which rises too.
    Fields(std::vector<dng::Entry> entries, std::span<const std::uint16_t> known)
        : m_entries(std::move(entries))
    {
        const auto tagsRise = [](const dng::Entry &one, const dng::Entry &next) {
            return one.tag >= next.tag;
        };
        require(std::adjacent_find(m_entries.begin(), m_entries.end(), tagsRise) == m_entries.end(),
                "has unsorted fields");
        require(std::all_of(m_entries.begin(), m_entries.end(),
                            [known](const dng::Entry &entry) {
                                return std::binary_search(known.begin(), known.end(), entry.tag);
                            }),
                "has unknown fields");
    }

    /// The field's `count` values, or nothing when there is no such field. Throws NotCovered when
    /// it is of another kind.
    template <typename Value, std::size_t count>
    std::optional<std::array<Value, count>> values(std::uint16_t tag) const
    {
        const dng::Field *field = find(tag);
        if (field == nullptr)
            return std::nullopt;
        std::array<Value, count> values{};
        require(field->type == fieldType<Value> && field->data.size() == sizeof values,
                "has a field of an unusual type");
        std::memcpy(values.data(), field->data.data(), sizeof values);
        return values;
    }

    /// The same for a field that must be there.
    template <typename Value, std::size_t count>
    std::array<Value, count> needed(std::uint16_t tag) const
    {
        const auto found = values<Value, count>(tag);
        require(found.has_value(), "lacks a field");
        return *found;
    }

    template <typename Value>
    Value needed(std::uint16_t tag) const
    {
        return needed<Value, 1>(tag)[0];
    }

    template <typename Value>
    std::optional<Value> value(std::uint16_t tag) const
    {
        const auto found = values<Value, 1>(tag);
        return found ? std::optional(found->front()) : std::nullopt;
    }

    /// The bytes of a text with whatever stands behind its end, or nothing when there is none.
    std::optional<std::string> text(std::uint16_t tag) const
    {
        const dng::Field *field = find(tag);
        if (field == nullptr)
            return std::nullopt;
        require(field->type == dng::FieldType::Ascii, "has a field of an unusual type");
        std::string text(field->data.size(), '\0');
        std::transform(field->data.begin(), field->data.end(), text.begin(),
                       [](std::byte value) { return static_cast<char>(value); });
        return text;
    }

private:
    const dng::Field *find(std::uint16_t tag) const
    {
        const auto found =
            std::find_if(m_entries.begin(), m_entries.end(),
                         [tag](const dng::Entry &entry) { return entry.tag == tag; });
        return found == m_entries.end() ? nullptr : &found->field;
    }

    std::vector<dng::Entry> m_entries;
};

} // namespace dcraw
