// SPDX-License-Identifier: MIT
#include "negativewriter.h"

#include "dng/filehead.h"
#include "dng/tags.h"
#include "mlv_sample/losslessjpeg.h"

#include <QtEndian>

#include <array>

namespace tag = dng::tag;

NegativeWriter::NegativeWriter()
{
    constexpr int side = 22;
    setShape(side, side, 14);
    for (int i = 0; i < side * side; ++i)
        samples[static_cast<std::size_t>(i)] = static_cast<std::uint16_t>(2048 + i % side * 500);
    image.setShorts(tag::photometricInterpretation, {dng::photometric::colourFilterArray});
    image.setShorts(tag::orientation, {1});
    image.setShorts(tag::samplesPerPixel, {1});
    image.setShorts(tag::cfaRepeatPatternDim, {2, 2});
    image.setBytes(tag::cfaPattern, {0, 1, 1, 2});
    image.setText(tag::make, "Canon");
    image.setText(tag::model, "Canon EOS 5D Mark III");
    image.setText(tag::dateTime, "2026:03:21 14:30:02");
    image.setBytes(tag::dngVersion, {1, 4, 0, 0});
    image.setLongs(tag::blackLevel, {2048});
    image.setLongs(tag::whiteLevel, {15000});
    constexpr std::array<dng::SRational, 9> matrix{{{6722, 10000},
                                                    {-635, 10000},
                                                    {-963, 10000},
                                                    {-4287, 10000},
                                                    {12460, 10000},
                                                    {2028, 10000},
                                                    {-908, 10000},
                                                    {2162, 10000},
                                                    {5668, 10000}}};
    image.setSRationals(tag::colorMatrix1, matrix);
    constexpr std::array<dng::Rational, 3> neutral{{{4736, 10000}, {10000, 10000}, {6240, 10000}}};
    image.setRationals(tag::asShotNeutral, neutral);
    exif.setRational(tag::exposureTime, {1, 50});
    exif.setRational(tag::fNumber, {28, 10});
    exif.setShorts(tag::isoSpeedRatings, {800});
    exif.setText(tag::dateTimeOriginal, "2026:03:21 14:30:02");
    exif.setRational(tag::focalLength, {50, 1});
}

void NegativeWriter::setShape(int width, int height, int bits)
{
    m_width = width;
    m_height = height;
    m_bits = bits;
    samples.assign(static_cast<std::size_t>(width) * static_cast<std::size_t>(height), 0);
    image.setLongs(tag::imageWidth, {static_cast<std::uint32_t>(width)});
    image.setLongs(tag::imageLength, {static_cast<std::uint32_t>(height)});
    image.setShorts(tag::bitsPerSample, {static_cast<std::uint16_t>(bits)});
    image.setShorts(tag::compression, {dng::compression::none});
}

void NegativeWriter::setLossless(sample::LosslessShape shape, int predictor)
{
    m_isLossless = true;
    m_shape = shape;
    m_predictor = predictor;
    image.setShorts(tag::compression, {dng::compression::losslessJpeg});
}

QByteArray NegativeWriter::encoded() const
{
    const QByteArray data = strip.isEmpty() ? encodedSamples() : strip;
    const auto head = dng::encodeFileHead(image, exif, static_cast<std::uint32_t>(data.size()));
    return QByteArray(reinterpret_cast<const char *>(head.data()),
                      static_cast<qsizetype>(head.size())) +
           data;
}

QByteArray NegativeWriter::encodedSamples() const
{
    QByteArray data;
    if (m_isLossless) {
        const auto stream =
            sample::encodeLosslessJpeg(samples, m_width, m_height, m_bits, m_shape, m_predictor);
        return {reinterpret_cast<const char *>(stream.data()),
                static_cast<qsizetype>(stream.size())};
    }
    if (m_bits == 16) {
        data.resize(static_cast<qsizetype>(samples.size() * 2));
        qToLittleEndian<std::uint16_t>(samples.data(), static_cast<qsizetype>(samples.size()),
                                       data.data());
        return data;
    }
    auto sample = samples.begin();
    for (int row = 0; row < m_height; ++row) {
        std::uint64_t pending = 0;
        int count = 0;
        for (int column = 0; column < m_width; ++column) {
            pending = pending << m_bits | *sample++;
            for (count += m_bits; count >= 8; count -= 8)
                data.append(static_cast<char>(pending >> (count - 8)));
        }
        if (count > 0)
            data.append(static_cast<char>(pending << (8 - count)));
    }
    return data;
}
