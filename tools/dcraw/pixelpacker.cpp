// SPDX-License-Identifier: MIT
#include "pixelpacker.h"

#include <algorithm>

namespace dcraw {

PixelPacker::PixelPacker(const Development &development)
    : m_words(development.tone)
    , m_bytes(development.sixteenBits ? 0 : m_words.size())
{
    for (std::size_t value = 0; value < m_bytes.size(); ++value) {
        m_bytes[value] = static_cast<std::uint8_t>(m_words[value]);
    }
    const auto lastOther =
        std::find_if(m_words.rbegin(), m_words.rend(),
                     [last = m_words.back()](std::uint16_t value) { return value != last; });
    m_limit = static_cast<std::uint16_t>(
        std::min<std::ptrdiff_t>(m_words.rend() - lastOther, UINT16_MAX));
}

void PixelPacker::pack(const std::uint16_t *red, const std::uint16_t *green,
                       const std::uint16_t *blue, std::size_t columns, std::byte *result) const
{
    if (m_bytes.empty()) {
        for (std::size_t x = 0; x < columns; ++x) {
            for (const std::uint16_t value : {red[x], green[x], blue[x]}) {
                *result++ = static_cast<std::byte>(m_words[value] & 0xff);
                *result++ = static_cast<std::byte>(m_words[value] >> 8);
            }
        }
    } else {
        for (std::size_t x = 0; x < columns; ++x) {
            *result++ = static_cast<std::byte>(m_bytes[red[x]]);
            *result++ = static_cast<std::byte>(m_bytes[green[x]]);
            *result++ = static_cast<std::byte>(m_bytes[blue[x]]);
        }
    }
}

} // namespace dcraw
