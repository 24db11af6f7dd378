// SPDX-License-Identifier: MIT
#pragma once

#include "dcraw/development.h"

namespace dcraw {

/// From values to the bytes that are written.
class PixelPacker
{
public:
    explicit PixelPacker(const Development &development);

    /// Larger values look the same as this one.
    std::uint16_t limit() const { return m_limit; }
    /// Writes the pixels of a row, one after another.
    void pack(const std::uint16_t *red, const std::uint16_t *green, const std::uint16_t *blue,
              std::size_t columns, std::byte *result) const;

private:
    const std::vector<std::uint16_t> &m_words; ///< of 16 bits
    std::vector<std::uint8_t> m_bytes;         ///< of 8 bits, otherwise empty
    std::uint16_t m_limit;
};

} // namespace dcraw
