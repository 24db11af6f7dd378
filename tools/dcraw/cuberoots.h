// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>

namespace dcraw {

/// The lightness function of CIE L*a*b* for the light of some columns: the cube root, and near
/// black a straight line. X, Y and Z of both candidates.
struct CubeRootChunk
{
    static constexpr std::size_t columns = 64;

    void takeRoots();

    alignas(64) std::uint16_t light[2][3][columns]; ///< 65535 is 1
    alignas(64) float root[2][3][columns];
};

} // namespace dcraw
