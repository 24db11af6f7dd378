// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QImage>
#include <QString>

#include <optional>

namespace filmwright {

/// A bitmap with interleaved samples, as a TIFF file holds it. Copies share their bytes until one
/// of them is written to. An empty bitmap has no bytes and zero for every measure.
class TiffBitmap
{
public:
    /// The measures of a bitmap, each at least 1.
    struct Layout
    {
        int width = 0;  ///< in pixels
        int height = 0; ///< in pixels
        int samplesPerPixel = 0;
        int bitsPerSample = 0;
        qsizetype bytesPerRow = 0; ///< at least the packed samples of a row; more is padding

        bool operator==(const Layout &) const = default;
    };

    TiffBitmap() = default;

    /// `bytes` must be height × bytesPerRow long.
    TiffBitmap(const Layout &layout, const QByteArray &bytes);

    /// The first image of an uncompressed TIFF file, without padding, 16-bit samples in the
    /// machine's byte order; empty when the file can't be read whole or holds anything else.
    static TiffBitmap read(const QString &path);

    /// The layout in which read() would give the file; looks at the header only.
    static std::optional<Layout> layoutOf(const QString &path);

    /// Whether the file is a TIFF file as long as its own header says, which that of a converter
    /// killed in mid-write isn't. Looks at the header only, not at the samples.
    static bool isWhole(const QString &path);

    /// Writes an uncompressed TIFF file, in full under another name and then moved into place.
    /// False when that failed; then a file that was there before is still the old one.
    [[nodiscard]] bool write(const QString &path) const;

    bool isEmpty() const { return m_bytes.isEmpty(); }
    const Layout &layout() const { return m_layout; }
    int width() const { return m_layout.width; }
    int height() const { return m_layout.height; }
    int samplesPerPixel() const { return m_layout.samplesPerPixel; }
    int bitsPerSample() const { return m_layout.bitsPerSample; }
    qsizetype bytesPerRow() const { return m_layout.bytesPerRow; }

    /// The samples, row by row, padding included.
    const QByteArray &bytes() const { return m_bytes; }
    /// The same for writing; copies them first if another bitmap or image shares them.
    uchar *data() { return reinterpret_cast<uchar *>(m_bytes.data()); }

    /// The same with 8 bits a sample: the upper ones of 16, without padding. Any other bitmap comes
    /// back as it is.
    TiffBitmap eightBits() const;

    /// An image that shares the bytes. Only grey, RGB and RGBA of 8 bits; otherwise a null image.
    QImage toImage() const;

private:
    Layout m_layout;
    QByteArray m_bytes;
};

} // namespace filmwright
