// SPDX-License-Identifier: MIT
#include "conversion/mergebitmaps.h"
#include "flow/framepipe.h"

#include "support/testprogram.h"

#include <QDir>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <fcntl.h>
#include <optional>
#include <unistd.h>

using namespace filmwright;

namespace {

/// A frame that the pipe, which holds a megabyte, doesn't take at once.
constexpr int wide = 1000;

TiffBitmap picture(int number, int width, int bits)
{
    constexpr int height = 2;
    const int row = width * 3 * bits / 8;
    QByteArray bytes(row * height, '\0');
    for (qsizetype i = 0; i < bytes.size(); ++i)
        bytes[i] = char(31 * number + i);
    return {{width, height, 3, bits, row}, bytes};
}

} // namespace

class TestFramePipe : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QVERIFY(m_folder.emplace().isValid()); }
    void samplesComeInOrderAndFilesGo_data();
    void samplesComeInOrderAndFilesGo();
    void neighboursAreMerged_data();
    void neighboursAreMerged();
    void slowReaderHoldsTheFilesBack();
    void readerThatIsGoneIsTold();
    void frameOfAnotherSizeIsTold();
    void frameThatIsMissingIsToldAndTheReaderWaits();
    void destructionDoesntWaitForTheReader();

private:
    QString dng(int number) const
    {
        return m_folder->filePath(QStringLiteral("%1.dng").arg(number));
    }
    TiffBitmap add(int number, int width = 4, int bits = 8) const;
    QStringList files() const { return QDir(m_folder->path()).entryList(QDir::Files); }

    std::optional<QTemporaryDir> m_folder;
};

/// As an extraction and a conversion leave it.
TiffBitmap TestFramePipe::add(int number, int width, int bits) const
{
    const TiffBitmap bitmap = picture(number, width, bits);
    const bool written = QFile(dng(number)).open(QIODevice::WriteOnly) &&
                         bitmap.write(m_folder->filePath(QStringLiteral("%1.tiff").arg(number)));
    return written ? bitmap : TiffBitmap();
}

namespace {

/// What comes out until the pipe ends; the writer works meanwhile.
QByteArray readAll(FramePipe &pipe)
{
    const int end = fcntl(pipe.readEnd(), F_DUPFD_CLOEXEC, 0);
    pipe.closeReadEnd();
    QByteArray read;
    QByteArray chunk(1 << 16, '\0');
    for (ssize_t size = 1; size > 0;) {
        size = ::read(end, chunk.data(), static_cast<size_t>(chunk.size()));
        read += chunk.left(std::max<ssize_t>(0, size));
    }
    close(end);
    return read;
}

} // namespace

void TestFramePipe::samplesComeInOrderAndFilesGo_data()
{
    QTest::addColumn<int>("bits");
    QTest::newRow("8 bits") << 8;
    QTest::newRow("16 bits") << 16;
}

void TestFramePipe::samplesComeInOrderAndFilesGo()
{
    QFETCH(int, bits);
    QByteArray wanted;
    TiffBitmap frame;
    for (int number = 0; number < 5; ++number) {
        frame = add(number, wide * 100, bits);
        wanted += frame.bytes();
    }
    FramePipe pipe({frame.layout(), false, bits == 16});
    QSignalSpy taken(&pipe, &FramePipe::taken);
    for (int number = 0; number < 5; ++number)
        pipe.write(dng(number));
    pipe.finish();
    QVERIFY(readAll(pipe) == wanted);
    QTRY_COMPARE(taken.size(), 5);
    QCOMPARE(files(), QStringList());
}

void TestFramePipe::neighboursAreMerged_data()
{
    samplesComeInOrderAndFilesGo_data();
}

