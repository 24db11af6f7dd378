// SPDX-License-Identifier: MIT
#include "conversion/tiffbitmap.h"
#include "frames.h"
#include "support/fulldisk.h"
#include "support/testprogram.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <tiffio.h>

#include <cstdint>

using namespace filmwright;

class tst_TiffBitmap : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void emptyHasNoMeasures();
    void writtenIsReadBack_data();
    void writtenIsReadBack();
    void paddingIsNotWritten();
    void severalStripsAreOneBitmap();
    void bigEndianSamplesAreTurned();
    void copyKeepsItsBytes();
    void unreadableIsEmpty_data();
    void unreadableIsEmpty();
    void hostileSizesAreRefused_data();
    void hostileSizesAreRefused();
    void wholeFile();
    void cutFileIsNotWhole_data();
    void cutFileIsNotWhole();
    void failedWriteKeepsTheOldFile();
    void fullDiskKeepsTheOldFile();
    void imageSharesTheBytes();
    void imageOutlivesTheBitmap();
    void imageFormats_data();
    void imageFormats();
    void deepSamplesKeepTheirUpperBits();
    void otherBitmapsComeBackAsTheyAre();

private:
    QString path(const QString &name = QStringLiteral("a.tiff")) const
    {
        return m_folder.filePath(name);
    }
    QByteArray contents(const QString &path) const;
    void writeFile(const QString &path, const QByteArray &bytes) const;

    QTemporaryDir m_folder;
};

namespace {

// A TIFF header in front of the samples, as dcraw writes it: little-endian, one strip.
QByteArray tiffWithHeaderFirst(std::uint32_t width, std::uint32_t height, std::uint16_t samples,
                               std::uint16_t bits, std::uint32_t stripBytes, qsizetype present)
{
    QByteArray file("II*\0\x08\0\0\0", 8);
    const auto put16 = [&](std::uint32_t value) {
        file.append(char(value & 0xff)).append(char(value >> 8 & 0xff));
    };
    const auto put32 = [&](std::uint32_t value) {
        put16(value & 0xffff);
        put16(value >> 16);
    };
    constexpr std::uint32_t entries = 9;
    constexpr std::uint32_t shortType = 3;
    constexpr std::uint32_t longType = 4;
    const auto entry = [&](std::uint32_t tag, std::uint32_t type, std::uint32_t value) {
        put16(tag);
        put16(type);
        put32(1);
        put32(value);
    };
    put16(entries);
    entry(TIFFTAG_IMAGEWIDTH, longType, width);
    entry(TIFFTAG_IMAGELENGTH, longType, height);
    entry(TIFFTAG_BITSPERSAMPLE, shortType, bits);
    entry(TIFFTAG_COMPRESSION, shortType, COMPRESSION_NONE);
    entry(TIFFTAG_PHOTOMETRIC, shortType, samples >= 3 ? PHOTOMETRIC_RGB : PHOTOMETRIC_MINISBLACK);
    entry(TIFFTAG_STRIPOFFSETS, longType, 8 + 2 + entries * 12 + 4);
    entry(TIFFTAG_SAMPLESPERPIXEL, shortType, samples);
    entry(TIFFTAG_ROWSPERSTRIP, longType, height);
    entry(TIFFTAG_STRIPBYTECOUNTS, longType, stripBytes);
    put32(0);
    return file + QByteArray(present, 'x');
}

} // namespace

QByteArray tst_TiffBitmap::contents(const QString &path) const
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void tst_TiffBitmap::writeFile(const QString &path, const QByteArray &bytes) const
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(bytes), bytes.size());
}

void tst_TiffBitmap::emptyHasNoMeasures()
{
    const TiffBitmap bitmap;
    QVERIFY(bitmap.isEmpty());
    QCOMPARE(bitmap.width(), 0);
    QCOMPARE(bitmap.height(), 0);
    QCOMPARE(bitmap.samplesPerPixel(), 0);
    QCOMPARE(bitmap.bitsPerSample(), 0);
    QCOMPARE(bitmap.bytesPerRow(), 0);
    QVERIFY(bitmap.toImage().isNull());
    QVERIFY(!bitmap.write(path()));
    QVERIFY(!QFile::exists(path()));
}

