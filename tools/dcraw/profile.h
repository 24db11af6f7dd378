// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace dcraw {

inline constexpr std::size_t profileBytes = 476;

/// The ICC profile of one of the spaces that -o numbers, 1 to 6. `power` is that of the curve, in
/// 256ths.
std::array<std::byte, profileBytes> colourProfile(int colourSpace, std::uint16_t power);

} // namespace dcraw
