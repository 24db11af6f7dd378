// SPDX-License-Identifier: MIT
#include "raw/scandata.h"

#include <algorithm>
#include <cstring>

namespace raw {
namespace {

/// How many bytes stand before the first 0xff.
std::size_t plainBytes(std::span<const std::byte> bytes)
{
    const void *found =
        bytes.empty() ? nullptr
                      : std::memchr(bytes.data(), std::to_integer<int>(markerStart), bytes.size());
    return found == nullptr
               ? bytes.size()
               : static_cast<std::size_t>(static_cast<const std::byte *>(found) - bytes.data());
}

} // namespace

std::span<const std::byte> ScanData::next()
{
    std::size_t filled = 0;
    while (filled < m_piece.size()) {
        const auto rest = m_stream.subspan(m_position);
        const std::size_t count =
            plainBytes(rest.first(std::min(rest.size(), m_piece.size() - filled)));
        std::copy_n(rest.begin(), count, m_piece.begin() + static_cast<std::ptrdiff_t>(filled));
        filled += count;
        m_position += count;
        if (filled == m_piece.size() || count + 1 >= rest.size() || rest[count] != markerStart ||
            rest[count + 1] != std::byte{0})
            break;
        m_piece[filled++] = markerStart;
        m_position += 2;
    }
    return std::span(m_piece).first(filled);
}

} // namespace raw
