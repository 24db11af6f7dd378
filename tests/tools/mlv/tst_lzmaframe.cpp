// SPDX-License-Identifier: MIT
#include "mlv/lzmaframe.h"

#include "mlv_sample/lzmaframe.h"
#include "raw/error.h"
#include "support/testprogram.h"

#include <QTest>

#include <vector>

using Bytes = std::vector<std::byte>;

namespace {

Bytes someFrame()
{
    Bytes frame(5000);
    for (std::size_t i = 0; i < frame.size(); ++i)
        frame[i] = std::byte(i * i % 251);
    return frame;
}

} // namespace

class TestLzmaFrame : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void frameComesBack();
    void paddingBehindTheStreamIsIgnored();
    void anotherSizeIsRefused();
    void cutOffStreamIsRefused();
    void headerWithoutStreamIsRefused();
    void impossiblePropertiesAreRefused();
    void hugeDictionaryIsNotAllocated();
    void plausibilityFollowsTheBestRatio();
};

void TestLzmaFrame::frameComesBack()
{
    const auto frame = someFrame();
    Bytes decoded(frame.size());
    mlv::decodeLzmaFrame(sample::encodeLzmaFrame(frame), decoded);
    QVERIFY(decoded == frame);
}

void TestLzmaFrame::paddingBehindTheStreamIsIgnored()
{
    const auto frame = someFrame();
    auto data = sample::encodeLzmaFrame(frame);
    data.insert(data.end(), 100, std::byte{0xee});
    Bytes decoded(frame.size());
    mlv::decodeLzmaFrame(data, decoded);
    QVERIFY(decoded == frame);
}

void TestLzmaFrame::anotherSizeIsRefused()
{
    const auto frame = someFrame();
    Bytes decoded(frame.size() + 1);
    QVERIFY_THROWS_EXCEPTION(raw::Error,
                             mlv::decodeLzmaFrame(sample::encodeLzmaFrame(frame), decoded));
}

void TestLzmaFrame::cutOffStreamIsRefused()
{
    const auto frame = someFrame();
    auto data = sample::encodeLzmaFrame(frame);
    data.resize(data.size() / 2);
    Bytes decoded(frame.size());
    QVERIFY_THROWS_EXCEPTION(raw::Error, mlv::decodeLzmaFrame(data, decoded));
}

void TestLzmaFrame::headerWithoutStreamIsRefused()
{
    Bytes decoded(16);
    for (const std::size_t size : {0U, 3U, 4U, 8U, 9U}) {
        Bytes data(size);
        if (size >= 4)
            data[0] = std::byte{16};
        QVERIFY_THROWS_EXCEPTION(raw::Error, mlv::decodeLzmaFrame(data, decoded));
    }
}

void TestLzmaFrame::impossiblePropertiesAreRefused()
{
    const auto frame = someFrame();
    auto data = sample::encodeLzmaFrame(frame);
    data[4] = std::byte{0xff};
    Bytes decoded(frame.size());
    QVERIFY_THROWS_EXCEPTION(raw::Error, mlv::decodeLzmaFrame(data, decoded));
}

void TestLzmaFrame::hugeDictionaryIsNotAllocated()
{
    // A dictionary of 4 GiB is allowed by the format and of no use for a frame of 5000 bytes.
    const auto frame = someFrame();
    auto data = sample::encodeLzmaFrame(frame);
    std::fill_n(data.begin() + 5, 4, std::byte{0xff});
    Bytes decoded(frame.size());
    mlv::decodeLzmaFrame(data, decoded);
    QVERIFY(decoded == frame);
}

void TestLzmaFrame::plausibilityFollowsTheBestRatio()
{
    const Bytes black(4U << 20);
    const auto data = sample::encodeLzmaFrame(black);
    QVERIFY(mlv::canLzmaFrameHold(data.size(), black.size()));
    QVERIFY(!mlv::canLzmaFrameHold(9, 0));
    QVERIFY(!mlv::canLzmaFrameHold(100, 256U << 20));
}

FILMWRIGHT_TEST(TestLzmaFrame, QCoreApplication)
#include "tst_lzmaframe.moc"
