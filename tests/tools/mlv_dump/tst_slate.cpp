// SPDX-License-Identifier: MIT
#include "mlv_dump/slate.h"

#include "raw/error.h"
#include "recordingbuilder.h"
#include "support/testprogram.h"

#include <QTemporaryDir>
#include <QTest>

using mlvdump::FrameRate;
using mlvdump::Slate;

namespace {

QByteArray hex(const std::optional<std::array<std::uint8_t, 8>> &bytes)
{
    return bytes ? QByteArray(reinterpret_cast<const char *>(bytes->data()), 8).toHex()
                 : QByteArray("none");
}

} // namespace

/// What frames and sound of a clip say alike.
class TestSlate : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void rateThatIsMeant_data();
    void rateThatIsMeant();
    void rateThatNoRecordingHas();
    void samplesOfFrames();
    void timeCodes_data();
    void timeCodes();
    void timecodeBeginsWithTheClock();
    void timecodeWithoutAClockBeginsAtMidnight();
    void recordingWithoutARateHasNoSlate();

private:
    Slate slateOf(const RecordingBuilder &builder, const char *reel = "a") const
    {
        const mlv::Recording recording(
            builder.write(m_folder.filePath(QStringLiteral("a.MLV"))).toStdString());
        return mlvdump::slateOf(recording, reel);
    }

    QTemporaryDir m_folder;
};

void TestSlate::rateThatIsMeant_data()
{
    QTest::addColumn<double>("recorded");
    QTest::addColumn<quint32>("numerator");
    QTest::addColumn<quint32>("denominator");
    const auto row = [](double recorded, quint32 numerator, quint32 denominator) {
        QTest::addRow("%g", recorded) << recorded << numerator << denominator;
    };
    row(23.976, 24000, 1001);
    row(23.98, 24000, 1001);
    row(24, 24, 1);
    row(25, 25, 1);
    row(29.97, 30000, 1001);
    row(30, 30, 1);
    row(50, 50, 1);
    row(59.94, 60000, 1001);
    row(12.5, 25, 2);
    row(0.2, 1, 5);
}

void TestSlate::rateThatIsMeant()
{
    QFETCH(double, recorded);
    const auto rate = mlvdump::exactRate(recorded);
    QVERIFY(rate);
    QTEST(rate->numerator, "numerator");
    QTEST(rate->denominator, "denominator");
}

void TestSlate::rateThatNoRecordingHas()
{
    for (const double recorded : {0.0, 0.004, 100001.0, 4e9, -25.0})
        QVERIFY(!mlvdump::exactRate(recorded));
}

void TestSlate::samplesOfFrames()
{
    const FrameRate broadcast{24000, 1001};
    QCOMPARE(broadcast.samplesOf(6, 48000), 12012);
    QCOMPARE(broadcast.samplesOf(1, 44100), 1839); // 1839.3375
    // 14:30:02 at 24 numbers a second.
    QCOMPARE(broadcast.samplesOf(52202 * 24, 48000), 2508201696);
    QCOMPARE((FrameRate{24, 1}.samplesOf(52202 * 24, 48000)), 2505696000);
}

void TestSlate::timeCodes_data()
{
    QTest::addColumn<FrameRate>("rate");
    QTest::addColumn<quint64>("first");
    QTest::addColumn<quint64>("frame");
    QTest::addColumn<QByteArray>("expected");
    const auto row = [](const char *name, FrameRate rate, quint64 first, quint64 frame,
                        const char *expected) {
        QTest::newRow(name) << rate << first << frame << QByteArray(expected);
    };
    const quint64 start = 52202; // 14:30:02
    row("24", {24, 1}, start * 24, 12, "1202301400000000");
    row("23.976 counts 24", {24000, 1001}, start * 24, 24, "0003301400000000");
    row("25", {25, 1}, start * 25, 24, "2402301400000000");
    row("29.97 drops no number", {30000, 1001}, 59 * 30, 30, "0000010000000000");
    row("50, first of a pair", {50, 1}, start * 50, 48, "2402301400000000");
    row("50, second of a pair", {50, 1}, start * 50, 49, "2482301400000000");
    row("59.94, second of the last pair", {60000, 1001}, 0, 59, "2980000000000000");
    row("79 is the most", {79, 1}, 0, 78, "3900000000000000");
    row("100 has none", {100, 1}, 0, 0, "none");
    row("over midnight", {24, 1}, 86399 * 24, 24, "0000000000000000");
}

void TestSlate::timeCodes()
{
    QFETCH(FrameRate, rate);
    QFETCH(quint64, first);
    QFETCH(quint64, frame);
    const Slate slate{rate, first, {}, {}, 0};
    QTEST(hex(slate.timeCode(frame)), "expected");
}

void TestSlate::timecodeBeginsWithTheClock()
{
    mlv::Clock clock{};
    clock.second = 2;
    clock.minute = 30;
    clock.hour = 14;
    clock.day = 1;
    clock.month = 4;
    clock.year = 126;
    RecordingBuilder builder;
    builder.header.guid = 0x1234;
    builder.addRawInfo().add(mlv::blocktype::clock, clock, 1000);
    const Slate slate = slateOf(builder.addFrame(0, 3000), "Zür\n<reel> ");
    QCOMPARE(slate.firstNumber, quint64{52202} * 25);
    QVERIFY(slate.begin);
    QCOMPARE(QString::fromStdString(mlvdump::timeText(*slate.begin)),
             QStringLiteral("2026-05-01 14:30:02"));
    QCOMPARE(QString::fromStdString(slate.reel), QStringLiteral("Z?r <reel>"));
    QCOMPARE(slate.guid, quint64{0x1234});
}

void TestSlate::timecodeWithoutAClockBeginsAtMidnight()
{
    const Slate slate = slateOf(RecordingBuilder().addRawInfo());
    QCOMPARE(slate.firstNumber, quint64{0});
    QVERIFY(!slate.begin);
}

void TestSlate::recordingWithoutARateHasNoSlate()
{
    RecordingBuilder builder;
    builder.header.frameRateNumerator = 0;
    QVERIFY_THROWS_EXCEPTION(raw::Error, slateOf(builder.addRawInfo()));
}

FILMWRIGHT_TEST(TestSlate, QCoreApplication)
#include "tst_slate.moc"
