// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <optional>
#include <span>
#include <string>

namespace dcraw {

/// What -g says: a straight line of `slope` at the dark end, then a power of 1 ÷ `power`.
struct Gamma
{
    double exponent = 0.45; ///< 1 ÷ power
    double slope = 4.5;

    bool operator==(const Gamma &) const = default;
};

/// The command line of dcraw, as far as this program does the work itself.
struct Options
{
    std::string file;                                 ///< the DNG
    bool cameraWhiteBalance = false;                  ///< -w
    std::optional<std::array<double, 4>> multipliers; ///< -r
    double brightness = 1;                            ///< -b, 0.01 to below 10000
    int highlights = 0;                               ///< -H, 0 to 3
    int quality = 3;                                  ///< -q, 0 or 3
    bool halfSize = false;                            ///< -h
    int medianPasses = 0;                             ///< -m, 0 to 9
    int colourSpace = 1;                              ///< -o, 0 to 6
    bool sixteenBits = false;                         ///< -6, -4
    std::optional<Gamma> gamma;                       ///< -g, -4; absent: the default curve
    std::optional<std::string> badPixels;             ///< -P, the list's path
};

/// Reads the arguments behind the program's name. Throws NotCovered for everything that the real
/// dcraw takes in another way, refuses, or does and this program doesn't.
Options parseOptions(std::span<const char *const> arguments);

/// The path of the TIFF: what stands behind the path's last dot becomes "tiff".
std::string outputPath(const std::string &file);

} // namespace dcraw