void tst_TiffBitmap::writtenIsReadBack_data()
{
    QTest::addColumn<int>("samples");
    QTest::addColumn<int>("bits");
    for (const int samples : {1, 2, 3, 4, 5})
        for (const int bits : {8, 16})
            QTest::addRow("%d samples of %d bits", samples, bits) << samples << bits;
}

void tst_TiffBitmap::writtenIsReadBack()
{
    QFETCH(int, samples);
    QFETCH(int, bits);
    const qsizetype row = qsizetype(7) * samples * bits / 8;
    QByteArray bytes;
    for (int i = 0; i < 5 * row; ++i)
        bytes.append(static_cast<char>(i));
    QVERIFY(TiffBitmap({7, 5, samples, bits, row}, bytes).write(path()));
    const TiffBitmap back = TiffBitmap::read(path());
    QCOMPARE(back.width(), 7);
    QCOMPARE(back.height(), 5);
    QCOMPARE(back.samplesPerPixel(), samples);
    QCOMPARE(back.bitsPerSample(), bits);
    QCOMPARE(back.bytesPerRow(), row);
    QCOMPARE(back.bytes(), bytes);
    QVERIFY(TiffBitmap::isWhole(path()));
}

void tst_TiffBitmap::paddingIsNotWritten()
{
    QVERIFY(TiffBitmap({1, 2, 3, 8, 5}, QByteArray("abc--def--")).write(path()));
    const TiffBitmap back = TiffBitmap::read(path());
    QCOMPARE(back.bytesPerRow(), 3);
    QCOMPARE(back.bytes(), QByteArray("abcdef"));
}

void tst_TiffBitmap::severalStripsAreOneBitmap()
{
    TIFF *tiff = TIFFOpen(QFile::encodeName(path()).constData(), "w");
    QVERIFY(tiff);
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, 2);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, 5);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 8);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, 2);
    char rows[] = "abcdefghij";
    for (std::uint32_t y = 0; y < 5; ++y)
        QCOMPARE(TIFFWriteScanline(tiff, rows + 2 * y, y), 1);
    TIFFClose(tiff);
    QCOMPARE(TiffBitmap::read(path()).bytes(), QByteArray("abcdefghij"));
    QVERIFY(TiffBitmap::isWhole(path()));
}

void tst_TiffBitmap::bigEndianSamplesAreTurned()
{
    TIFF *tiff = TIFFOpen(QFile::encodeName(path()).constData(), "wb");
    QVERIFY(tiff);
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, 2);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, 1);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 16);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
    std::uint16_t row[] = {0x1234, 0xabcd};
    QCOMPARE(TIFFWriteScanline(tiff, row, 0), 1);
    TIFFClose(tiff);
    const TiffBitmap bitmap = TiffBitmap::read(path());
    QCOMPARE(bitmap.bytes().size(), 4);
    QCOMPARE(memcmp(bitmap.bytes().constData(), "\x34\x12\xcd\xab", 4), 0);
}

void tst_TiffBitmap::copyKeepsItsBytes()
{
    TiffBitmap bitmap = countingBitmap(2, 2);
    const TiffBitmap copy = bitmap;
    bitmap.data()[0] = 99;
    QCOMPARE(bitmap.bytes().at(0), char(99));
    QCOMPARE(copy.bytes().at(0), char(0));
}

void tst_TiffBitmap::unreadableIsEmpty_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("not a TIFF") << QByteArray("P6\n1 1\n255\nabc");
    QTest::newRow("header only") << QByteArray("II*\0\x08\0\0\0", 8);
    QTest::newRow("directory outside") << QByteArray("II*\0\xff\xff\xff\x7f", 8);
    QTest::newRow("samples cut off") << tiffWithHeaderFirst(4, 4, 3, 8, 48, 47);
    QTest::newRow("no samples") << tiffWithHeaderFirst(4, 4, 3, 8, 48, 0);
}

