// SPDX-License-Identifier: MIT
#include "runner/readabletext.h"

#include "support/testprogram.h"

#include <QTest>

#include <limits>

using namespace filmwright;

class TestReadableText : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void sizes_data();
    void sizes();
    void times_data();
    void times();
    void exposures_data();
    void exposures();
    void percents_data();
    void percents();
    void shares();
};

void TestReadableText::sizes_data()
{
    QTest::addColumn<double>("bytes");
    QTest::addColumn<QString>("text");
    QTest::newRow("0") << 0.0 << QStringLiteral("0.00 bytes");
    QTest::newRow("999") << 999.0 << QStringLiteral("999.00 bytes");
    QTest::newRow("1000") << 1000.0 << QStringLiteral("1000.00 bytes");
    QTest::newRow("1001") << 1001.0 << QStringLiteral("1.00 KB");
    QTest::newRow("million") << 1e6 << QStringLiteral("1000.00 KB");
    QTest::newRow("million and one") << 1e6 + 1 << QStringLiteral("1.00 MB");
    QTest::newRow("1.5 thousand million") << 1.5e9 << QStringLiteral("1.50 GB");
    QTest::newRow("a half to the even") << 1125.0 << QStringLiteral("1.12 KB");
    QTest::newRow("TB") << 2e12 << QStringLiteral("2.00 TB");
    QTest::newRow("PB") << 2e15 << QStringLiteral("2.00 PB");
    QTest::newRow("largest of a file") << 18446744073709551615.0 << QStringLiteral("18.45 EB");
    QTest::newRow("what a report makes up") << 5e30 << QStringLiteral("5000000.00 YB");
}

void TestReadableText::sizes()
{
    QFETCH(const double, bytes);
    QTEST(readableFileSize(bytes), "text");
}

void TestReadableText::times_data()
{
    QTest::addColumn<double>("seconds");
    QTest::addColumn<QString>("text");
    QTest::newRow("nothing") << 0.0 << QStringLiteral("0:00");
    QTest::newRow("rounded") << 11.6 << QStringLiteral("0:12");
    QTest::newRow("minutes") << 250.0 << QStringLiteral("4:10");
    QTest::newRow("just below an hour") << 3599.0 << QStringLiteral("59:59");
    QTest::newRow("rounded to an hour") << 3599.6 << QStringLiteral("1:00:00");
    QTest::newRow("a night") << 36000.0 + 65 << QStringLiteral("10:01:05");
}

void TestReadableText::times()
{
    QFETCH(const double, seconds);
    QTEST(timeText(std::chrono::duration<double>(seconds)), "text");
}

void TestReadableText::exposures_data()
{
    QTest::addColumn<double>("seconds");
    QTest::addColumn<QString>("text");
    QTest::newRow("fraction") << 0.02 << QStringLiteral("1/50 s");
    QTest::newRow("half") << 0.5 << QStringLiteral("1/2 s");
    QTest::newRow("seconds") << 2.04 << QStringLiteral("2.0 s");
    QTest::newRow("unknown") << 0.0 << QString();
    QTest::newRow("no number") << std::numeric_limits<double>::quiet_NaN() << QString();
}

void TestReadableText::exposures()
{
    QFETCH(const double, seconds);
    QTEST(exposureTimeText(seconds), "text");
}

void TestReadableText::percents_data()
{
    QTest::addColumn<double>("done");
    QTest::addColumn<double>("whole");
    QTest::addColumn<QString>("text");
    QTest::newRow("begun") << 0.0 << 300.0 << QStringLiteral("0 %");
    QTest::newRow("nearly the end") << 299.0 << 300.0 << QStringLiteral("99 %");
    QTest::newRow("the end") << 300.0 << 300.0 << QStringLiteral("100 %");
    QTest::newRow("beyond") << 301.0 << 300.0 << QStringLiteral("100 %");
    QTest::newRow("no whole") << 1.0 << 0.0 << QStringLiteral("0 %");
}

void TestReadableText::percents()
{
    QFETCH(const double, done);
    QFETCH(const double, whole);
    QTEST(percentText(done, whole), "text");
}

void TestReadableText::shares()
{
    QCOMPARE(shareText(0), QStringLiteral("0.0 %"));
    QCOMPARE(shareText(0.0034), QStringLiteral("0.3 %"));
    QCOMPARE(shareText(1), QStringLiteral("100.0 %"));
}

FILMWRIGHT_TEST(TestReadableText, QCoreApplication)
#include "tst_readabletext.moc"
