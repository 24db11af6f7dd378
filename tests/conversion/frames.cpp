// SPDX-License-Identifier: MIT
#include "frames.h"

#include <QFile>

#include <tiffio.h>

#include <cstdint>
#include <vector>

using filmwright::TiffBitmap;

TiffBitmap countingBitmap(int width, int height, int start)
{
    QByteArray bytes(qsizetype(3) * width * height, Qt::Uninitialized);
    for (qsizetype i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<char>((i + start) & 0xff);
    return TiffBitmap({width, height, 3, 8, qsizetype(3) * width}, bytes);
}

bool writeRampDng(const QString &path, int width, int height)
{
    constexpr float identity[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
    constexpr float neutral[3] = {1, 1, 1};
    constexpr std::uint16_t patternSize[2] = {2, 2};
    constexpr std::uint8_t version[4] = {1, 4, 0, 0};
    constexpr std::uint32_t white = 65535;

    TIFF *dng = TIFFOpen(QFile::encodeName(path).constData(), "w");
    if (!dng)
        return false;
    TIFFSetField(dng, TIFFTAG_SUBFILETYPE, 0);
    TIFFSetField(dng, TIFFTAG_IMAGEWIDTH, width);
    TIFFSetField(dng, TIFFTAG_IMAGELENGTH, height);
    TIFFSetField(dng, TIFFTAG_BITSPERSAMPLE, 16);
    TIFFSetField(dng, TIFFTAG_SAMPLESPERPIXEL, 1);
    TIFFSetField(dng, TIFFTAG_COMPRESSION, COMPRESSION_NONE);
    TIFFSetField(dng, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_CFA);
    TIFFSetField(dng, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(dng, TIFFTAG_ROWSPERSTRIP, height);
    TIFFSetField(dng, TIFFTAG_MAKE, "Test");
    TIFFSetField(dng, TIFFTAG_MODEL, "Camera");
    TIFFSetField(dng, TIFFTAG_CFAREPEATPATTERNDIM, patternSize);
    TIFFSetField(dng, TIFFTAG_CFAPATTERN, 4, "\0\1\1\2");
    TIFFSetField(dng, TIFFTAG_DNGVERSION, version);
    TIFFSetField(dng, TIFFTAG_UNIQUECAMERAMODEL, "Test Camera");
    TIFFSetField(dng, TIFFTAG_COLORMATRIX1, 9, identity);
    TIFFSetField(dng, TIFFTAG_ASSHOTNEUTRAL, 3, neutral);
    TIFFSetField(dng, TIFFTAG_CALIBRATIONILLUMINANT1, 21); // D65
    TIFFSetField(dng, TIFFTAG_WHITELEVEL, 1, &white);
    bool written = true;
    std::vector<std::uint16_t> row(static_cast<std::size_t>(width));
    for (std::size_t x = 0; x < row.size(); ++x)
        row[x] = static_cast<std::uint16_t>(x * 16000 / row.size());
    for (int y = 0; y < height; ++y)
        written = written && TIFFWriteScanline(dng, row.data(), static_cast<std::uint32_t>(y)) == 1;
    TIFFClose(dng);
    return written;
}
