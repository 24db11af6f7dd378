// SPDX-License-Identifier: MIT
#include "mlv/bitreader.h"

#include <QTest>

#include <vector>

namespace {

std::span<const std::byte> bytesOf(const QByteArray &bytes)
{
    return std::as_bytes(std::span(bytes.constData(), static_cast<std::size_t>(bytes.size())));
}

std::uint32_t take(mlv::BitReader &reader, int count)
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
    void stuffedZeroIsLeftOut();
    void everyPlaceOfAStuffedByteIsReadAlike();
    void zerosFollowAMarker();
    void zerosFollowTheEnd();
    void lastBitIsNoOverrun();
};

void TestBitReader::mostSignificantBitComesFirst()
{
    const auto data = QByteArray::fromHex("a5123456");
    mlv::BitReader reader(bytesOf(data));
    QCOMPARE(take(reader, 1), 1U);
    QCOMPARE(take(reader, 3), 2U);
    QCOMPARE(take(reader, 4), 5U);
    QCOMPARE(take(reader, 24), 0x123456U);
    QVERIFY(!reader.isOverrun());
}

void TestBitReader::stuffedZeroIsLeftOut()
{
    const auto data = QByteArray::fromHex("12ff0034");
    mlv::BitReader reader(bytesOf(data));
    QCOMPARE(take(reader, 24), 0x12ff34U);
    QVERIFY(!reader.isOverrun());
}

void TestBitReader::everyPlaceOfAStuffedByteIsReadAlike()
{
    for (int place = 0; place < 24; ++place) {
        QByteArray plain;
        for (int i = 0; i < 24; ++i) {
            plain.append(static_cast<char>(i == place ? 0xff : i * 7 + 1));
        }
        auto stuffed = plain;
        stuffed.insert(place + 1, '\0');
        for (const int width : {3, 7, 13, 16, 32}) {
            mlv::BitReader reader(bytesOf(stuffed));
            std::vector<bool> bits;
            while (bits.size() + static_cast<std::size_t>(width) <= 24 * 8) {
                const auto value = take(reader, width);
                for (int bit = width - 1; bit >= 0; --bit) {
                    bits.push_back((value >> bit & 1) != 0);
                }
            }
            for (std::size_t i = 0; i < bits.size(); ++i) {
                const auto byte = static_cast<unsigned char>(plain[static_cast<qsizetype>(i / 8)]);
                QCOMPARE(bits[i], (byte >> (7 - i % 8) & 1) != 0);
            }
        }
    }
}

void TestBitReader::zerosFollowAMarker()
{
    const auto data = QByteArray::fromHex("abffd9ffffffffffffff");
    mlv::BitReader reader(bytesOf(data));
    QCOMPARE(take(reader, 8), 0xabU);
    QVERIFY(!reader.isOverrun());
    QCOMPARE(take(reader, 16), 0U);
    QVERIFY(reader.isOverrun());
    QCOMPARE(reader.position(), std::size_t{1});
}

void TestBitReader::zerosFollowTheEnd()
{
    mlv::BitReader reader({});
    QCOMPARE(take(reader, 32), 0U);
    QVERIFY(reader.isOverrun());
    const auto lone = QByteArray::fromHex("ff");
    mlv::BitReader halfStuffed(bytesOf(lone));
    QCOMPARE(take(halfStuffed, 8), 0U);
}

void TestBitReader::lastBitIsNoOverrun()
{
    const auto data = QByteArray::fromHex("80");
    mlv::BitReader reader(bytesOf(data));
    QCOMPARE(take(reader, 8), 0x80U);
    QVERIFY(!reader.isOverrun());
    take(reader, 1);
    QVERIFY(reader.isOverrun());
}

QTEST_APPLESS_MAIN(TestBitReader)
#include "tst_bitreader.moc"
