// SPDX-License-Identifier: MIT
#include "runner/fixedtext.h"

#include <array>
#include <charconv>
#include <limits>

namespace filmwright {

QString fixedText(double value, int decimals)
{
    // Sign, point and decimals beside the digits of the largest number.
    std::array<char, std::numeric_limits<double>::max_exponent10 + 20> text;
    const auto [end, error] = std::to_chars(text.data(), text.data() + text.size(), value,
                                            std::chars_format::fixed, decimals);
    return QString::fromLatin1(text.data(), end - text.data());
}

} // namespace filmwright
