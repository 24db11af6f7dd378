// SPDX-License-Identifier: MIT
#include "mlv_dump/columngains.h"

#include <algorithm>
#include <vector>

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
    constexpr float half = 0.5F; // for rounding: what is evened out is never negative
    const int black = format.blackLevel;
    const int clip = format.whiteLevel;
    const int nearBlack = black + (64 >> std::max(0, 14 - format.bitsPerSample));
    const auto width = static_cast<std::size_t>(format.width);
    // One for each column, so that the compiler evens out many of them at once.
    std::array<std::vector<float>, 2> factors;
    for (std::size_t parity = 0; parity < factors.size(); ++parity) {
        const auto &ofRow = gains[(parity + static_cast<std::size_t>(cropY)) % 2];
        for (std::size_t x = 0; x < width; ++x) {
            factors[parity].push_back(
                static_cast<float>(1 / ofRow[(x + static_cast<std::size_t>(cropX)) % period]));
        }
    }
    for (std::size_t y = 0; y < samples.size() / width; ++y) {
        std::uint16_t *const row = samples.data() + y * width;
        const float *const factor = factors[y % 2].data();
        for (std::size_t x = 0; x < width; ++x) {
            const int sample = row[x];
            const float light = static_cast<float>(sample - black) * factor[x];
            const int even = std::min(black + static_cast<int>(light + half), clip);
            const bool isMeasured = (sample >= nearBlack) & (sample < clip);
            row[x] = static_cast<std::uint16_t>(isMeasured ? even : sample);
        }
    }
}

} // namespace mlvdump
