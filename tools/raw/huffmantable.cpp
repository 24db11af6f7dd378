// SPDX-License-Identifier: MIT
#include "raw/huffmantable.h"

#include "raw/error.h"

#include <algorithm>

namespace raw {
namespace {

constexpr int maxDifferenceSize = 16;

/// The difference that `size` bits behind a code stand for. Size 16 has no bits and stands for
/// 32768.
std::uint16_t difference(std::uint32_t bits, int size)
{
    if (size == 0)
        return 0;
    if (size == maxDifferenceSize)
        return 32768;
    const bool negative = bits < (1U << (size - 1));
    return static_cast<std::uint16_t>(negative ? bits - (1U << size) + 1 : bits);
}

int differenceBits(int size)
{
    return size == maxDifferenceSize ? 0 : size;
}

} // namespace

HuffmanTable::HuffmanTable(std::span<const std::byte, 16> lengthCounts,
                           std::span<const std::byte> symbols)
    : m_entries(std::size_t{1} << lookupBits)
{
    std::uint32_t code = 0;
    std::size_t symbol = 0;
    for (int length = 1; length <= maxCodeLength; ++length) {
        const auto count =
            std::to_integer<std::uint32_t>(lengthCounts[static_cast<std::size_t>(length - 1)]);
        m_codes[static_cast<std::size_t>(length)] = {code, count, symbol};
        code += count;
        symbol += count;
        if (code > (1U << length) || symbol > symbols.size() || symbol > m_symbols.size())
            throw Error("has an impossible Huffman table");
        code <<= 1;
    }
    std::transform(symbols.begin(), symbols.begin() + static_cast<std::ptrdiff_t>(symbol),
                   m_symbols.begin(),
                   [](std::byte size) { return std::to_integer<std::uint8_t>(size); });
    if (std::any_of(m_symbols.begin(), m_symbols.end(),
                    [](std::uint8_t size) { return size > maxDifferenceSize; }))
        throw Error("has a Huffman table of impossible differences");
    fillLookup();
}

void HuffmanTable::fillLookup()
{
    for (int length = 1; length <= lookupBits; ++length) {
        const auto &codes = m_codes[static_cast<std::size_t>(length)];
        for (std::uint32_t i = 0; i < codes.count; ++i) {
            const int size = m_symbols[codes.firstSymbol + i];
            const int extra = differenceBits(size);
            const int spare = lookupBits - length - extra;
            if (spare < 0)
                continue;
            const std::uint32_t first = (codes.firstCode + i) << (lookupBits - length);
            for (std::uint32_t bits = 0; bits < (1U << extra); ++bits) {
                const Entry entry{difference(bits, size),
                                  static_cast<std::uint16_t>(length + extra)};
                std::fill_n(m_entries.begin() + (first | (bits << spare)), 1U << spare, entry);
            }
        }
    }
}

std::uint16_t HuffmanTable::decodeSlowly(BitReader &reader, bool &invalid) const
{
    reader.refill();
    const std::uint32_t next = reader.peek(maxCodeLength);
    for (int length = 1; length <= maxCodeLength; ++length) {
        const auto &codes = m_codes[static_cast<std::size_t>(length)];
        const std::uint32_t code = next >> (maxCodeLength - length);
        if (code >= codes.firstCode && code - codes.firstCode < codes.count) {
            const int size = m_symbols[codes.firstSymbol + (code - codes.firstCode)];
            const int extra = differenceBits(size);
            reader.skip(length);
            const std::uint32_t bits = extra == 0 ? 0 : reader.peek(extra);
            reader.skip(extra);
            reader.refill();
            return difference(bits, size);
        }
    }
    invalid = true;
    return 0;
}

} // namespace raw
