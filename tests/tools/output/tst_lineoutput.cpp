// SPDX-License-Identifier: MIT
#include "output/lineoutput.h"

#include "packetreader.h"
#include "support/testprogram.h"

#include <QTest>

#include <fcntl.h>

using output::LineOutput;

class TestLineOutput : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void linesWaitUntilTheyAreSent();
    void everyWriteIsSmallAndEndsWithALine();
    void lineThatIsTooLongIsCut();
    void longLineIsCutBetweenCharacters();
    void restIsSentAtTheEnd();
    void linesThatNobodyReadsAreLost();
};

void TestLineOutput::linesWaitUntilTheyAreSent()
{
    const PacketReader reader;
    LineOutput output(reader.descriptor());
    output.line("one");
    output.line("two");
    QVERIFY(reader.packets().isEmpty());
    output.flush();
    QCOMPARE(reader.packets(), QByteArrayList{"one\ntwo\n"});
    output.flush();
    QVERIFY(reader.packets().isEmpty());
}

void TestLineOutput::everyWriteIsSmallAndEndsWithALine()
{
    const PacketReader reader;
    QByteArray expected;
    {
        LineOutput output(reader.descriptor());
        for (int i = 0; i < 500; ++i) {
            const std::string line(static_cast<std::size_t>(i * 37 % 300), 'x');
            output.line(line);
            expected += QByteArray::fromStdString(line) + '\n';
        }
    }
    const auto packets = reader.packets();
    QVERIFY(packets.size() > 10);
    for (const auto &packet : packets) {
        QVERIFY(packet.size() <= 4096);
        QVERIFY(packet.endsWith('\n'));
    }
    QCOMPARE(packets.join(), expected);
}

void TestLineOutput::lineThatIsTooLongIsCut()
{
    const PacketReader reader;
    LineOutput output(reader.descriptor());
    output.line("before");
    output.line(std::string(10000, 'x'));
    output.flush();
    QCOMPARE(reader.packets(), (QByteArrayList{"before\n", QByteArray(4095, 'x') + '\n'}));
}

void TestLineOutput::longLineIsCutBetweenCharacters()
{
    const PacketReader reader;
    LineOutput output(reader.descriptor());
    output.line(std::string(4094, 'x') + "ü");
    output.line(std::string(4093, 'x') + "ü");
    output.flush();
    QCOMPARE(reader.packets(),
             (QByteArrayList{QByteArray(4094, 'x') + '\n', QByteArray(4093, 'x') + "ü\n"}));
}

void TestLineOutput::restIsSentAtTheEnd()
{
    const PacketReader reader;
    {
        LineOutput output(reader.descriptor());
        output.line("last");
    }
    QCOMPARE(reader.packets(), QByteArrayList{"last\n"});
}

void TestLineOutput::linesThatNobodyReadsAreLost()
{
    const PacketReader reader;
    const int descriptor = ::open("/dev/null", O_RDONLY); // nothing can be written there
    QVERIFY(descriptor >= 0);
    {
        LineOutput output(descriptor);
        output.line("lost");
        output.flush();
        QVERIFY(::dup2(reader.descriptor(), descriptor) == descriptor);
        output.line("heard");
    }
    ::close(descriptor);
    QCOMPARE(reader.packets(), QByteArrayList{"heard\n"});
}

FILMWRIGHT_TEST(TestLineOutput, QCoreApplication)
#include "tst_lineoutput.moc"
