// SPDX-License-Identifier: MIT
// The compiler computes the table: a frame is developed in less time than its 65,536 powers take.
#include "dcraw/cuberoots.h"

#include <array>
#include <bit>
#include <cstring>

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

using Bits = std::array<std::uint32_t, 65536>;

constexpr Bits bitsOf(const std::array<float, 65536> &values)
{
    Bits bits{};
    for (std::size_t i = 0; i < values.size(); ++i)
        bits[i] = std::bit_cast<std::uint32_t>(values[i]);
    return bits;
}

/// FNV-1a over the bytes, the lowest of each value first.
constexpr std::uint32_t hash(const Bits &values)
{
    std::uint32_t result = 0x811c9dc5;
    for (const std::uint32_t value : values)
        for (unsigned shift = 0; shift < 32; shift += 8)
            result = (result ^ ((value >> shift) & 0xff)) * 0x01000193;
    return result;
}

constexpr Bits roots = bitsOf(table());
static_assert(hash(roots) == 0x94b46f84, "rounded like pow(value, 1.0 / 3)");

static_assert(std::endian::native == std::endian::little, "words hold the first value lowest");

} // namespace

// In a file without vectors, so that no compiler makes gathering instructions of it: what those win
// on some processors they lose many times on others, where a flaw of theirs had to be mended.
// Processors have fewer units for memory than for sums, so that memory is used in whole words.
void CubeRootChunk::takeRoots()
{
    const std::uint16_t *from = light[0][0];
    float *to = root[0][0];
    for (std::size_t i = 0; i < sizeof light / sizeof *from; i += 4) {
        std::uint64_t lights = 0;
        std::memcpy(&lights, from + i, sizeof lights);
        const std::uint64_t pairs[2] = {
            roots[lights & 0xffff] | std::uint64_t{roots[(lights >> 16) & 0xffff]} << 32,
            roots[(lights >> 32) & 0xffff] | std::uint64_t{roots[lights >> 48]} << 32};
        std::memcpy(to + i, pairs, sizeof pairs);
    }
}

} // namespace dcraw
