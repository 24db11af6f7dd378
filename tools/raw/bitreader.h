// SPDX-License-Identifier: MIT
#pragma once

#include "raw/scandata.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

namespace raw {

/// Reads a scan bit by bit, the most significant bit of a byte first; behind its end follow zeros,
/// as many as are asked for. Copies go on with the same scan: only one of them may read.
class BitReader
{
public:
    /// The scan stays the caller's.
    explicit BitReader(ScanData &scan)
        : m_scan(&scan)
    {
    }

    static constexpr int refilledBits = 56;

    /// Makes sure that at least refilledBits can be taken.
    void refill()
    {
        static_assert(std::endian::native == std::endian::little);
        if (m_data.size() < sizeof(std::uint64_t)) [[unlikely]]
            return refillBytewise();
        std::uint64_t word = 0;
        std::memcpy(&word, m_data.data(), sizeof word);
        // Bits that don't fill a whole byte come again with the next call, in the same places.
        m_bits |= __builtin_bswap64(word) >> m_count;
        m_data = m_data.subspan(static_cast<std::size_t>((63 - m_count) >> 3));
        m_count |= refilledBits;
    }

    /// The next `count` bits, 1 to 32, as a number; they stay.
    std::uint32_t peek(int count) const
    {
        return static_cast<std::uint32_t>(m_bits >> (64 - count));
    }

    /// Takes `count` bits, at most those that refill() has made sure of.
    void skip(int count)
    {
        m_bits <<= count;
        m_count -= count;
    }

    /// Whether more was taken than there was.
    bool isOverrun() const { return m_padding > m_count; }

private:
    void refillBytewise()
    {
        for (; m_count < refilledBits; m_count += 8) {
            if (m_data.empty())
                m_data = m_scan->next();
            if (m_data.empty()) {
                m_padding += 8;
                continue;
            }
            m_bits |= std::to_integer<std::uint64_t>(m_data.front()) << (56 - m_count);
            m_data = m_data.subspan(1);
        }
    }

    ScanData *m_scan;
    std::span<const std::byte> m_data; // that m_bits has none or only a part of a byte of
    std::uint64_t m_bits = 0;          // the next bit is the highest
    int m_count = 0;                   // valid bits
    std::int64_t m_padding = 0;        // zeros that were put behind the data, bits
};

} // namespace raw
