// SPDX-License-Identifier: MIT
#pragma once

#include "mlv/frameformat.h"

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace mlvdump {

/// Evens out what lens and sensor let through: each sample above black is divided by the flat's and
/// multiplied by the flat's median of its Bayer position, so that colours stay. All samples are
/// darkened by one common factor, the flat's dark end over its median, so that the corners, whose
/// gains are above 1, do not clip before the centre.
class FlatField
{
public:
    /// `flat` has the samples of a frame of `format`, which is the footage's; its black level holds
    /// for both. Throws raw::Error when the flat has no light.
    FlatField(std::span<const std::uint16_t> flat, const mlv::FrameFormat &format);

    /// Corrects a frame in place.
    void apply(std::span<std::uint16_t> samples) const;

    /// The medians and the common factor, for a person.
    std::string description() const;

private:
    void measure(std::span<const std::uint16_t> flat);
    void prepareDivisors(std::span<const std::uint16_t> flat);

    mlv::FrameFormat m_format;
    std::array<std::int64_t, 4> m_median{}; ///< above black, by Bayer position, row by row
    std::int64_t m_numerator = 0;           ///< of the common factor
    std::int64_t m_denominator = 0;
    std::vector<std::uint16_t> m_divisors; ///< the flat above black; 0: leave the sample alone
};

} // namespace mlvdump
