// SPDX-License-Identifier: MIT
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

namespace mlv {

/// Reads the entropy-coded data of a JPEG scan bit by bit. A stuffed zero byte behind 0xff is left
/// out; at a marker and at the end of the data zeros follow, as many as are asked for.
class BitReader
{
public:
    explicit BitReader(std::span<const std::byte> data)
        : m_data(data)
    {
    }

    /// Makes sure that at least 32 bits can be taken.
    void refill()
    {
        if (m_count >= 32) {
            return;
        }
        if (m_data.size() - m_position >= sizeof(std::uint64_t)) {
            std::uint64_t word = 0;
            std::memcpy(&word, m_data.data() + m_position, sizeof word);
            if (!hasByteFF(word)) {
                refillWith(__builtin_bswap64(word));
                return;
            }
        }
        refillBytewise();
    }

    /// The next `count` bits, 1 to 32, as a number; they stay.
    [[nodiscard]] std::uint32_t peek(int count) const
    {
        return static_cast<std::uint32_t>(m_bits >> (64 - count));
    }

    /// Takes `count` bits, 0 to 32. At most 32 between two calls of refill().
    void skip(int count)
    {
        m_bits <<= count;
        m_count -= count;
    }

    /// Whether more was taken than there was.
    [[nodiscard]] bool isOverrun() const { return m_padding > m_count; }

    /// Where the reader stands in the data, behind everything that refill() has read.
    [[nodiscard]] std::size_t position() const { return m_position; }

private:
    static bool hasByteFF(std::uint64_t word)
    {
        constexpr std::uint64_t ones = 0x0101010101010101;
        constexpr std::uint64_t highBits = 0x8080808080808080;
        const std::uint64_t inverted = ~word;
        return ((inverted - ones) & ~inverted & highBits) != 0;
    }

    void refillWith(std::uint64_t bigEndianWord)
    {
        const int bytes = (64 - m_count) / 8;
        // What does not fill a whole byte of the buffer must not stay behind in it.
        m_bits |= bigEndianWord >> m_count;
        m_count += bytes * 8;
        m_bits &= m_count == 64 ? ~std::uint64_t{0} : ~(~std::uint64_t{0} >> m_count);
        m_position += static_cast<std::size_t>(bytes);
    }

    void refillBytewise()
    {
        while (m_count <= 56) {
            std::uint64_t byte = 0;
            if (m_position < m_data.size() && !isMarkerAt(m_position)) {
                byte = std::to_integer<std::uint64_t>(m_data[m_position]);
                m_position += byte == 0xff ? 2 : 1;
            } else {
                m_padding += 8;
            }
            m_bits |= byte << (56 - m_count);
            m_count += 8;
        }
    }

    [[nodiscard]] bool isMarkerAt(std::size_t position) const
    {
        return m_data[position] == std::byte{0xff} &&
               (position + 1 >= m_data.size() || m_data[position + 1] != std::byte{0});
    }

    std::span<const std::byte> m_data;
    std::size_t m_position = 0;
    std::uint64_t m_bits = 0;   // the next bit is the highest
    int m_count = 0;            // valid bits
    std::int64_t m_padding = 0; // zeros that were put behind the data, bits
};

} // namespace mlv
