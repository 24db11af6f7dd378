// SPDX-License-Identifier: MIT
#include "conversion/hdrdualimagesmerge.h"
#include "conversion/mergebitmaps.h"
#include "frames.h"
#include "mergereference.h"
#include "support/logcapture.h"
#include "support/testprogram.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace filmwright;

class tst_HDRDualImagesMerge : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void mergedFrameIsNamedAfterTheFirst();
    void sourcesStayAsTheyAre();
    void existingResultIsKept();
    void missingExtractionPathIsLoggedOncePerCall();
    void existingResultIsLookedForBeforeTheExtractionPath();
    void unreadableFrameSkipsThePair_data();
    void unreadableFrameSkipsThePair();
    void missingFolderIsLogged();

    void nextPairReusesTheFrameInMemory();
    void changedFrameIsReadAgain();
    void clearedPathLetsGoOfTheFrame();
    void chainEqualsSinglePairs();

    void alphaIsTheFirst();
    void paddedRowsDrift();
    void paddingOfAPixelMovesEveryRow();
    void wideSamplesAreReadAsBytes();
    void deepBitmapsAreMergedBySample();
    void unfitDeepBitmapsAreLeftAlone();
    void deepFramesAreMergedWhenAskedFor();
    void largerSecondIsReadAtTheSameOffsets();
    void unfitBitmapsAreLeftAlone_data();
    void unfitBitmapsAreLeftAlone();
    void sharedBytesAreCopied();

private:
    QString frame(int number) const
    {
        return m_folder->filePath(
            QStringLiteral("tmp%1.tiff").arg(number, 6, 10, QLatin1Char('0')));
    }
    QString mergedFrame(int number) const
    {
        return m_hdr + QLatin1Char('/') + QFileInfo(frame(number)).fileName();
    }
    void merge(HDRDualImagesMerge &merger, int first, int second) const
    {
        merger.setExtractionPath(m_hdr);
        merger.setFirstImagePath(frame(first));
        merger.setSecondImagePath(frame(second));
        merger.hdrMerge();
    }
    void rewriteUnnoticed(int number, const TiffBitmap &bitmap) const;

    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_hdr;
};

namespace {

QByteArray referenceOf(const QByteArray &first, const QByteArray &second)
{
    QByteArray result = first;
    mergeReference(reinterpret_cast<const std::uint8_t *>(first.constData()),
                   reinterpret_cast<const std::uint8_t *>(second.constData()),
                   reinterpret_cast<std::uint8_t *>(result.data()), std::size_t(first.size()) / 3);
    return result;
}

QByteArray countingBytes(int count, int start, int step)
{
    QByteArray bytes;
    for (int i = 0; i < count; ++i)
        bytes.append(static_cast<char>(start + i * step));
    return bytes;
}

} // namespace

void tst_HDRDualImagesMerge::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_hdr = m_folder->filePath(QStringLiteral("hdr"));
    QVERIFY(QDir().mkdir(m_hdr));
    for (int i = 0; i < 3; ++i)
        QVERIFY(countingBitmap(5, 3, 40 * i).write(frame(i)));
}

// Another content of the same length, with the file's old time.
void tst_HDRDualImagesMerge::rewriteUnnoticed(int number, const TiffBitmap &bitmap) const
{
    const QDateTime modified = QFileInfo(frame(number)).lastModified();
    QVERIFY(bitmap.write(frame(number)));
    QFile file(frame(number));
    QVERIFY(file.open(QIODevice::ReadWrite));
    QVERIFY(file.setFileTime(modified, QFileDevice::FileModificationTime));
}

void tst_HDRDualImagesMerge::mergedFrameIsNamedAfterTheFirst()
{
    HDRDualImagesMerge merger;
    merge(merger, 0, 1);
    QCOMPARE(QDir(m_hdr).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
             QStringList(QStringLiteral("tmp000000.tiff")));
    const TiffBitmap result = TiffBitmap::read(mergedFrame(0));
    QCOMPARE(result.width(), 5);
    QCOMPARE(result.height(), 3);
    QCOMPARE(result.samplesPerPixel(), 3);
    QCOMPARE(result.bytes(),
             referenceOf(countingBitmap(5, 3, 0).bytes(), countingBitmap(5, 3, 40).bytes()));
}

