// SPDX-License-Identifier: MIT
#pragma once

#include "dng/ifd.h"
#include "mlv_sample/settings.h"

#include <QByteArray>

#include <cstdint>
#include <vector>

/// A DNG for a test, of the kind that mlv_dump writes: all its fields stand in `image` and `exif`
/// and may be changed, taken away or added to before it is encoded.
struct NegativeWriter
{
    /// 22 × 22 samples of 14 bits, a horizontal ramp.
    NegativeWriter();

    /// A frame of that size and depth, without samples.
    void setShape(int width, int height, int bits);
    /// How the samples are stored; `predictor` 1 to 7. Needs even sides.
    void setLossless(sample::LosslessShape shape, int predictor);

    QByteArray encoded() const;

    dng::Ifd image;
    dng::Ifd exif;
    std::vector<std::uint16_t> samples; ///< of the whole frame, each within the depth
    QByteArray strip;                   ///< stands in place of the samples unless empty

private:
    QByteArray encodedSamples() const;

    int m_width = 0;
    int m_height = 0;
    int m_bits = 0;
    bool m_isLossless = false;
    sample::LosslessShape m_shape{};
    int m_predictor = 1;
};
