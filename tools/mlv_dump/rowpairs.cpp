// SPDX-License-Identifier: MIT
#include "mlv_dump/rowpairs.h"

#include <algorithm>
#include <array>

namespace mlvdump {

bool rowPairsAlternate(std::span<const std::uint16_t> samples, const mlv::FrameFormat &format)
{
    constexpr double clearly = 1.4; // half a stop; people choose a stop at least
    const auto width = static_cast<std::size_t>(format.width);
    const auto rows = samples.size() / width / 4 * 4;
    std::array<double, 4> light{};
    for (std::size_t row = 0; row < rows; ++row) {
        double sum = 0;
        for (const auto sample : samples.subspan(row * width, width))
            sum += std::max(0, sample - format.blackLevel);
        light[row % 4] += sum;
    }
    // Rows of the same colours are two apart.
    const auto differ = [](double a, double b) {
        return std::max(a, b) > clearly * std::min(a, b);
    };
    return differ(light[0], light[2]) && differ(light[1], light[3]);
}

} // namespace mlvdump
