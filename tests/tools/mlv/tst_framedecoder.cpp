// SPDX-License-Identifier: MIT
#include "mlv/framedecoder.h"

#include "raw/error.h"

#include "recordingbuilder.h"
#include "support/testprogram.h"
#include "toolrun.h"

#include <QTemporaryDir>
#include <QTest>

class TestFrameDecoder : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void rowPairsAreThoseOfTheFrame_data();
    void rowPairsAreThoseOfTheFrame();
    void rowPairsOfACutOffFrameAreRefused();
};

void TestFrameDecoder::rowPairsAreThoseOfTheFrame_data()
{
    QTest::addColumn<QString>("name");
    for (const char *name : {"plain14", "bits10", "bits12", "bits16", "lossless14", "lzma14"})
        QTest::newRow(name) << QStringLiteral("recordings/%1.MLV").arg(QLatin1String(name));
}

void TestFrameDecoder::rowPairsAreThoseOfTheFrame()
{
    QFETCH(const QString, name);
    const mlv::Recording recording(testData(name).toStdString());
    const auto &block = recording.videoFrames().back();
    mlv::FrameDecoder whole(recording);
    mlv::FrameDecoder sparse(recording);
    const auto samples = whole.decode(block);
    const std::size_t pair = 2 * static_cast<std::size_t>(whole.format().width);
    const std::size_t pairs = samples.size() / pair;
    for (const std::size_t step : {1U, 3U, 4U, 1000U}) {
        const auto kept = sparse.decodeRowPairs(block, static_cast<int>(step));
        QCOMPARE(kept.size(), (pairs + step - 1) / step * pair);
        for (std::size_t i = 0; i * pair < kept.size(); ++i)
            QVERIFY(std::ranges::equal(kept.subspan(i * pair, pair),
                                       samples.subspan(i * step * pair, pair)));
    }
}

void TestFrameDecoder::rowPairsOfACutOffFrameAreRefused()
{
    const QTemporaryDir folder;
    const mlv::Recording recording(RecordingBuilder()
                                       .addRawInfo()
                                       .addFrame(0, 3000)
                                       .write(folder.filePath(QStringLiteral("a.MLV")))
                                       .toStdString());
    auto block = recording.videoFrames().front();
    --block.size;
    mlv::FrameDecoder decoder(recording);
    QVERIFY_THROWS_EXCEPTION(raw::Error, decoder.decodeRowPairs(block, 4));
}

FILMWRIGHT_TEST(TestFrameDecoder, QCoreApplication)
#include "tst_framedecoder.moc"
