// SPDX-License-Identifier: MIT
// LZMA compression of packed frames.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace sample {

/// The payload of an LZMA frame: size (4 bytes), LZMA1 properties (5 bytes), raw LZMA1 stream.
std::vector<std::byte> encodeLzmaFrame(std::span<const std::byte> packed);

} // namespace sample
