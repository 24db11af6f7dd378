// SPDX-License-Identifier: MIT
#include "conversion/tiffbitmap.h"

#include "conversion/tifffile.h"
#include "runner/wholefiles.h"

#include <QFile>
#include <QSaveFile>
#include <QtEndian>

#include <algorithm>
#include <limits>
#include <memory>
#include <optional>
#include <vector>

namespace filmwright {

namespace {

template <typename T>
T field(TIFF *tiff, std::uint32_t tag, T fallback)
{
    T value = fallback;
    TIFFGetFieldDefaulted(tiff, tag, &value);
    return value;
}

std::uint64_t packedBytesPerRow(const TiffBitmap::Layout &layout)
{
    const auto bits = std::uint64_t(layout.width) * std::uint64_t(layout.samplesPerPixel) *
                      std::uint64_t(layout.bitsPerSample);
    return (bits + 7) / 8;
}

// The layout that the header describes, if it is one that can be read and if a file of that length
// can hold its samples: no larger buffer is ever asked for.
std::optional<TiffBitmap::Layout> plausibleLayout(TIFF *tiff, qint64 fileSize)
{
    constexpr std::uint32_t maxMeasure = std::numeric_limits<int>::max();
    const auto width = field<std::uint32_t>(tiff, TIFFTAG_IMAGEWIDTH, 0);
    const auto height = field<std::uint32_t>(tiff, TIFFTAG_IMAGELENGTH, 0);
    const auto bits = field<std::uint16_t>(tiff, TIFFTAG_BITSPERSAMPLE, 0);
    const auto samples = field<std::uint16_t>(tiff, TIFFTAG_SAMPLESPERPIXEL, 0);
    if (width < 1 || width > maxMeasure || height < 1 || height > maxMeasure)
        return {};
    if (bits < 1 || bits > 64 || samples < 1 || TIFFIsTiled(tiff) ||
        field<std::uint16_t>(tiff, TIFFTAG_COMPRESSION, 0) != COMPRESSION_NONE ||
        (samples > 1 && field<std::uint16_t>(tiff, TIFFTAG_PLANARCONFIG, 0) != PLANARCONFIG_CONTIG))
        return {};
    TiffBitmap::Layout layout{int(width), int(height), samples, bits, 0};
    const std::uint64_t rowBytes = packedBytesPerRow(layout);
    if (rowBytes > std::uint64_t(fileSize) / height)
        return {};
    layout.bytesPerRow = qsizetype(rowBytes);
    return layout;
}

bool readStrips(TIFF *tiff, QByteArray *bytes)
{
    const tmsize_t stripSize = TIFFStripSize(tiff);
    const std::uint32_t strips = TIFFNumberOfStrips(tiff);
    tmsize_t done = 0;
    for (std::uint32_t strip = 0; strip < strips && done < bytes->size(); ++strip) {
        const tmsize_t expected = std::min<tmsize_t>(stripSize, bytes->size() - done);
        if (expected <= 0 ||
            TIFFReadEncodedStrip(tiff, strip, bytes->data() + done, expected) != expected)
            return false;
        done += expected;
    }
    return done == bytes->size();
}

bool stripsLieInside(TIFF *tiff, std::uint64_t fileSize, std::uint64_t sampleBytes)
{
    std::uint64_t held = 0;
    const std::uint32_t strips = TIFFNumberOfStrips(tiff);
    for (std::uint32_t strip = 0; strip < strips; ++strip) {
        const std::uint64_t offset = TIFFGetStrileOffset(tiff, strip);
        const std::uint64_t length = TIFFGetStrileByteCount(tiff, strip);
        if (offset > fileSize || length > fileSize - offset)
            return false;
        held += length;
    }
    return held >= sampleBytes;
}

bool writeSamples(TIFF *tiff, const TiffBitmap &bitmap, const QByteArray &packedBytes)
{
    const bool rgb = bitmap.samplesPerPixel() >= 3;
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, bitmap.width());
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, bitmap.height());
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, bitmap.bitsPerSample());
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, bitmap.samplesPerPixel());
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_NONE);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, rgb ? PHOTOMETRIC_RGB : PHOTOMETRIC_MINISBLACK);
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, bitmap.height());
    const auto extraSamples = static_cast<std::size_t>(bitmap.samplesPerPixel() - (rgb ? 3 : 1));
    if (extraSamples > 0) {
        const std::vector<std::uint16_t> kinds(extraSamples, EXTRASAMPLE_UNSPECIFIED);
        TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, int(extraSamples), kinds.data());
    }
    // Raw: uncompressed samples in the machine's byte order need no encoding, and so no copy.
    return TIFFWriteRawStrip(tiff, 0, const_cast<char *>(packedBytes.constData()),
                             packedBytes.size()) == packedBytes.size() &&
           TIFFWriteDirectory(tiff);
}

} // namespace

