// SPDX-License-Identifier: MIT
#pragma once

#include "raw/bitreader.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace raw {

/// A Huffman table of a lossless JPEG stream: its symbols are the sizes of differences.
class HuffmanTable
{
public:
    /// `lengthCounts` says how many codes have 1, 2, … 16 bits, `symbols` what the codes stand for,
    /// in the order of the codes. Throws Error when they are no prefix code of difference sizes.
    HuffmanTable(std::span<const std::byte, 16> lengthCounts, std::span<const std::byte> symbols);

    /// How many differences are decoded after one refill() of the reader.
    static constexpr std::size_t differencesPerRefill = 4;

    /// The next difference, modulo 2^16. A bit pattern that no code begins with sets `invalid`.
    std::uint16_t decode(BitReader &reader, bool &invalid) const
    {
        const Entry entry = m_entries[reader.peek(lookupBits)];
        if (entry.length != 0) [[likely]] {
            reader.skip(entry.length);
            return entry.difference;
        }
        return decodeSlowly(reader, invalid);
    }

    /// Whether both have the same codes.
    bool operator==(const HuffmanTable &other) const
    {
        return m_codes == other.m_codes && m_symbols == other.m_symbols;
    }

private:
    // 13 bits hold most codes of camera footage together with their differences, in 32 KiB.
    static constexpr int lookupBits = 13;
    static_assert(lookupBits * differencesPerRefill <= BitReader::refilledBits);
    static constexpr int maxCodeLength = 16;

    struct Entry
    {
        std::uint16_t difference;
        std::uint16_t length; ///< of the code and its difference, bits; 0: not in the table
    };

    std::uint16_t decodeSlowly(BitReader &reader, bool &invalid) const;
    void fillLookup();

    struct CodesOfLength
    {
        std::uint32_t firstCode;
        std::uint32_t count;
        std::size_t firstSymbol;

        bool operator==(const CodesOfLength &) const = default;
    };

    std::array<CodesOfLength, maxCodeLength + 1> m_codes{};
    std::array<std::uint8_t, 256> m_symbols{};
    std::vector<Entry> m_entries;
};

} // namespace raw
