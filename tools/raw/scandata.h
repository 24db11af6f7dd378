// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstddef>
#include <span>

namespace raw {

/// The first byte of every marker of a JPEG.
constexpr std::byte markerStart{0xff};

/// The entropy-coded data of a JPEG scan without the zeros that are stuffed in behind 0xff, piece
/// by piece in the same small memory.
class ScanData
{
public:
    /// The data that `stream` begins with, up to a marker or the end. The stream stays the
    /// caller's.
    explicit ScanData(std::span<const std::byte> stream)
        : m_stream(stream)
    {
    }
    ScanData(const ScanData &) = delete;
    ScanData &operator=(const ScanData &) = delete;

    /// The next piece, which holds until the next call; empty at the end.
    std::span<const std::byte> next();

    /// How much of the stream has been taken, stuffing included; at the end where the marker is.
    std::size_t position() const { return m_position; }

private:
    std::span<const std::byte> m_stream;
    std::size_t m_position = 0;
    std::array<std::byte, 16384> m_piece;
};

} // namespace raw
