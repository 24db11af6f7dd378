// SPDX-License-Identifier: MIT
#include "dcraw/pixelpacker.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

namespace dcraw {
namespace {

using Planes = std::array<const std::uint16_t *, 3>;

/// Writes the lowest byte first.
template <typename Sample>
std::byte *put(Sample sample, std::byte *result)
{
    if constexpr (std::endian::native == std::endian::little)
        std::memcpy(result, &sample, sizeof(Sample));
    else
        for (std::size_t i = 0; i < sizeof(Sample); ++i)
            result[i] = static_cast<std::byte>((sample >> (8 * i)) & 0xff);
    return result + sizeof(Sample);
}

/// The samples that fill the `word`-th eight bytes of a run of pixels.
template <typename Sample, std::size_t word>
std::uint64_t wordOf(const Sample *tone, const Planes &planes, std::size_t x)
{
    constexpr std::size_t count = 8 / sizeof(Sample);
    std::uint64_t result = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t sample = word * count + i;
        result |= std::uint64_t{tone[planes[sample % 3][x + sample / 3]]}
                  << (8 * sizeof(Sample) * i);
    }
    return result;
}

/// Three words at a time: one store for eight bytes instead of one for each.
template <typename Sample>
void packRow(const Sample *tone, const Planes &planes, std::size_t columns, std::byte *result)
{
    constexpr std::size_t pixels = 8 / sizeof(Sample);
    std::size_t x = 0;
    for (; x + pixels <= columns; x += pixels) {
        result = put(wordOf<Sample, 0>(tone, planes, x), result);
        result = put(wordOf<Sample, 1>(tone, planes, x), result);
        result = put(wordOf<Sample, 2>(tone, planes, x), result);
    }
    for (; x < columns; ++x)
        for (const std::uint16_t *plane : planes)
            result = put(tone[plane[x]], result);
}

} // namespace

PixelPacker::PixelPacker(const Development &development)
    : m_words(development.tone)
    , m_bytes(development.sixteenBits ? 0 : m_words.size())
{
    for (std::size_t value = 0; value < m_bytes.size(); ++value)
        m_bytes[value] = static_cast<std::uint8_t>(m_words[value]);
    const auto lastOther =
        std::find_if(m_words.rbegin(), m_words.rend(),
                     [last = m_words.back()](std::uint16_t value) { return value != last; });
    m_limit = static_cast<std::uint16_t>(
        std::min<std::ptrdiff_t>(m_words.rend() - lastOther, UINT16_MAX));
}

void PixelPacker::pack(const std::uint16_t *red, const std::uint16_t *green,
                       const std::uint16_t *blue, std::size_t columns, std::byte *result) const
{
    if (m_bytes.empty())
        packRow(m_words.data(), {red, green, blue}, columns, result);
    else
        packRow(m_bytes.data(), {red, green, blue}, columns, result);
}

} // namespace dcraw
