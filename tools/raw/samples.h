// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

/// Packed raw samples: one stream of bits, most significant bit first, without gaps between rows.
///
/// The stream is stored in 16-bit words. A recording stores each word little-endian; a DNG stores
/// the same words big-endian, except samples of 16 bits, which keep the byte order of its file.
namespace raw {

constexpr bool isSupportedDepth(int bitsPerSample)
{
    return bitsPerSample == 10 || bitsPerSample == 12 || bitsPerSample == 14 || bitsPerSample == 16;
}

/// The bytes that `count` samples occupy: whole 16-bit words.
constexpr std::size_t packedSize(std::size_t count, int bitsPerSample)
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

/// Single samples of a packed stream as a DNG stores it.
class PackedSamples
{
public:
    /// `stream` outlives this.
    PackedSamples(std::span<std::byte> stream, int bitsPerSample)
        : m_stream(stream)
        , m_bits(static_cast<unsigned>(bitsPerSample))
    {
    }

    /// `index` is below the number of samples in the stream.
    std::uint16_t operator[](std::size_t index) const
    {
        const Place place = placeOf(index);
        return static_cast<std::uint16_t>((load(place) >> place.shift) & mask());
    }

    /// `sample` is below 2^bitsPerSample.
    void set(std::size_t index, std::uint16_t sample)
    {
        const Place place = placeOf(index);
        const auto others = load(place) & ~(mask() << place.shift);
        store(place, others | (static_cast<std::uint32_t>(sample) << place.shift));
    }

private:
    /// The bytes that a sample lies in, two or three, and how far from their end it stops.
    struct Place
    {
        std::byte *bytes;
        bool three;
        unsigned shift;
    };

    Place placeOf(std::size_t index) const
    {
        const std::size_t bit = index * m_bits;
        const auto end = static_cast<unsigned>(bit % 8) + m_bits;
        return {m_stream.data() + bit / 8, end > 16, (end > 16 ? 24 : 16) - end};
    }

    std::uint32_t load(const Place &place) const
    {
        const auto byte = [&](int number) {
            return std::to_integer<std::uint32_t>(place.bytes[number]);
        };
        if (isLittleEndian())
            return byte(1) << 8U | byte(0);
        const auto two = byte(0) << 8U | byte(1);
        return place.three ? two << 8U | byte(2) : two;
    }

    void store(const Place &place, std::uint32_t bits) const
    {
        const auto put = [&](int number, std::uint32_t byte) {
            place.bytes[number] = static_cast<std::byte>(byte & 0xffU);
        };
        if (isLittleEndian()) {
            put(0, bits);
            put(1, bits >> 8U);
            return;
        }
        if (place.three) {
            put(2, bits);
            bits >>= 8U;
        }
        put(1, bits);
        put(0, bits >> 8U);
    }

    std::uint32_t mask() const { return (1U << m_bits) - 1; }
    bool isLittleEndian() const { return m_bits == 16; }

    std::span<std::byte> m_stream;
    unsigned m_bits;
};

/// Exchanges the two bytes of every 16-bit word in place; a last single byte stays.
void swapWordBytes(std::span<std::byte> words);

} // namespace raw