void tst_TiffBitmap::unreadableIsEmpty()
{
    QFETCH(QByteArray, file);
    writeFile(path(), file);
    QVERIFY(TiffBitmap::read(path()).isEmpty());
    QVERIFY(!TiffBitmap::isWhole(path()));
    const QString missing = path(QStringLiteral("missing.tiff"));
    QVERIFY(TiffBitmap::read(missing).isEmpty());
    QVERIFY(!TiffBitmap::isWhole(missing));
    QVERIFY(TiffBitmap::read(m_folder.path()).isEmpty());
}

void tst_TiffBitmap::hostileSizesAreRefused_data()
{
    constexpr std::uint32_t huge = 0xffffffff;
    QTest::addColumn<QByteArray>("file");
    QTest::newRow("width") << tiffWithHeaderFirst(huge, 1, 3, 8, 48, 48);
    QTest::newRow("height") << tiffWithHeaderFirst(1, huge, 3, 8, 48, 48);
    QTest::newRow("both") << tiffWithHeaderFirst(0x7fffffff, 0x7fffffff, 3, 8, huge, 48);
    QTest::newRow("samples") << tiffWithHeaderFirst(4, 4, 0xffff, 8, 48, 48);
    QTest::newRow("bits") << tiffWithHeaderFirst(4, 4, 3, 0xffff, 48, 48);
    QTest::newRow("no width") << tiffWithHeaderFirst(0, 4, 3, 8, 48, 48);
    QTest::newRow("no height") << tiffWithHeaderFirst(4, 0, 3, 8, 48, 48);
    QTest::newRow("no samples") << tiffWithHeaderFirst(4, 4, 0, 8, 48, 48);
    QTest::newRow("no bits") << tiffWithHeaderFirst(4, 4, 3, 0, 48, 48);
    QTest::newRow("strip longer than the file") << tiffWithHeaderFirst(4, 4, 3, 8, huge, 47);
}

void tst_TiffBitmap::hostileSizesAreRefused()
{
    QFETCH(QByteArray, file);
    writeFile(path(), file);
    QVERIFY(TiffBitmap::read(path()).isEmpty());
    QVERIFY(!TiffBitmap::isWhole(path()));
}

void tst_TiffBitmap::wholeFile()
{
    writeFile(path(), tiffWithHeaderFirst(4, 4, 3, 8, 48, 48));
    QVERIFY(TiffBitmap::isWhole(path()));
    QCOMPARE(TiffBitmap::read(path()).bytes(), QByteArray(48, 'x'));
}

void tst_TiffBitmap::cutFileIsNotWhole_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::newRow("header first") << tiffWithHeaderFirst(4, 4, 3, 8, 48, 48);
    QVERIFY(countingBitmap(4, 4).write(path()));
    QTest::newRow("header last") << contents(path());
}

void tst_TiffBitmap::cutFileIsNotWhole()
{
    QFETCH(QByteArray, file);
    for (qsizetype length = 0; length < file.size(); ++length) {
        writeFile(path(), file.left(length));
        QVERIFY2(!TiffBitmap::isWhole(path()), qPrintable(QString::number(length)));
    }
    writeFile(path(), file);
    QVERIFY(TiffBitmap::isWhole(path()));
}

