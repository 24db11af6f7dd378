// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <span>
#include <string_view>

namespace dcraw {

/// Bytes that are filled in at places, zero elsewhere. What doesn't fit is a mistake.
template <std::endian order>
class BytesAt
{
public:
    explicit BytesAt(std::span<std::byte> bytes)
        : m_bytes(bytes)
    {
    }

    template <typename Number>
    void number(std::size_t place, Number value)
    {
        auto bytes = std::bit_cast<std::array<std::byte, sizeof value>>(value);
        if constexpr (order != std::endian::native)
            std::reverse(bytes.begin(), bytes.end());
        put(place, bytes);
    }

    void text(std::size_t place, std::string_view text)
    {
        put(place, std::as_bytes(std::span(text)));
    }

    // Not inlined: g++ 12 warns there of null pointers that aren't.
    [[gnu::noinline]] void put(std::size_t place, std::span<const std::byte> bytes)
    {
        const auto room = m_bytes.subspan(place, bytes.size());
        std::copy(bytes.begin(), bytes.end(), room.begin());
    }

private:
    std::span<std::byte> m_bytes;
};

} // namespace dcraw
