// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <span>

namespace mlv {

/// Decompresses the data of an LZMA frame: its size, LZMA properties, a raw LZMA1 stream. Throws
/// raw::Error when the result is not exactly frame.size() bytes.
void decodeLzmaFrame(std::span<const std::byte> data, std::span<std::byte> frame);

/// Whether `size` bytes of data may hold a frame of `frameSize` bytes at all: what is asked before
/// memory is taken for it.
bool canLzmaFrameHold(std::size_t size, std::size_t frameSize);

} // namespace mlv
