// SPDX-License-Identifier: MIT
#include "mlv_dump/average.h"

#include "raw/error.h"
#include "recordingbuilder.h"
#include "support/testprogram.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <fcntl.h>
#include <unistd.h>

using namespace mlvdump;

class TestAverage : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void halfIsRoundedUp();
    void recordingThatBecomesShorterHasNoAverage();

private:
    Average averageOf(const mlv::Recording &recording) const
    {
        const int descriptor = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
        Output output(descriptor);
        const Calibration none({}, {}, mlv::frameFormat(*recording.rawInfo()));
        try {
            auto average = averageFrames(recording, none, 2, output);
            output.flush();
            ::close(descriptor);
            return average;
        } catch (...) {
            output.flush();
            ::close(descriptor);
            throw;
        }
    }

    QTemporaryDir m_folder;
};

void TestAverage::halfIsRoundedUp()
{
    const auto path = RecordingBuilder().addRawInfo().addFrame(0, 3000).addFrame(1, 3001).write(
        m_folder.filePath(QStringLiteral("a.MLV")));
    const auto average = averageOf(mlv::Recording(path.toStdString()));
    QCOMPARE(average.frames, std::size_t{2});
    QVERIFY(average.samples ==
            std::vector<std::uint16_t>(RecordingBuilder::width * RecordingBuilder::height, 3001));
}

void TestAverage::recordingThatBecomesShorterHasNoAverage()
{
    RecordingBuilder builder;
    builder.addRawInfo().addFrame(0, 3000).addFrame(1, 3001);
    const auto path = builder.write(m_folder.filePath(QStringLiteral("a.MLV")));
    const mlv::Recording recording(path.toStdString());
    QVERIFY(QFile::resize(path, builder.bytes().size() - 1));
    QVERIFY_THROWS_EXCEPTION(raw::ReadError, averageOf(recording));
}

FILMWRIGHT_TEST(TestAverage, QCoreApplication)
#include "tst_average.moc"
