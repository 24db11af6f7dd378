// SPDX-License-Identifier: MIT
#include "mlv_dump/extraction.h"

#include "raw/error.h"
#include "recordingbuilder.h"
#include "support/testprogram.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <fcntl.h>
#include <unistd.h>

using namespace mlvdump;

namespace {

/// An extraction of all frames of a recording into a folder of its own.
class Run
{
public:
    explicit Run(const RecordingBuilder &builder)
        : m_recording(builder.write(m_input.filePath(QStringLiteral("a.MLV"))).toStdString())
        , m_format(mlv::frameFormat(*m_recording.rawInfo()))
        , m_calibration({}, {}, m_format)
        , m_tags(m_recording, m_format, mlvdump::colourMatrix(*m_recording.rawInfo()), "a")
        , m_sources(m_recording, {})
    {
    }

    std::size_t extract(unsigned threads)
    {
        const auto printed = m_input.filePath(QStringLiteral("printed"));
        const int descriptor = ::open(printed.toLocal8Bit().constData(),
                                      O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
        Output output(descriptor);
        const Extraction::Job job{m_recording,
                                  m_calibration,
                                  m_tags,
                                  m_sources,
                                  folder().filePath(QStringLiteral("tmp")).toStdString(),
                                  threads};
        auto plan = planFrames(m_recording.videoFrames(), {});
        try {
            const auto count = Extraction(job, std::move(plan.frames), output).run();
            finish(output, descriptor, printed);
            return count;
        } catch (...) {
            finish(output, descriptor, printed);
            throw;
        }
    }

    /// Leaves so many bytes of the recording, as another program would that writes to it.
    void cutRecording(qint64 bytes) const
    {
        QVERIFY(QFile::resize(m_input.filePath(QStringLiteral("a.MLV")), bytes));
    }

    QDir folder() const { return QDir(m_output.path()); }
    QByteArray lines() const { return m_lines; }
    QStringList names() const { return folder().entryList(QDir::Files, QDir::Name); }
    QByteArray content(int number) const
    {
        QFile file(
            folder().filePath(QStringLiteral("tmp%1.dng").arg(number, 6, 10, QLatin1Char('0'))));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

private:
    void finish(Output &output, int descriptor, const QString &printed)
    {
        output.flush();
        ::close(descriptor);
        QFile file(printed);
        m_lines = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    QTemporaryDir m_input;
    QTemporaryDir m_output;
    mlv::Recording m_recording;
    mlv::FrameFormat m_format;
    Calibration m_calibration;
    FrameTags m_tags;
    SourceFiles m_sources;
    QByteArray m_lines;
};

RecordingBuilder recordingOf(int frames)
{
    RecordingBuilder builder;
    builder.addRawInfo();
    for (int i = 0; i < frames; ++i)
        builder.addFrame(static_cast<quint32>(i), static_cast<quint16>(3000 + i));
    return builder;
}

/// An LZMA frame whose data are damaged behind a plausible start.
QByteArray damagedLzmaFrame()
{
    return QByteArray::fromHex("400500005d00001000") + QByteArray(200, '\xee');
}

} // namespace

class TestExtraction : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void manyThreadsWriteAndPrintWhatOneDoes();
    void everyFrameIsReportedInOrder();
    void samplesAreThoseOfTheRecording();
    void failedRunLeavesTheLastFrameOut();
    void lastCountedFrameWaitsForThoseThatFillGaps();
    void recordingWithoutAnyGoodFrameIsAnError();
    void recordingThatBecomesShorterIsNoDamage();
};

void TestExtraction::manyThreadsWriteAndPrintWhatOneDoes()
{
    const auto builder = recordingOf(200);
    Run one(builder);
    Run many(builder);
    QCOMPARE(one.extract(1), std::size_t{200});
    QCOMPARE(many.extract(8), std::size_t{200});
    QCOMPARE(many.lines(), one.lines());
    QCOMPARE(many.names(), one.names());
    QCOMPARE(one.names().size(), 200);
    for (int i = 0; i < 200; ++i)
        QCOMPARE(many.content(i), one.content(i));
}

void TestExtraction::everyFrameIsReportedInOrder()
{
    Run run(recordingOf(3));
    run.extract(3);
    QCOMPARE(run.lines(), QByteArray("Frame 1 of 3\nFrame 2 of 3\nFrame 3 of 3\n"));
}

void TestExtraction::samplesAreThoseOfTheRecording()
{
    Run run(recordingOf(2));
    run.extract(2);
    auto expected = RecordingBuilder::frameOf(3001);
    raw::swapWordBytes(std::as_writable_bytes(
        std::span(expected.data(), static_cast<std::size_t>(expected.size()))));
    QCOMPARE(run.content(1).right(expected.size()), expected);
}

void TestExtraction::failedRunLeavesTheLastFrameOut()
{
    // Whoever sees as many frames as the report counts takes the extraction for complete.
    Run run(recordingOf(20));
    QVERIFY(run.folder().mkpath(QStringLiteral("tmp000007.dng/in the way")));
    QVERIFY_THROWS_EXCEPTION(output::WriteError, run.extract(4));
    QVERIFY(run.names().contains(QStringLiteral("tmp000006.dng")));
    QVERIFY(!run.names().contains(QStringLiteral("tmp000019.dng")));
    QVERIFY(run.names().filter(QStringLiteral(".part")).isEmpty());
    QVERIFY(!run.lines().contains("Frame 8 of 20"));
}

void TestExtraction::lastCountedFrameWaitsForThoseThatFillGaps()
{
    // Three frames are counted, seven are written: number 2 may be there only when number 6 is.
    RecordingBuilder builder;
    builder.addRawInfo().addFrame(0, 3000).addFrame(1, 3001).addFrame(6, 3006);
    Run failed(builder);
    QVERIFY(failed.folder().mkpath(QStringLiteral("tmp000006.dng/in the way")));
    QVERIFY_THROWS_EXCEPTION(output::WriteError, failed.extract(2));
    QCOMPARE(failed.names(),
             (QStringList{QStringLiteral("tmp000000.dng"), QStringLiteral("tmp000001.dng"),
                          QStringLiteral("tmp000003.dng"), QStringLiteral("tmp000004.dng"),
                          QStringLiteral("tmp000005.dng")}));
    Run whole(builder);
    QCOMPARE(whole.extract(2), std::size_t{7});
    QCOMPARE(whole.names().size(), 7);
}

void TestExtraction::recordingWithoutAnyGoodFrameIsAnError()
{
    RecordingBuilder builder;
    builder.header.videoClass |= mlv::videoclass::lzma;
    builder.addRawInfo();
    for (quint32 i = 0; i < 10; ++i)
        builder.addFrameData(i, damagedLzmaFrame());
    Run run(builder);
    QVERIFY_THROWS_EXCEPTION(raw::Error, run.extract(4));
    QVERIFY(run.names().isEmpty());
}

void TestExtraction::recordingThatBecomesShorterIsNoDamage()
{
    // What can't be read is not replaced by another frame.
    const auto builder = recordingOf(20);
    Run half(builder);
    half.cutRecording(builder.bytes().size() / 2);
    QVERIFY_THROWS_EXCEPTION(raw::ReadError, half.extract(2));
    QVERIFY(half.names().contains(QStringLiteral("tmp000000.dng")));
    QVERIFY(!half.names().contains(QStringLiteral("tmp000019.dng")));
    QVERIFY(!half.lines().contains("damaged"));

    Run none(builder);
    none.cutRecording(1000);
    QVERIFY_THROWS_EXCEPTION(raw::ReadError, none.extract(2));
    QVERIFY(none.names().isEmpty());
}

FILMWRIGHT_TEST(TestExtraction, QCoreApplication)
#include "tst_extraction.moc"