TiffBitmap::TiffBitmap(const Layout &layout, const QByteArray &bytes)
    : m_layout(layout)
    , m_bytes(bytes)
{
    Q_ASSERT(layout.width > 0 && layout.height > 0);
    Q_ASSERT(std::uint64_t(layout.bytesPerRow) >= packedBytesPerRow(layout));
    Q_ASSERT(bytes.size() == layout.height * layout.bytesPerRow);
}

TiffBitmap TiffBitmap::read(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const TiffHandle tiff = openTiff(file, TiffAccess::Read);
    const auto layout = tiff ? plausibleLayout(tiff.get(), file.size()) : std::nullopt;
    if (!layout)
        return {};
    QByteArray bytes(layout->height * layout->bytesPerRow, Qt::Uninitialized);
    if (!readStrips(tiff.get(), &bytes))
        return {};
    return TiffBitmap(*layout, bytes);
}

std::optional<TiffBitmap::Layout> TiffBitmap::layoutOf(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const TiffHandle tiff = openTiff(file, TiffAccess::Read);
    return tiff ? plausibleLayout(tiff.get(), file.size()) : std::nullopt;
}

bool TiffBitmap::isWhole(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    const TiffHandle tiff = openTiff(file, TiffAccess::Read);
    const auto layout = tiff ? plausibleLayout(tiff.get(), file.size()) : std::nullopt;
    return layout && stripsLieInside(tiff.get(), std::uint64_t(file.size()),
                                     std::uint64_t(layout->height * layout->bytesPerRow));
}

bool TiffBitmap::write(const QString &path) const
{
    if (isEmpty())
        return false;
    const auto packedRow = qsizetype(packedBytesPerRow(m_layout));
    QByteArray packed = m_bytes;
    if (packedRow != m_layout.bytesPerRow) {
        packed.clear();
        for (int y = 0; y < m_layout.height; ++y)
            packed.append(m_bytes.constData() + y * m_layout.bytesPerRow, packedRow);
    }
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    TiffHandle tiff = openTiff(file, TiffAccess::Write);
    if (!tiff || !writeSamples(tiff.get(), *this, packed))
        return false;
    tiff.reset();
    return commitFile(file);
}

TiffBitmap TiffBitmap::eightBits() const
{
    if (m_layout.bitsPerSample != 16)
        return *this;
    Layout layout = m_layout;
    layout.bitsPerSample = 8;
    layout.bytesPerRow = qsizetype(packedBytesPerRow(layout));
    QByteArray bytes(layout.height * layout.bytesPerRow, Qt::Uninitialized);
    for (int y = 0; y < layout.height; ++y) {
        const char *from = m_bytes.constData() + y * m_layout.bytesPerRow;
        char *to = bytes.data() + y * layout.bytesPerRow;
        for (qsizetype i = 0; i < layout.bytesPerRow; ++i)
            to[i] = char(qFromUnaligned<quint16>(from + 2 * i) >> 8);
    }
    return {layout, bytes};
}

QImage TiffBitmap::toImage() const
{
    QImage::Format format = QImage::Format_Invalid;
    if (m_layout.bitsPerSample == 8) {
        switch (m_layout.samplesPerPixel) {
        case 1:
            format = QImage::Format_Grayscale8;
            break;
        case 3:
            format = QImage::Format_RGB888;
            break;
        case 4:
            format = QImage::Format_RGBA8888;
            break;
        default:
            break;
        }
    }
    if (format == QImage::Format_Invalid)
        return {};
    auto shared = std::make_unique<QByteArray>(m_bytes);
    QImage image(
        reinterpret_cast<const uchar *>(shared->constData()), m_layout.width, m_layout.height,
        m_layout.bytesPerRow, format, [](void *bytes) { delete static_cast<QByteArray *>(bytes); },
        shared.get());
    if (!image.isNull())
        static_cast<void>(shared.release()); // the image's clean-up deletes it
    return image;
}

} // namespace filmwright
