// SPDX-License-Identifier: MIT
// Lossless JPEG streams, decoded by ffmpeg.
#include "sampleprogram.h"

#include "mlv_sample/losslessjpeg.h"
#include "support/testprogram.h"

#include <QTest>

#include <random>

namespace {

constexpr int smallWidth = 32;
constexpr int smallHeight = 16;

std::vector<quint16> randomFrame(int bits)
{
    std::mt19937 random(static_cast<unsigned>(bits));
    std::vector<quint16> samples(smallWidth * smallHeight);
    for (quint16 &sample : samples)
        sample = static_cast<quint16>(random() & ((1U << static_cast<unsigned>(bits)) - 1));
    return samples;
}

/// One-component streams only. ffmpeg puts the samples into the upper bits of 16.
std::vector<quint16> decodedByFfmpeg(const std::vector<std::byte> &stream, int bits)
{
    const QByteArray input(reinterpret_cast<const char *>(stream.data()),
                           static_cast<qsizetype>(stream.size()));
    const auto ended =
        runProgram(QStringLiteral("ffmpeg"),
                   {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-f"),
                    QStringLiteral("mjpeg"), QStringLiteral("-i"), QStringLiteral("-"),
                    QStringLiteral("-f"), QStringLiteral("rawvideo"), QStringLiteral("-pix_fmt"),
                    QStringLiteral("gray16le"), QStringLiteral("-")},
                   input);
    std::vector<quint16> samples(static_cast<std::size_t>(ended.output.size()) / 2);
    std::memcpy(samples.data(), ended.output.constData(), samples.size() * 2);
    for (quint16 &sample : samples)
        sample = static_cast<quint16>(sample >> (16 - bits));
    return samples;
}

} // namespace

class TestLosslessEncoder : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyPredictorAndDepthDecodesToTheSameSamples_data()
    {
        QTest::addColumn<int>("bits");
        QTest::addColumn<int>("predictor");
        for (const int bits : {10, 12, 14, 16})
            for (int predictor = 1; predictor <= 7; ++predictor)
                QTest::addRow("%d bits, predictor %d", bits, predictor) << bits << predictor;
    }

    void everyPredictorAndDepthDecodesToTheSameSamples()
    {
        QFETCH(int, bits);
        QFETCH(int, predictor);
        const auto samples = randomFrame(bits);
        for (const auto shape : {sample::LosslessShape::Folded, sample::LosslessShape::Plain}) {
            const auto stream = sample::encodeLosslessJpeg(samples, smallWidth, smallHeight, bits,
                                                           shape, predictor);
            QCOMPARE(decodedByFfmpeg(stream, bits), samples);
        }
    }

    void smoothFramesGetSmaller()
    {
        std::vector<quint16> samples(smallWidth * smallHeight);
        for (std::size_t i = 0; i < samples.size(); ++i)
            samples[i] = static_cast<quint16>(2048 + i % 7);
        const auto stream = sample::encodeLosslessJpeg(samples, smallWidth, smallHeight, 14,
                                                       sample::LosslessShape::Camera, 1);
        QVERIFY(stream.size() < samples.size() * 14 / 8);
    }
};

FILMWRIGHT_TEST(TestLosslessEncoder, QCoreApplication)
#include "tst_losslessencoder.moc"