void tst_HDRDualImagesMerge::sourcesStayAsTheyAre()
{
    HDRDualImagesMerge merger;
    merge(merger, 0, 1);
    for (int i = 0; i < 3; ++i)
        QCOMPARE(TiffBitmap::read(frame(i)).bytes(), countingBitmap(5, 3, 40 * i).bytes());
}

void tst_HDRDualImagesMerge::existingResultIsKept()
{
    HDRDualImagesMerge merger;
    merge(merger, 0, 1);
    const QByteArray before = TiffBitmap::read(mergedFrame(0)).bytes();
    merge(merger, 0, 2);
    QCOMPARE(TiffBitmap::read(mergedFrame(0)).bytes(), before);
}

void tst_HDRDualImagesMerge::missingExtractionPathIsLoggedOncePerCall()
{
    HDRDualImagesMerge merger;
    merger.setFirstImagePath(frame(0));
    merger.setSecondImagePath(frame(1));
    const LogCapture log;
    merger.hdrMerge();
    merger.hdrMerge();
    QCOMPARE(LogCapture::lines(), QStringList(2, QStringLiteral("No extraction path defined.")));
}

void tst_HDRDualImagesMerge::existingResultIsLookedForBeforeTheExtractionPath()
{
    // Without a folder, the result's name alone is a path from the current folder.
    const QString current = QDir::currentPath();
    QVERIFY(QDir::setCurrent(m_folder->path()));
    HDRDualImagesMerge merger;
    merger.setFirstImagePath(frame(0));
    merger.setSecondImagePath(frame(1));
    {
        const LogCapture log;
        merger.hdrMerge();
        QCOMPARE(LogCapture::lines(), QStringList());
    }
    QVERIFY(QDir::setCurrent(current));
}

void tst_HDRDualImagesMerge::unreadableFrameSkipsThePair_data()
{
    QTest::addColumn<int>("first");
    QTest::addColumn<int>("second");
    QTest::newRow("first missing") << 7 << 0;
    QTest::newRow("second missing") << 0 << 7;
    QTest::newRow("first cut") << 8 << 0;
    QTest::newRow("second cut") << 0 << 8;
    QTest::newRow("second smaller") << 0 << 9;
}

void tst_HDRDualImagesMerge::unreadableFrameSkipsThePair()
{
    QFETCH(int, first);
    QFETCH(int, second);
    QVERIFY(countingBitmap(5, 3).write(frame(8)));
    QVERIFY(QFile::resize(frame(8), 30));
    QVERIFY(countingBitmap(5, 2).write(frame(9)));
    HDRDualImagesMerge merger;
    {
        const LogCapture log;
        merge(merger, first, second);
        QCOMPARE(LogCapture::lines(),
                 QStringList(
                     QStringLiteral("Unable to merge %1 and %2").arg(frame(first), frame(second))));
    }
    QVERIFY(QDir(m_hdr).isEmpty());
    merge(merger, 0, 1);
    QVERIFY(QFile::exists(mergedFrame(0)));
}

void tst_HDRDualImagesMerge::missingFolderIsLogged()
{
    QVERIFY(QDir().rmdir(m_hdr));
    HDRDualImagesMerge merger;
    const LogCapture log;
    merge(merger, 0, 1);
    QCOMPARE(LogCapture::lines(),
             QStringList(QStringLiteral("Unable to write %1").arg(mergedFrame(0))));
}

void tst_HDRDualImagesMerge::nextPairReusesTheFrameInMemory()
{
    HDRDualImagesMerge merger;
    merge(merger, 0, 1);
    rewriteUnnoticed(1, countingBitmap(5, 3, 200));
    merge(merger, 1, 2);
    QCOMPARE(TiffBitmap::read(mergedFrame(1)).bytes(),
             referenceOf(countingBitmap(5, 3, 40).bytes(), countingBitmap(5, 3, 80).bytes()));
}

void tst_HDRDualImagesMerge::changedFrameIsReadAgain()
{
    HDRDualImagesMerge merger;
    merge(merger, 0, 1);
    rewriteUnnoticed(1, countingBitmap(5, 3, 200));
    QFile file(frame(1));
    QVERIFY(file.open(QIODevice::ReadWrite));
    QVERIFY(file.setFileTime(QDateTime::currentDateTime().addSecs(10),
                             QFileDevice::FileModificationTime));
    merge(merger, 1, 2);
    QCOMPARE(TiffBitmap::read(mergedFrame(1)).bytes(),
             referenceOf(countingBitmap(5, 3, 200).bytes(), countingBitmap(5, 3, 80).bytes()));
}

