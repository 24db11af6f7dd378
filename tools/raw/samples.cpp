// SPDX-License-Identifier: MIT
#include "raw/samples.h"

#include <cassert>
#include <cstring>

namespace raw {
namespace {

constexpr std::uint16_t swapBytes(std::uint16_t word)
{
    return static_cast<std::uint16_t>((word << 8) | (word >> 8));
}

template <WordOrder order>
std::uint16_t loadWord(const std::byte *bytes)
{
    std::uint16_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
    return order == WordOrder::LittleEndian ? word : swapBytes(word);
}

template <WordOrder order>
void storeWord(std::byte *bytes, std::uint16_t word)
{
    const std::uint16_t stored = order == WordOrder::LittleEndian ? word : swapBytes(word);
    std::memcpy(bytes, &stored, sizeof stored);
}

template <int bits, WordOrder order>
void unpack(const std::byte *packed, std::uint16_t *samples, std::size_t count)
{
    constexpr std::uint32_t mask = (1U << bits) - 1;
    std::uint32_t buffer = 0;
    int filled = 0;
    for (std::size_t i = 0; i < count; ++i) {
        if (filled < bits) {
            buffer = (buffer << 16) | loadWord<order>(packed);
            packed += 2;
            filled += 16;
        }
        filled -= bits;
        samples[i] = static_cast<std::uint16_t>((buffer >> filled) & mask);
    }
}

template <int bits, WordOrder order>
void pack(const std::uint16_t *samples, std::byte *packed, std::size_t count)
{
    std::uint32_t buffer = 0;
    int filled = 0;
    for (std::size_t i = 0; i < count; ++i) {
        buffer = (buffer << bits) | samples[i];
        filled += bits;
        if (filled >= 16) {
            filled -= 16;
            storeWord<order>(packed, static_cast<std::uint16_t>(buffer >> filled));
            packed += 2;
        }
    }
    if (filled > 0)
        storeWord<order>(packed, static_cast<std::uint16_t>(buffer << (16 - filled)));
}

// Eight samples fill whole words at every depth, so that the compiler unrolls a group into shifts
// of constants; what is left at the end goes through the same loop with its own count.
constexpr std::size_t groupSize = 8;

template <int bits, WordOrder order>
void unpackAll(std::span<const std::byte> packed, std::span<std::uint16_t> samples)
{
    const std::byte *source = packed.data();
    std::uint16_t *target = samples.data();
    for (std::size_t groups = samples.size() / groupSize; groups > 0; --groups) {
        unpack<bits, order>(source, target, groupSize);
        source += bits;
        target += groupSize;
    }
    unpack<bits, order>(source, target, samples.size() % groupSize);
}

template <int bits, WordOrder order>
void packAll(std::span<const std::uint16_t> samples, std::span<std::byte> packed)
{
    const std::uint16_t *source = samples.data();
    std::byte *target = packed.data();
    for (std::size_t groups = samples.size() / groupSize; groups > 0; --groups) {
        pack<bits, order>(source, target, groupSize);
        source += groupSize;
        target += bits;
    }
    pack<bits, order>(source, target, samples.size() % groupSize);
}

template <WordOrder order>
void unpackDepth(std::span<const std::byte> packed, int bitsPerSample,
                 std::span<std::uint16_t> samples)
{
    switch (bitsPerSample) {
    case 10:
        return unpackAll<10, order>(packed, samples);
    case 12:
        return unpackAll<12, order>(packed, samples);
    case 14:
        return unpackAll<14, order>(packed, samples);
    default:
        return unpackAll<16, order>(packed, samples);
    }
}

template <WordOrder order>
void packDepth(std::span<const std::uint16_t> samples, int bitsPerSample,
               std::span<std::byte> packed)
{
    switch (bitsPerSample) {
    case 10:
        return packAll<10, order>(samples, packed);
    case 12:
        return packAll<12, order>(samples, packed);
    case 14:
        return packAll<14, order>(samples, packed);
    default:
        return packAll<16, order>(samples, packed);
    }
}

} // namespace

void unpackSamples(std::span<const std::byte> packed, int bitsPerSample, WordOrder order,
                   std::span<std::uint16_t> samples)
{
    assert(isSupportedDepth(bitsPerSample));
    assert(packed.size() >= packedSize(samples.size(), bitsPerSample));
    if (order == WordOrder::LittleEndian)
        unpackDepth<WordOrder::LittleEndian>(packed, bitsPerSample, samples);
    else
        unpackDepth<WordOrder::BigEndian>(packed, bitsPerSample, samples);
}

void packSamples(std::span<const std::uint16_t> samples, int bitsPerSample, WordOrder order,
                 std::span<std::byte> packed)
{
    assert(isSupportedDepth(bitsPerSample));
    assert(packed.size() >= packedSize(samples.size(), bitsPerSample));
    if (order == WordOrder::LittleEndian)
        packDepth<WordOrder::LittleEndian>(samples, bitsPerSample, packed);
    else
        packDepth<WordOrder::BigEndian>(samples, bitsPerSample, packed);
}

void swapWordBytes(std::span<std::byte> words)
{
    for (std::size_t i = 0; i + 1 < words.size(); i += 2) {
        std::uint16_t word = 0;
        std::memcpy(&word, &words[i], sizeof word);
        word = swapBytes(word);
        std::memcpy(&words[i], &word, sizeof word);
    }
}

} // namespace raw
