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

bool isDeep(const TiffBitmap &bitmap)
{
    return bitmap.samplesPerPixel() == colourSamples && bitmap.bitsPerSample() == 16 &&
           bitmap.bytesPerRow() == 2 * colourSamples * bitmap.width();
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

bool mergeDeepBitmaps(TiffBitmap *first, const TiffBitmap &second)
{
    if (!isDeep(*first) || !isDeep(second) || first->width() != second.width() ||
        first->height() != second.height())
        return false;
    // A byte array's data is as aligned as any memory of the heap.
    auto *samples = reinterpret_cast<std::uint16_t *>(first->data());
    mergePixels(samples, reinterpret_cast<const std::uint16_t *>(second.bytes().constData()),
                samples, std::size_t(first->width()) * std::size_t(first->height()));
    return true;
}

} // namespace filmwright
