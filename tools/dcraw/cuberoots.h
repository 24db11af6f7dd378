// SPDX-License-Identifier: MIT
#pragma once

#include <array>

namespace dcraw {

/// The lightness function of CIE L*a*b* for 0 to 65535, which stand for 0 to 1: the cube root, and
/// near black a straight line.
extern const std::array<float, 65536> cubeRoots;

} // namespace dcraw
