// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

#include <array>

namespace filmwright {

class TiffBitmap;

/// How often each value occurs in a picture.
struct Histogram
{
    static constexpr std::size_t values = 256;

    /// What is told of one colour.
    struct Channel
    {
        std::array<quint32, values> counts{}; ///< samples of each value, by their upper 8 bits
        double clipped = 0; ///< the part of the samples that has the highest value of all its bits
    };
    std::array<Channel, 3> channels; ///< red, green, blue

    /// The most samples that one value has in one channel.
    quint32 highestCount() const;
};

/// Of a picture of three samples a pixel with 8 or 16 bits each; empty for any other. Any thread.
Histogram histogramOf(const TiffBitmap &bitmap);

} // namespace filmwright
