// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

/// Packed raw samples: one stream of bits, most significant bit first, without gaps between rows.
///
/// The stream is stored in 16-bit words. A recording stores each word little-endian; a DNG stores
/// the same words big-endian, except samples of 16 bits, which keep the byte order of its file.
namespace mlv {

[[nodiscard]] constexpr bool isSupportedDepth(int bitsPerSample)
{
    return bitsPerSample == 10 || bitsPerSample == 12 || bitsPerSample == 14 || bitsPerSample == 16;
}

/// The bytes that `count` samples occupy: whole 16-bit words.
[[nodiscard]] constexpr std::size_t packedSize(std::size_t count, int bitsPerSample)
{
    return (count * static_cast<std::size_t>(bitsPerSample) + 15) / 16 * 2;
}

enum class WordOrder {
    LittleEndian, ///< as in a recording
    BigEndian,    ///< as in a DNG
};

/// Reads samples.size() samples of 10, 12, 14 or 16 bits out of `packed`, which holds at least
/// packedSize() bytes.
void unpackSamples(std::span<const std::byte> packed, int bitsPerSample, WordOrder order,
                   std::span<std::uint16_t> samples);

/// Writes the samples, each below 2^bitsPerSample, into `packed`, which holds at least packedSize()
/// bytes. The unused bits of the last word are zero.
void packSamples(std::span<const std::uint16_t> samples, int bitsPerSample, WordOrder order,
                 std::span<std::byte> packed);

/// Exchanges the two bytes of every 16-bit word in place; a last single byte stays.
void swapWordBytes(std::span<std::byte> words);

} // namespace mlv
