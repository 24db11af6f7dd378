// SPDX-License-Identifier: MIT
#include "conversion/mergebitmaps.h"

#include "conversion/mergepixels.h"

#include <algorithm>
#include <array>

namespace filmwright {

namespace {

constexpr qsizetype colourSamples = 3;

// Pixels with further samples are merged by way of packed ones, as many at a time as stay in the
// cache.
void mergeSpreadPixels(uchar *first, const uchar *second, qsizetype stride, qsizetype count)
{
    constexpr qsizetype blockPixels = 512;
    std::array<uchar, blockPixels * colourSamples> packedFirst;
    std::array<uchar, blockPixels * colourSamples> packedSecond;
    for (qsizetype done = 0; done < count; done += blockPixels) {
        const qsizetype pixels = std::min(blockPixels, count - done);
        for (qsizetype i = 0; i < pixels; ++i) {
            const qsizetype from = (done + i) * stride;
            std::copy_n(first + from, colourSamples, packedFirst.data() + i * colourSamples);
            std::copy_n(second + from, colourSamples, packedSecond.data() + i * colourSamples);
        }
        mergePixels(packedFirst.data(), packedSecond.data(), packedFirst.data(),
                    std::size_t(pixels));
        for (qsizetype i = 0; i < pixels; ++i)
            std::copy_n(packedFirst.data() + i * colourSamples, colourSamples,
                        first + (done + i) * stride);
    }
}

} // namespace

bool mergeBitmaps(TiffBitmap *first, const TiffBitmap &second)
{
    const qsizetype samplesPerPixel = first->samplesPerPixel();
    const qsizetype bytesPerSample = first->bitsPerSample() / 8;
    if (samplesPerPixel < colourSamples || bytesPerSample < 1)
        return false;
    const qsizetype rowSamples = first->bytesPerRow() / bytesPerSample;
    // Rows of whole pixels, one right after the other: a single run over the bitmap.
    const qsizetype pixels = first->height() * (rowSamples / samplesPerPixel);
    if (second.bytes().size() < pixels * samplesPerPixel)
        return false;

    const auto *secondBytes = reinterpret_cast<const uchar *>(second.bytes().constData());
    if (samplesPerPixel == colourSamples)
        mergePixels(first->data(), secondBytes, first->data(), std::size_t(pixels));
    else
        mergeSpreadPixels(first->data(), secondBytes, samplesPerPixel, pixels);
    return true;
}

} // namespace filmwright
