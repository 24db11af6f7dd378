// SPDX-License-Identifier: MIT
#include "raw/bitreader.h"

#include "bytesof.h"

#include "support/testprogram.h"

#include <QTest>

#include <vector>

namespace {

std::uint32_t take(raw::BitReader &reader, int count)
{
    reader.refill();
    const auto bits = reader.peek(count);
    reader.skip(count);
    return bits;
}

} // namespace

class TestBitReader : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void mostSignificantBitComesFirst();
    void everyWidthReadsTheSameBits();
    void zerosFollowTheEnd();
    void lastBitIsNoOverrun();
};

void TestBitReader::mostSignificantBitComesFirst()
{
    const auto data = QByteArray::fromHex("a5123456");
    raw::ScanData scan(bytesOf(data));
    raw::BitReader reader(scan);
    QCOMPARE(take(reader, 1), 1U);
    QCOMPARE(take(reader, 3), 2U);
    QCOMPARE(take(reader, 4), 5U);
    QCOMPARE(take(reader, 24), 0x123456U);
    QVERIFY(!reader.isOverrun());
}

void TestBitReader::everyWidthReadsTheSameBits()
{
    QByteArray bytes;
    for (int i = 0; i < 24; ++i)
        bytes.append(static_cast<char>(i * 7 + 1));
    for (const int width : {1, 3, 7, 13, 16, 32}) {
        raw::ScanData scan(bytesOf(bytes));
        raw::BitReader reader(scan);
        std::vector<bool> bits;
        while (bits.size() + static_cast<std::size_t>(width) <= 24 * 8) {
            const auto value = take(reader, width);
            for (int bit = width - 1; bit >= 0; --bit)
                bits.push_back((value >> bit & 1) != 0);
        }
        for (std::size_t i = 0; i < bits.size(); ++i) {
            const auto byte = static_cast<unsigned char>(bytes[static_cast<qsizetype>(i / 8)]);
            QCOMPARE(bits[i], (byte >> (7 - i % 8) & 1) != 0);
        }
        QVERIFY(!reader.isOverrun());
    }
}

void TestBitReader::zerosFollowTheEnd()
{
    raw::ScanData scan({});
    raw::BitReader reader(scan);
    QCOMPARE(take(reader, 32), 0U);
    QVERIFY(reader.isOverrun());
}

void TestBitReader::lastBitIsNoOverrun()
{
    const auto data = QByteArray::fromHex("80");
    raw::ScanData scan(bytesOf(data));
    raw::BitReader reader(scan);
    QCOMPARE(take(reader, 8), 0x80U);
    QVERIFY(!reader.isOverrun());
    take(reader, 1);
    QVERIFY(reader.isOverrun());
}

FILMWRIGHT_TEST(TestBitReader, QCoreApplication)
#include "tst_bitreader.moc"
