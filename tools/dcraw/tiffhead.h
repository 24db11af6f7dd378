// SPDX-License-Identifier: MIT
#pragma once

#include "dcraw/development.h"
#include "dcraw/negative.h"

#include <cstddef>
#include <span>
#include <vector>

namespace dcraw {

/// Everything of the TIFF that stands before the pixels: the directories with the picture's size
/// and the camera's words, and the profile if the picture has a colour space.
std::vector<std::byte> tiffHead(const Negative &negative, const Development &development,
                                std::span<const std::byte> profile);

} // namespace dcraw
