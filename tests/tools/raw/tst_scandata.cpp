// SPDX-License-Identifier: MIT
#include "raw/scandata.h"

#include "bytesof.h"

#include "support/testprogram.h"

#include <QTest>

namespace {

/// All pieces.
QByteArray taken(raw::ScanData &data)
{
    QByteArray bytes;
    for (auto piece = data.next(); !piece.empty(); piece = data.next()) {
        bytes.append(reinterpret_cast<const char *>(piece.data()),
                     static_cast<qsizetype>(piece.size()));
    }
    return bytes;
}

} // namespace

class TestScanData : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void dataEndsAtAMarkerAndLosesItsStuffing_data();
    void dataEndsAtAMarkerAndLosesItsStuffing();
    void everyPlaceOfAStuffedByteIsReadAlike();
};

void TestScanData::dataEndsAtAMarkerAndLosesItsStuffing_data()
{
    QTest::addColumn<QByteArray>("stream");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("storedSize");
    QTest::newRow("nothing") << QByteArray() << QByteArray() << 0;
    QTest::newRow("plain") << QByteArray::fromHex("123456") << QByteArray::fromHex("123456") << 3;
    QTest::newRow("stuffed") << QByteArray::fromHex("12ff0034") << QByteArray::fromHex("12ff34")
                             << 4;
    QTest::newRow("stuffed at the start, in a row and at the end")
        << QByteArray::fromHex("ff0001ff00ff0002ff00") << QByteArray::fromHex("ff01ffff02ff") << 10;
    QTest::newRow("marker") << QByteArray::fromHex("abffd9ff00") << QByteArray::fromHex("ab") << 1;
    QTest::newRow("marker behind stuffing")
        << QByteArray::fromHex("ff00ffd0") << QByteArray::fromHex("ff") << 2;
    QTest::newRow("half a marker") << QByteArray::fromHex("abff") << QByteArray::fromHex("ab") << 1;
}

void TestScanData::dataEndsAtAMarkerAndLosesItsStuffing()
{
    QFETCH(QByteArray, stream);
    raw::ScanData data(bytesOf(stream));
    QTEST(taken(data), "bytes");
    QTEST(static_cast<int>(data.position()), "storedSize");
}

void TestScanData::everyPlaceOfAStuffedByteIsReadAlike()
{
    // Around the end of a piece.
    for (int place = 16370; place < 16400; ++place) {
        QByteArray plain(40000, 'x');
        plain[place] = char(0xff);
        plain[place + 3] = char(0xff);
        QByteArray stuffed = plain;
        stuffed.insert(place + 4, '\0');
        stuffed.insert(place + 1, '\0');
        raw::ScanData data(bytesOf(stuffed));
        QVERIFY(taken(data) == plain);
    }
}

FILMWRIGHT_TEST(TestScanData, QCoreApplication)
#include "tst_scandata.moc"