void tst_HDRDualImagesMerge::clearedPathLetsGoOfTheFrame()
{
    HDRDualImagesMerge merger;
    merge(merger, 0, 1);
    merger.setSecondImagePath(QString());
    rewriteUnnoticed(1, countingBitmap(5, 3, 200));
    merge(merger, 1, 2);
    QCOMPARE(TiffBitmap::read(mergedFrame(1)).bytes(),
             referenceOf(countingBitmap(5, 3, 200).bytes(), countingBitmap(5, 3, 80).bytes()));
}

void tst_HDRDualImagesMerge::chainEqualsSinglePairs()
{
    HDRDualImagesMerge merger;
    merge(merger, 0, 1);
    merge(merger, 1, 2);
    for (int i = 0; i < 2; ++i) {
        QCOMPARE(TiffBitmap::read(mergedFrame(i)).bytes(),
                 referenceOf(countingBitmap(5, 3, 40 * i).bytes(),
                             countingBitmap(5, 3, 40 * (i + 1)).bytes()));
    }
}

void tst_HDRDualImagesMerge::alphaIsTheFirst()
{
    // More pixels than fit into one block of the way that spread pixels take.
    constexpr int width = 700;
    TiffBitmap first({width, 2, 4, 8, 4 * width}, countingBytes(8 * width, 3, 7));
    const TiffBitmap second({width, 2, 4, 8, 4 * width}, countingBytes(8 * width, 90, 5));
    const QByteArray before = first.bytes();
    QVERIFY(mergeBitmaps(&first, second));
    for (qsizetype i = 0; i < before.size(); i += 4) {
        QCOMPARE(first.bytes().mid(i, 3), referenceOf(before.mid(i, 3), second.bytes().mid(i, 3)));
        QCOMPARE(first.bytes().at(i + 3), before.at(i + 3));
    }
}

void tst_HDRDualImagesMerge::paddedRowsDrift()
{
    // Rows of 7 bytes count as 6: the second row begins at the padding of the first.
    TiffBitmap first({2, 2, 3, 8, 7}, countingBytes(14, 10, 9));
    const TiffBitmap second({2, 2, 3, 8, 7}, countingBytes(14, 100, 4));
    const QByteArray before = first.bytes();
    QVERIFY(mergeBitmaps(&first, second));
    QCOMPARE(first.bytes().left(12), referenceOf(before.left(12), second.bytes().left(12)));
    QCOMPARE(first.bytes().mid(12), before.mid(12));
}

void tst_HDRDualImagesMerge::paddingOfAPixelMovesEveryRow()
{
    // Padding of a whole pixel counts as one.
    TiffBitmap first({1, 2, 3, 8, 6}, countingBytes(12, 10, 9));
    const TiffBitmap second({1, 2, 3, 8, 6}, countingBytes(12, 100, 4));
    const QByteArray before = first.bytes();
    QVERIFY(mergeBitmaps(&first, second));
    QCOMPARE(first.bytes(), referenceOf(before, second.bytes()));
}

void tst_HDRDualImagesMerge::wideSamplesAreReadAsBytes()
{
    // 16-bit rows of 12 bytes hold 6 samples, and so count as 6 bytes.
    TiffBitmap first({2, 2, 3, 16, 12}, countingBytes(24, 10, 9));
    const TiffBitmap second({2, 2, 3, 16, 12}, countingBytes(24, 100, 4));
    const QByteArray before = first.bytes();
    QVERIFY(mergeBitmaps(&first, second));
    QCOMPARE(first.bytes().left(12), referenceOf(before.left(12), second.bytes().left(12)));
    QCOMPARE(first.bytes().mid(12), before.mid(12));
}

void tst_HDRDualImagesMerge::deepBitmapsAreMergedBySample()
{
    TiffBitmap first({2, 2, 3, 16, 12}, countingBytes(24, 10, 9));
    const TiffBitmap second({2, 2, 3, 16, 12}, countingBytes(24, 100, 4));
    QByteArray expected(24, 0);
    mergeReference(reinterpret_cast<const std::uint16_t *>(first.bytes().constData()),
                   reinterpret_cast<const std::uint16_t *>(second.bytes().constData()),
                   reinterpret_cast<std::uint16_t *>(expected.data()), 4);
    QVERIFY(mergeDeepBitmaps(&first, second));
    QCOMPARE(first.bytes(), expected);
}