void TestFramePipe::neighboursAreMerged()
{
    QFETCH(int, bits);
    QList<TiffBitmap> frames;
    for (int number = 0; number < 4; ++number)
        frames << add(number, 4, bits);
    QByteArray wanted;
    for (int number = 0; number < 3; ++number) {
        TiffBitmap merged = frames.at(number);
        QVERIFY((bits == 16 ? mergeDeepBitmaps : mergeBitmaps)(&merged, frames.at(number + 1)));
        wanted += merged.bytes();
    }
    FramePipe pipe({frames.constFirst().layout(), true, bits == 16});
    for (int number = 0; number < 4; ++number)
        pipe.write(dng(number));
    pipe.finish();
    QVERIFY(readAll(pipe) == wanted);
    QTRY_COMPARE(files(), QStringList());
}

void TestFramePipe::slowReaderHoldsTheFilesBack()
{
    TiffBitmap frame;
    for (int number = 0; number < 4; ++number)
        frame = add(number, wide * 500); // 3 megabytes each
    FramePipe pipe({frame.layout(), false, false});
    QSignalSpy taken(&pipe, &FramePipe::taken);
    for (int number = 0; number < 4; ++number)
        pipe.write(dng(number));
    QByteArray first(frame.bytes().size(), '\0');
    for (qsizetype done = 0; done < first.size();) {
        const ssize_t size =
            ::read(pipe.readEnd(), first.data() + done, static_cast<size_t>(first.size() - done));
        QVERIFY(size > 0);
        done += size;
    }
    QTRY_COMPARE(taken.size(), 1); // the next one doesn't fit into the pipe
    QCOMPARE(files().size(), 6);
    QVERIFY(first == picture(0, wide * 500, 8).bytes());
}

void TestFramePipe::readerThatIsGoneIsTold()
{
    const TiffBitmap frame = add(0);
    add(1);
    FramePipe pipe({frame.layout(), false, false});
    QSignalSpy closed(&pipe, &FramePipe::closedByReader);
    QSignalSpy taken(&pipe, &FramePipe::taken);
    pipe.closeReadEnd();
    pipe.write(dng(0));
    pipe.write(dng(1));
    QTRY_COMPARE(closed.size(), 1);
    QCOMPARE(taken.size(), 0);
    QCOMPARE(files().size(), 4);
}

void TestFramePipe::frameOfAnotherSizeIsTold()
{
    const TiffBitmap frame = add(0);
    add(1, 5);
    FramePipe pipe({frame.layout(), false, false});
    QSignalSpy failed(&pipe, &FramePipe::failed);
    pipe.write(dng(0));
    pipe.write(dng(1));
    QTRY_COMPARE(failed.size(), 1);
    QCOMPARE(failed.constFirst().constFirst().toString(),
             QStringLiteral("the developed frame 1.tiff is of another kind than the first"));
}

/// Which would take the end for that of the movie.
void TestFramePipe::frameThatIsMissingIsToldAndTheReaderWaits()
{
    const TiffBitmap frame = add(0);
    FramePipe pipe({frame.layout(), false, false});
    QSignalSpy failed(&pipe, &FramePipe::failed);
    pipe.write(dng(7));
    pipe.finish();
    QTRY_COMPARE(failed.size(), 1);
    QCOMPARE(failed.constFirst().constFirst().toString(),
             QStringLiteral("the developed frame 7.tiff can't be read"));
    QCOMPARE(fcntl(pipe.readEnd(), F_SETFL, O_NONBLOCK), 0);
    char byte = 0;
    QCOMPARE(::read(pipe.readEnd(), &byte, 1), -1);
    QCOMPARE(errno, EAGAIN);
}

void TestFramePipe::destructionDoesntWaitForTheReader()
{
    const TiffBitmap frame = add(0, wide * 500);
    add(1, wide * 500);
    FramePipe pipe({frame.layout(), false, false});
    pipe.write(dng(0));
    pipe.write(dng(1));
    char byte = 0;
    QCOMPARE(::read(pipe.readEnd(), &byte, 1), 1); // it is at work
}

FILMWRIGHT_TEST(TestFramePipe, QCoreApplication)
#include "tst_framepipe.moc"
