// SPDX-License-Identifier: MIT
#include "mlv_dump/output.h"

#include <QTest>

#include <array>

#include <sys/socket.h>
#include <unistd.h>

using mlvdump::Output;

namespace {

/// The far end of an output, where each write() arrives as one packet.
class Reader
{
public:
    Reader()
    {
        const int size = 1 << 20;
        if (::socketpair(AF_UNIX, SOCK_SEQPACKET, 0, m_ends.data()) != 0 ||
            ::setsockopt(m_ends[0], SOL_SOCKET, SO_SNDBUF, &size, sizeof size) != 0) {
            qFatal("there are no sockets");
        }
    }
    ~Reader()
    {
        ::close(m_ends[0]);
        ::close(m_ends[1]);
    }
    Reader(const Reader &) = delete;
    Reader &operator=(const Reader &) = delete;

    int descriptor() const { return m_ends[0]; }

    QByteArrayList packets() const
    {
        QByteArrayList list;
        std::array<char, 65536> buffer;
        for (auto size = receive(buffer); size > 0; size = receive(buffer)) {
            list.append(QByteArray(buffer.data(), static_cast<qsizetype>(size)));
        }
        return list;
    }

private:
    ssize_t receive(std::array<char, 65536> &buffer) const
    {
        return ::recv(m_ends[1], buffer.data(), buffer.size(), MSG_DONTWAIT);
    }

    std::array<int, 2> m_ends{};
};

} // namespace

class TestOutput : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void linesWaitUntilTheyAreSent();
    void everyWriteIsSmallAndEndsWithALine();
    void lineThatIsTooLongIsCut();
    void longLineIsCutBetweenCharacters();
    void warningsAndErrorsAreMarked();
    void lastTwoLinesAreOneWriteOfTheirOwn();
    void withoutARateThereAreNoSeconds();
    void restIsSentAtTheEnd();
};

void TestOutput::linesWaitUntilTheyAreSent()
{
    const Reader reader;
    Output output(reader.descriptor());
    output.line("one");
    output.line("two");
    QVERIFY(reader.packets().isEmpty());
    output.flush();
    QCOMPARE(reader.packets(), QByteArrayList{"one\ntwo\n"});
    output.flush();
    QVERIFY(reader.packets().isEmpty());
}

void TestOutput::everyWriteIsSmallAndEndsWithALine()
{
    const Reader reader;
    QByteArray expected;
    {
        Output output(reader.descriptor());
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

void TestOutput::lineThatIsTooLongIsCut()
{
    const Reader reader;
    Output output(reader.descriptor());
    output.line("before");
    output.line(std::string(10000, 'x'));
    output.flush();
    QCOMPARE(reader.packets(), (QByteArrayList{"before\n", QByteArray(4095, 'x') + '\n'}));
}

void TestOutput::longLineIsCutBetweenCharacters()
{
    const Reader reader;
    Output output(reader.descriptor());
    output.line(std::string(4094, 'x') + "ü");
    output.flush();
    QCOMPARE(reader.packets(), QByteArrayList{QByteArray(4094, 'x') + '\n'});
}

void TestOutput::warningsAndErrorsAreMarked()
{
    const Reader reader;
    Output output(reader.descriptor());
    output.warning("careful");
    output.error("broken");
    output.flush();
    QCOMPARE(reader.packets(), QByteArrayList{"[WARNING] careful\n[ERROR] broken\n"});
}

void TestOutput::lastTwoLinesAreOneWriteOfTheirOwn()
{
    const Reader reader;
    Output output(reader.descriptor());
    output.line("before");
    output.finish({8, 25});
    QCOMPARE(
        reader.packets(),
        (QByteArrayList{"before\n", "Processed 8 video frames at 25.00 FPS (0.32 s)\nDone\n"}));
}

void TestOutput::withoutARateThereAreNoSeconds()
{
    const Reader reader;
    Output output(reader.descriptor());
    output.finish({8, 0});
    QCOMPARE(reader.packets(),
             QByteArrayList{"Processed 8 video frames at 0.00 FPS (0.00 s)\nDone\n"});
}

void TestOutput::restIsSentAtTheEnd()
{
    const Reader reader;
    {
        Output output(reader.descriptor());
        output.line("last");
    }
    QCOMPARE(reader.packets(), QByteArrayList{"last\n"});
}

QTEST_APPLESS_MAIN(TestOutput)
#include "tst_output.moc"