void tst_HDRDualImagesMerge::unfitDeepBitmapsAreLeftAlone()
{
    const TiffBitmap deep({2, 2, 3, 16, 12}, countingBytes(24, 10, 9));
    for (const TiffBitmap &other : {TiffBitmap(), TiffBitmap({2, 2, 3, 8, 6}, QByteArray(12, 'a')),
                                    TiffBitmap({2, 1, 3, 16, 12}, QByteArray(12, 'a')),
                                    TiffBitmap({2, 2, 3, 16, 14}, QByteArray(28, 'a'))}) {
        TiffBitmap first = deep;
        QVERIFY(!mergeDeepBitmaps(&first, other));
        QCOMPARE(first.bytes(), deep.bytes());
    }
}

void tst_HDRDualImagesMerge::deepFramesAreMergedWhenAskedFor()
{
    const QTemporaryDir folder;
    const QString hdr = folder.filePath(QStringLiteral("hdr"));
    QVERIFY(QDir().mkpath(hdr));
    const QString one = folder.filePath(QStringLiteral("1.tiff"));
    const QString two = folder.filePath(QStringLiteral("2.tiff"));
    TiffBitmap first({2, 2, 3, 16, 12}, countingBytes(24, 10, 9));
    const TiffBitmap second({2, 2, 3, 16, 12}, countingBytes(24, 100, 4));
    QVERIFY(first.write(one) && second.write(two));
    HDRDualImagesMerge merge;
    merge.setSixteenBits(true);
    merge.setExtractionPath(hdr);
    merge.setFirstImagePath(one);
    merge.setSecondImagePath(two);
    merge.hdrMerge();
    QVERIFY(mergeDeepBitmaps(&first, second));
    const TiffBitmap merged = TiffBitmap::read(hdr + QStringLiteral("/1.tiff"));
    QCOMPARE(merged.bitsPerSample(), 16);
    QCOMPARE(merged.bytes(), first.bytes());
}

void tst_HDRDualImagesMerge::largerSecondIsReadAtTheSameOffsets()
{
    TiffBitmap first({2, 2, 3, 8, 6}, countingBytes(12, 10, 9));
    const TiffBitmap second({3, 2, 3, 8, 9}, countingBytes(18, 100, 4));
    const QByteArray before = first.bytes();
    QVERIFY(mergeBitmaps(&first, second));
    QCOMPARE(first.bytes(), referenceOf(before, second.bytes().left(12)));
}

void tst_HDRDualImagesMerge::unfitBitmapsAreLeftAlone_data()
{
    QTest::addColumn<TiffBitmap>("first");
    QTest::addColumn<TiffBitmap>("second");
    const TiffBitmap rgb({2, 2, 3, 8, 6}, countingBytes(12, 10, 9));
    QTest::newRow("both empty") << TiffBitmap() << TiffBitmap();
    QTest::newRow("first empty") << TiffBitmap() << rgb;
    QTest::newRow("second empty") << rgb << TiffBitmap();
    QTest::newRow("second shorter") << rgb << TiffBitmap({2, 1, 3, 8, 6}, QByteArray(6, 'a'));
    QTest::newRow("grey") << TiffBitmap({2, 2, 1, 8, 2}, QByteArray(4, 'a')) << rgb;
    QTest::newRow("two samples") << TiffBitmap({2, 2, 2, 8, 4}, QByteArray(8, 'a')) << rgb;
    QTest::newRow("less than 8 bits") << TiffBitmap({2, 2, 3, 4, 3}, QByteArray(6, 'a')) << rgb;
}

void tst_HDRDualImagesMerge::unfitBitmapsAreLeftAlone()
{
    QFETCH(TiffBitmap, first);
    QFETCH(TiffBitmap, second);
    const QByteArray before = first.bytes();
    QVERIFY(!mergeBitmaps(&first, second));
    QCOMPARE(first.bytes(), before);
}

void tst_HDRDualImagesMerge::sharedBytesAreCopied()
{
    TiffBitmap first = countingBitmap(5, 3);
    const TiffBitmap copy = first;
    QVERIFY(mergeBitmaps(&first, countingBitmap(5, 3, 100)));
    QCOMPARE(copy.bytes(), countingBitmap(5, 3).bytes());
    QVERIFY(first.bytes() != copy.bytes());
}

FILMWRIGHT_TEST(tst_HDRDualImagesMerge, QCoreApplication)
#include "tst_hdrdualimagesmerge.moc"
