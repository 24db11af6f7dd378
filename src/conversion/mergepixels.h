// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>

namespace filmwright {

/// Merges `count` pixels of packed RGB, two by two: each result has the hue and saturation of
/// one of the two, chosen pixel by pixel, and the mean luma of both as its value (its largest
/// component). Of the colours it takes that of the pixel with more green (the first at equal
/// green), unless the other is more saturated, not brighter and above 63 (of 255) in its
/// maximum.
///
/// `result` may be `first`; otherwise nothing overlaps. Any thread.
///
/// The result is the same to the bit on every processor: it is that of the plain computation in
/// single precision, with the luma in double precision.
void mergePixels(const std::uint8_t *first, const std::uint8_t *second, std::uint8_t *result,
                 std::size_t count);

/// The same for samples of 16 bits, 63 of 255 being 16191 of 65535. What is more saturated is
/// compared exactly; quotients in single precision could not tell.
void mergePixels(const std::uint16_t *first, const std::uint16_t *second, std::uint16_t *result,
                 std::size_t count);

} // namespace filmwright
