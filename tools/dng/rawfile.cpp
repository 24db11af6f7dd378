// SPDX-License-Identifier: MIT
#include "dng/rawfile.h"

#include "dng/tags.h"
#include "raw/error.h"
#include "raw/losslessjpeg.h"
#include "raw/samples.h"

#include <algorithm>

namespace dng {
namespace {

constexpr std::uint32_t leastSide = 16;
constexpr std::uint32_t largestSide = 65534;

/// The value that all values of the field have.
std::uint32_t value(const Ifd &ifd, std::uint16_t tag, const char *name)
{
    const auto values = wholeNumbers(ifd, tag);
    const auto differs = [&](std::uint32_t other) { return other != values.front(); };
    if (values.empty() || std::any_of(values.begin(), values.end(), differs))
        throw raw::Error(std::string("has no usable ") + name);
    return values.front();
}

int side(const Ifd &ifd, std::uint16_t tag)
{
    const std::uint32_t size = value(ifd, tag, "frame size");
    if (size < leastSide || size > largestSide || size % 2 != 0)
        throw raw::Error("has a frame size that can't be a raw frame's");
    return static_cast<int>(size);
}

std::array<std::uint8_t, 4> colours(const Ifd &ifd)
{
    const auto cells = wholeNumbers(ifd, tag::cfaPattern);
    const std::vector<std::uint32_t> twoByTwo{2, 2};
    std::array<std::uint8_t, 4> pattern{};
    const bool fits = wholeNumbers(ifd, tag::cfaRepeatPatternDim) == twoByTwo && cells.size() == 4;
    if (!fits || std::any_of(cells.begin(), cells.end(), [](auto cell) { return cell > 2; }))
        throw raw::Error("has no colour filter pattern of 2 x 2");
    for (std::size_t i = 0; i < pattern.size(); ++i)
        pattern[i] = static_cast<std::uint8_t>(cells[i]);
    return pattern;
}

RawFormat readFormat(const Ifd &ifd)
{
    if (value(ifd, tag::photometricInterpretation, "kind of picture") !=
            photometric::colourFilterArray ||
        ifd.fields().contains(tag::linearizationTable))
        throw raw::Error("holds no plain raw frame");
    RawFormat format;
    format.width = side(ifd, tag::imageWidth);
    format.height = side(ifd, tag::imageLength);
    const std::uint32_t bits = value(ifd, tag::bitsPerSample, "number of bits a sample");
    if (bits > 16 || !raw::isSupportedDepth(static_cast<int>(bits)))
        throw raw::Error("has " + std::to_string(bits) + " bits a sample");
    format.bitsPerSample = static_cast<int>(bits);
    format.blackLevel = value(ifd, tag::blackLevel, "black level");
    format.whiteLevel = value(ifd, tag::whiteLevel, "white level");
    if (format.blackLevel >= format.whiteLevel || format.whiteLevel >> bits != 0)
        throw raw::Error("has black and white levels that make no sense");
    format.colours = colours(ifd);
    return format;
}

} // namespace

RawFile::RawFile(const std::filesystem::path &path)
    : m_file(path)
    , m_directories(readDirectories(m_file))
    , m_format(readFormat(m_directories.image))
{
    const Ifd &ifd = m_directories.image;
    const std::uint32_t kind = value(ifd, tag::compression, "compression");
    m_isLosslessJpeg = kind == compression::losslessJpeg;
    if (!m_isLosslessJpeg && kind != compression::none)
        throw raw::Error("is compressed in an unknown way");
    const auto offsets = wholeNumbers(ifd, tag::stripOffsets);
    const auto sizes = wholeNumbers(ifd, tag::stripByteCounts);
    if (offsets.size() != 1 || sizes.size() != 1)
        throw raw::Error("does not hold its samples in one strip");
    m_stripOffset = offsets.front();
    m_stripBytes = sizes.front();
    if (m_stripOffset > m_file.size() || m_stripBytes > m_file.size() - m_stripOffset)
        throw raw::Error("ends before its samples do");
    const auto count =
        static_cast<std::uint64_t>(m_format.width) * static_cast<std::uint64_t>(m_format.height);
    // A lossless sample has a bit at the least.
    const std::uint64_t leastBytes =
        m_isLosslessJpeg ? count / 8
                         : raw::packedSize(static_cast<std::size_t>(count), m_format.bitsPerSample);
    if (m_stripBytes < leastBytes)
        throw raw::Error("has fewer samples than its size asks for");
}

std::vector<std::uint16_t> RawFile::samples() const
{
    std::vector<std::byte> strip(m_stripBytes);
    m_file.read(m_stripOffset, strip);
    std::vector<std::uint16_t> samples(static_cast<std::size_t>(m_format.width) *
                                       static_cast<std::size_t>(m_format.height));
    if (m_isLosslessJpeg) {
        raw::decodeLosslessJpeg(strip, samples);
    } else {
        // Samples of 16 bits have the byte order of the file, the others are a stream of bits.
        const auto order =
            m_format.bitsPerSample == 16 ? raw::WordOrder::LittleEndian : raw::WordOrder::BigEndian;
        raw::unpackSamples(strip, m_format.bitsPerSample, order, samples);
    }
    return samples;
}

} // namespace dng
