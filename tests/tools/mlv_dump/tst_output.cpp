// SPDX-License-Identifier: MIT
#include "mlv_dump/output.h"

#include "packetreader.h"
#include "support/testprogram.h"

#include <QTest>

using mlvdump::Output;

class TestOutput : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void warningsAndErrorsAreMarked();
    void lastTwoLinesAreOneWriteOfTheirOwn();
    void withoutARateThereAreNoSeconds();
};

void TestOutput::warningsAndErrorsAreMarked()
{
    const PacketReader reader;
    Output output(reader.descriptor());
    output.warning("careful");
    output.error("broken");
    output.unusable("no video");
    output.flush();
    QCOMPARE(reader.packets(),
             QByteArrayList{"[WARNING] careful\n[ERROR] broken\n[UNUSABLE] no video\n"});
}

void TestOutput::lastTwoLinesAreOneWriteOfTheirOwn()
{
    const PacketReader reader;
    Output output(reader.descriptor());
    output.line("before");
    output.finish({8, 25});
    QCOMPARE(
        reader.packets(),
        (QByteArrayList{"before\n", "Processed 8 video frames at 25.00 FPS (0.32 s)\nDone\n"}));
}

void TestOutput::withoutARateThereAreNoSeconds()
{
    const PacketReader reader;
    Output output(reader.descriptor());
    output.finish({8, 0});
    QCOMPARE(reader.packets(),
             QByteArrayList{"Processed 8 video frames at 0.00 FPS (0.00 s)\nDone\n"});
}

FILMWRIGHT_TEST(TestOutput, QCoreApplication)
#include "tst_output.moc"
