// SPDX-License-Identifier: MIT
#include "mlv_dump/columngains.h"

#include <algorithm>
#include <cmath>

namespace mlvdump {

double ColumnGains::least() const
{
    return std::min(*std::ranges::min_element(gains[0]), *std::ranges::min_element(gains[1]));
}

double ColumnGains::most() const
{
    return std::max(*std::ranges::max_element(gains[0]), *std::ranges::max_element(gains[1]));
}

void ColumnGains::evenOut(std::span<std::uint16_t> samples, const mlv::FrameFormat &format,
                          int cropX, int cropY) const
{
    constexpr int fraction = 16; // bits
    const int black = format.blackLevel;
    const int clip = format.whiteLevel;
    const int nearBlack = black + (64 >> std::max(0, 14 - format.bitsPerSample));
    const auto width = static_cast<std::size_t>(format.width);
    for (std::size_t y = 0; y < samples.size() / width; ++y) {
        std::array<std::int64_t, period> factors{};
        for (std::size_t column = 0; column < period; ++column) {
            const auto place = (column + static_cast<std::size_t>(cropX)) % period;
            factors[column] = std::llround((1 << fraction) /
                                           gains[(y + static_cast<std::size_t>(cropY)) % 2][place]);
        }
        const auto row = samples.subspan(y * width, width);
        for (std::size_t x = 0; x < width; ++x) {
            const int sample = row[x];
            const auto light = (sample - black) * factors[x % period];
            const auto even = black + static_cast<int>((light + (1 << (fraction - 1))) >> fraction);
            if (sample >= nearBlack && sample < clip) {
                row[x] = static_cast<std::uint16_t>(std::min(even, clip));
            }
        }
    }
}

} // namespace mlvdump
