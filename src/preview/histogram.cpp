// SPDX-License-Identifier: MIT
#include "preview/histogram.h"

#include "conversion/tiffbitmap.h"

#include <QtEndian>

#include <algorithm>
#include <limits>

namespace filmwright {

namespace {

template <typename Sample>
void count(const TiffBitmap &bitmap, Histogram &histogram)
{
    constexpr int bits = std::numeric_limits<Sample>::digits;
    std::array<quint64, 3> clipped{};
    for (int y = 0; y < bitmap.height(); ++y) {
        const char *sample = bitmap.bytes().constData() + y * bitmap.bytesPerRow();
        for (int x = 0; x < bitmap.width(); ++x) {
            for (std::size_t channel = 0; channel < 3; ++channel, sample += sizeof(Sample)) {
                const auto value = qFromUnaligned<Sample>(sample);
                ++histogram.channels[channel].counts[std::size_t(value >> (bits - 8))];
                if (value == std::numeric_limits<Sample>::max())
                    ++clipped[channel];
            }
        }
    }
    const auto pixels = static_cast<double>(bitmap.width()) * bitmap.height();
    for (std::size_t channel = 0; channel < 3; ++channel)
        histogram.channels[channel].clipped = static_cast<double>(clipped[channel]) / pixels;
}

} // namespace

quint32 Histogram::highestCount() const
{
    quint32 highest = 0;
    for (const Channel &channel : channels)
        highest =
            std::max(highest, *std::max_element(channel.counts.begin(), channel.counts.end()));
    return highest;
}

Histogram histogramOf(const TiffBitmap &bitmap)
{
    Histogram histogram;
    if (bitmap.samplesPerPixel() != 3)
        return histogram;
    if (bitmap.bitsPerSample() == 8)
        count<quint8>(bitmap, histogram);
    else if (bitmap.bitsPerSample() == 16)
        count<quint16>(bitmap, histogram);
    return histogram;
}

} // namespace filmwright
