// SPDX-License-Identifier: MIT
#include "mlv/scandata.h"

#include <QTest>

class TestScanData : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void dataEndsAtAMarkerAndLosesItsStuffing_data();
    void dataEndsAtAMarkerAndLosesItsStuffing();
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
    const auto data = mlv::takeScanData(
        std::as_bytes(std::span(stream.constData(), static_cast<std::size_t>(stream.size()))));
    QTEST(QByteArray(reinterpret_cast<const char *>(data.bytes.data()),
                     static_cast<qsizetype>(data.bytes.size())),
          "bytes");
    QTEST(static_cast<int>(data.storedSize), "storedSize");
}

QTEST_APPLESS_MAIN(TestScanData)
#include "tst_scandata.moc"
