// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstddef>

/// How the directories of a TIFF 6.0 file are laid out.
namespace dng::tifflayout {

/// "II" for little-endian, then 42; the place of the first directory follows.
inline constexpr std::array<std::byte, 4> littleEndian{std::byte{'I'}, std::byte{'I'},
                                                       std::byte{42}, std::byte{0}};
inline constexpr std::size_t headerBytes = 8;
inline constexpr std::size_t entryBytes = 12;
/// Values of more bytes stand elsewhere, and the entry has their place.
inline constexpr std::size_t inlineBytes = 4;

} // namespace dng::tifflayout
