// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace dcraw {

/// How missing colours are found.
enum class Interpolation : std::uint8_t {
    Bilinear,            ///< means of the neighbours
    AdaptiveHomogeneity, ///< the more homogeneous of a horizontal and a vertical candidate
    HalfSize,            ///< none: each 2 × 2 square of the pattern becomes one pixel
};

/// What is done where a colour is saturated.
enum class Highlights : std::uint8_t {
    Leave,   ///< nothing
    Blend,   ///< colours above the lowest saturation level lose their saturation
    Rebuild, ///< saturated colours follow the ratio to the strongest colour around them
};

using Matrix = std::array<std::array<float, 3>, 3>;

/// Everything that is the same for all pixels of one frame. Colours: 0 red, 1 green, 2 blue, and
/// where four are told apart 3 is the green in the rows that hold blue.
struct Development
{
    int width = 0;  ///< of the active area, at least 22
    int height = 0; ///< of the active area, at least 22
    /// The colour, 0 to 3, of the sample at (row & 1, column & 1) of the active area.
    std::array<std::array<std::uint8_t, 2>, 2> pattern{};
    std::int32_t black = 0;
    std::array<float, 4> scale{};       ///< from the light above black to 16 bits
    std::array<float, 3> multipliers{}; ///< the largest of the four is 1
    Interpolation interpolation = Interpolation::AdaptiveHomogeneity;
    int medianPasses = 0;
    Highlights highlights = Highlights::Rebuild;
    bool convertsColour = true; ///< false: the camera's colours are written
    Matrix cameraToOutput{};
    Matrix cameraToXyz{};   ///< divided by the white point: what homogeneity is judged in
    double pixelAspect = 1; ///< < 1: the picture becomes higher by 1 ÷ it, > 1: wider by it
    bool sixteenBits = false;
    /// What is written for each value of the output colour, 65536 entries; at 8 bits 0 to 255.
    std::vector<std::uint16_t> tone;

    /// The size after halving.
    int pictureWidth() const;
    int pictureHeight() const;
    /// The size of the result, after halving and stretching.
    int outputWidth() const;
    int outputHeight() const;
    std::size_t outputRowBytes() const;
};

/// The samples of the active area, before black is subtracted.
class SampleRows
{
public:
    SampleRows() = default;
    SampleRows(const SampleRows &) = delete;
    SampleRows &operator=(const SampleRows &) = delete;
    virtual ~SampleRows() = default;

    /// Fills `samples` with whole rows, the first of which is `row`. From any thread, rows in any
    /// order. What it throws comes out of develop().
    virtual void read(int row, std::span<std::uint16_t> samples) const = 0;
};

/// Where the developed rows go.
class PixelSink
{
public:
    PixelSink() = default;
    PixelSink(const PixelSink &) = delete;
    PixelSink &operator=(const PixelSink &) = delete;
    virtual ~PixelSink() = default;

    /// Takes whole rows of the result, the first of which is `row`: red, green, blue, little-endian
    /// at 16 bits. From any thread, each row once, in any order. Answers false when the rest isn't
    /// wanted any more.
    virtual bool write(int row, std::span<const std::byte> pixels) = 0;
};

/// Develops a frame on `threads` threads, at least one; the result doesn't depend on their number.
/// Answers false when the sink has refused rows.
bool develop(const Development &development, const SampleRows &samples, PixelSink &sink,
             unsigned threads);

} // namespace dcraw
