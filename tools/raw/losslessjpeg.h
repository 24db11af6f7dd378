// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

/// Lossless JPEG (ITU-T T.81, process 14, Huffman coding), as far as recordings use it: one scan
/// of all components, none of them subsampled, no restart intervals, no point transform.
namespace raw {

struct LosslessJpegShape
{
    int precision; ///< bits a sample, 2 to 16
    int width;     ///< samples a line of one component
    int lines;
    int components; ///< 1 to 4

    /// Samples a line of all components.
    std::size_t lineLength() const
    {
        return static_cast<std::size_t>(width) * static_cast<std::size_t>(components);
    }
    std::size_t sampleCount() const { return lineLength() * static_cast<std::size_t>(lines); }
};

/// The shape of the stream. Throws Error when its headers can't be decoded.
LosslessJpegShape losslessJpegShape(std::span<const std::byte> stream);

/// Decodes the stream into exactly `samples.size()` samples, in the order of the stream: line by
/// line, components interleaved. The shape of the stream is free as long as the counts agree.
/// Answers the size of the stream without what follows its end, bytes. Throws Error when the stream
/// is damaged, cut off or of another size.
std::size_t decodeLosslessJpeg(std::span<const std::byte> stream, std::span<std::uint16_t> samples);

} // namespace raw