void tst_TiffBitmap::failedWriteKeepsTheOldFile()
{
    QVERIFY(countingBitmap(2, 2).write(path()));
    QVERIFY(countingBitmap(3, 3).write(path()));
    QCOMPARE(TiffBitmap::read(path()).width(), 3);
    QVERIFY(!countingBitmap(2, 2).write(path(QStringLiteral("missing/a.tiff"))));
    // A folder in the place of the file can't be replaced.
    const QString taken = path(QStringLiteral("taken"));
    QVERIFY(QDir().mkdir(taken));
    QVERIFY(!countingBitmap(2, 2).write(taken));
    QCOMPARE(QDir(m_folder.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
             QStringList({QStringLiteral("a.tiff"), QStringLiteral("taken")}));
}

void tst_TiffBitmap::fullDiskKeepsTheOldFile()
{
    QVERIFY(countingBitmap(2, 2).write(path()));
    const auto limit = static_cast<rlim_t>(QFileInfo(path()).size());
    bool written = true;
    {
        const FullDisk full(limit);
        written = countingBitmap(20, 20).write(path());
    }
    QVERIFY(!written);
    QCOMPARE(TiffBitmap::read(path()).width(), 2);
}

void tst_TiffBitmap::imageSharesTheBytes()
{
    const TiffBitmap bitmap = countingBitmap(5, 3);
    const QImage image = bitmap.toImage();
    QCOMPARE(image.size(), QSize(5, 3));
    QCOMPARE(image.constBits(), reinterpret_cast<const uchar *>(bitmap.bytes().constData()));
    QCOMPARE(image.pixelColor(1, 1), QColor(18, 19, 20));
}

void tst_TiffBitmap::imageOutlivesTheBitmap()
{
    QImage image;
    {
        TiffBitmap bitmap = countingBitmap(5, 3);
        image = bitmap.toImage();
        bitmap.data()[0] = 200; // doesn't reach the image
    }
    QCOMPARE(image.pixelColor(0, 0), QColor(0, 1, 2));
}

void tst_TiffBitmap::imageFormats_data()
{
    QTest::addColumn<int>("samples");
    QTest::addColumn<int>("bits");
    QTest::addColumn<QImage::Format>("format");
    QTest::newRow("grey") << 1 << 8 << QImage::Format_Grayscale8;
    QTest::newRow("RGB") << 3 << 8 << QImage::Format_RGB888;
    QTest::newRow("RGBA") << 4 << 8 << QImage::Format_RGBA8888;
    QTest::newRow("two samples") << 2 << 8 << QImage::Format_Invalid;
    QTest::newRow("16 bits") << 3 << 16 << QImage::Format_Invalid;
}

void tst_TiffBitmap::imageFormats()
{
    QFETCH(int, samples);
    QFETCH(int, bits);
    QFETCH(QImage::Format, format);
    const qsizetype row = qsizetype(2) * samples * bits / 8;
    QCOMPARE(TiffBitmap({2, 2, samples, bits, row}, QByteArray(2 * row, 'a')).toImage().format(),
             format);
}

void tst_TiffBitmap::deepSamplesKeepTheirUpperBits()
{
    const std::uint16_t rows[] = {0x0000, 0x00ff, 0x0100, 0x7fff, 0x8000, 0xffff, // and padding
                                  0x5555, 0x1234, 0xabcd, 0xfeff, 0x0001, 0x0203, 0x0405, 0x5555};
    const QByteArray bytes(reinterpret_cast<const char *>(rows), sizeof rows);
    const TiffBitmap shallow = TiffBitmap({2, 2, 3, 16, 14}, bytes).eightBits();
    QCOMPARE(shallow.bitsPerSample(), 8);
    QCOMPARE(shallow.bytesPerRow(), 6);
    QCOMPARE(shallow.bytes(), QByteArray::fromHex("0000017f80ff12abfe000204"));
    QCOMPARE(shallow.toImage().pixelColor(1, 0), QColor(0x7f, 0x80, 0xff));
}

void tst_TiffBitmap::otherBitmapsComeBackAsTheyAre()
{
    const TiffBitmap bitmap = countingBitmap(5, 3);
    QCOMPARE(bitmap.eightBits().bytes().constData(), bitmap.bytes().constData());
    QVERIFY(TiffBitmap().eightBits().isEmpty());
}

FILMWRIGHT_TEST(tst_TiffBitmap, QCoreApplication)
#include "tst_tiffbitmap.moc"
