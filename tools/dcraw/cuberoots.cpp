// SPDX-License-Identifier: MIT
// The compiler computes the table: a frame is developed in less time than its 65,536 powers take.
#include "dcraw/cuberoots.h"

#include <bit>
#include <cstddef>
#include <cstdint>

namespace dcraw {
namespace {

constexpr double cubeRoot(double value)
{
    double root = (2 + value) / 3; // of 0.008 to 1, from above: each step comes closer
    for (double next = 0;; root = next) {
        next = (2 * root + value / (root * root)) / 3;
        if (next >= root)
            return root;
    }
}

constexpr std::array<float, 65536> table()
{
    std::array<float, 65536> values{};
    for (std::size_t i = 0; i < values.size(); ++i) {
        const double light = static_cast<float>(static_cast<double>(i) / 65535.0);
        values[i] =
            static_cast<float>(light > 0.008856 ? cubeRoot(light) : 7.787 * light + 16 / 116.0);
    }
    return values;
}

/// FNV-1a over the bytes, the lowest of each value first.
constexpr std::uint32_t hash(const std::array<float, 65536> &values)
{
    std::uint32_t result = 0x811c9dc5;
    for (const float value : values) {
        const auto bits = std::bit_cast<std::uint32_t>(value);
        for (unsigned shift = 0; shift < 32; shift += 8) {
            result = (result ^ ((bits >> shift) & 0xff)) * 0x01000193;
        }
    }
    return result;
}

} // namespace

constexpr std::array<float, 65536> cubeRoots = table();
static_assert(hash(cubeRoots) == 0x94b46f84, "rounded like pow(value, 1.0 / 3)");

} // namespace dcraw
