// SPDX-License-Identifier: MIT
// Repeatable random numbers: the same on every machine, for every compiler.
#pragma once

#include <cstdint>

namespace sample {

/// Mixes all bits of `value` (the finaliser of the SplitMix64 generator).
constexpr std::uint64_t mixed(std::uint64_t value)
{
    value = (value ^ (value >> 30U)) * 0xbf58476d1ce4e5b9U;
    value = (value ^ (value >> 27U)) * 0x94d049bb133111ebU;
    return value ^ (value >> 31U);
}

/// A stream of random numbers (SplitMix64: Steele, Lea and Flood, 2014).
class Random
{
public:
    explicit constexpr Random(std::uint64_t seed)
        : m_state(seed)
    {
    }

    constexpr std::uint64_t next() { return mixed(m_state += 0x9e3779b97f4a7c15U); }

    /// Mean 0, standard deviation 1: the sum of four uniform numbers, which is close enough to a
    /// normal distribution for sensor noise and never leaves ±3.5.
    constexpr float normal()
    {
        const std::uint64_t bits = next();
        const auto sum = static_cast<float>((bits & 0xffffU) + ((bits >> 16U) & 0xffffU) +
                                            ((bits >> 32U) & 0xffffU) + (bits >> 48U));
        constexpr float mean = 2.0F * 65535.0F;
        constexpr float deviation = 37837.2F; // 65536 × √(4 ÷ 12)
        return (sum - mean) / deviation;
    }

private:
    std::uint64_t m_state;
};

/// Evenly spread over [0, 1), the same for the same place and purpose.
constexpr float scattered(int x, int y, std::uint64_t purpose)
{
    const auto place = (static_cast<std::uint64_t>(static_cast<std::uint32_t>(y)) << 32U) |
                       static_cast<std::uint32_t>(x);
    return static_cast<float>(mixed(mixed(place + 1) + purpose) >> 40U) / 16777216.0F;
}

} // namespace sample
