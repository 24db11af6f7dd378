// SPDX-License-Identifier: MIT
#include "dcraw/notcovered.h"
#include "dcraw/options.h"

#include "support/testprogram.h"

#include <QStringList>
#include <QTest>

#include <algorithm>
#include <vector>

namespace {

dcraw::Options parsed(const QStringList &arguments)
{
    QByteArrayList encoded;
    for (const QString &argument : arguments)
        encoded << argument.toUtf8();
    std::vector<const char *> pointers;
    std::transform(encoded.cbegin(), encoded.cend(), std::back_inserter(pointers),
                   [](const QByteArray &argument) { return argument.constData(); });
    return dcraw::parseOptions(pointers);
}

dcraw::Options parsed(const QString &line)
{
    return parsed(line.split(u' ', Qt::SkipEmptyParts));
}

} // namespace

class TestDcrawOptions : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void whatTheApplicationAsksFor();
    void valuesWithoutOptions();
    void everyOptionHasItsValue();
    void ofTwoTheLaterOneCounts();
    void whatIsCovered_data();
    void whatIsCovered();
    void outputBesideTheInput_data();
    void outputBesideTheInput();
};

void TestDcrawOptions::whatTheApplicationAsksFor()
{
    const auto options = parsed(QStringLiteral("-H 3 -q 3 -w -W -T -b 4.000000 /a/b.dng"));
    QCOMPARE(options.file, std::string("/a/b.dng"));
    QCOMPARE(options.highlights, 3);
    QCOMPARE(options.quality, 3);
    QVERIFY(options.cameraWhiteBalance);
    QCOMPARE(options.brightness, 4.0);
    QVERIFY(!options.sixteenBits);
}

void TestDcrawOptions::valuesWithoutOptions()
{
    const auto options = parsed(QStringLiteral("-T -W f"));
    QVERIFY(!options.cameraWhiteBalance);
    QVERIFY(!options.multipliers);
    QCOMPARE(options.brightness, 1.0);
    QCOMPARE(options.highlights, 0);
    QCOMPARE(options.quality, 3);
    QVERIFY(!options.halfSize);
    QCOMPARE(options.medianPasses, 0);
    QCOMPARE(options.colourSpace, 1);
    QVERIFY(!options.gamma);
    QVERIFY(!options.badPixels);
}

void TestDcrawOptions::everyOptionHasItsValue()
{
    const auto options = parsed(QStringLiteral(
        "-r 1 2.5 3. 0 -o 6 -g 2.5 12.92 -m 09 -P -T -h -6 -q 0 -H 02 -b 0.01 -T -W f"));
    QVERIFY(options.multipliers == (std::array<double, 4>{1, 2.5, 3, 0}));
    QCOMPARE(options.colourSpace, 6);
    QVERIFY(options.gamma == (dcraw::Gamma{0.4, 12.92}));
    QCOMPARE(options.medianPasses, 9);
    QVERIFY(options.badPixels == "-T"); // a value, whatever it looks like
    QVERIFY(options.halfSize);
    QVERIFY(options.sixteenBits);
    QCOMPARE(options.quality, 0);
    QCOMPARE(options.highlights, 2);
    QCOMPARE(options.brightness, 0.01);
}

void TestDcrawOptions::ofTwoTheLaterOneCounts()
{
    QCOMPARE(parsed(QStringLiteral("-T -W -b 2 -b 3 f")).brightness, 3.0);
    QVERIFY(parsed(QStringLiteral("-T -4 -g 2 4 f")).gamma == (dcraw::Gamma{0.5, 4}));
    const auto linear = parsed(QStringLiteral("-T -g 2 4 -4 f"));
    QVERIFY(linear.gamma == (dcraw::Gamma{1, 1}));
    QVERIFY(linear.sixteenBits);
}

void TestDcrawOptions::whatIsCovered_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<bool>("covered");
    const auto row = [](const char *name, const char *line, bool covered) {
        QTest::newRow(name) << QString::fromLatin1(line).split(u' ', Qt::SkipEmptyParts) << covered;
    };
    row("no arguments", "", false);
    row("version", "--version", false);
    row("no file", "-T -W", false);
    row("two files", "-T -W a b", false);
    row("an option behind the file is a file", "-T a -W", false);
    row("no TIFF", "-W f", false);
    row("automatic brightness", "-T f", false);
    row("blending highlights keeps it automatic", "-T -H 2 f", false);
    row("leaving highlights makes it fixed", "-T -H 1 f", true);
    row("rebuilding highlights makes it fixed", "-T -H 3 f", true);
    row("linear makes it fixed", "-T -4 f", true);
    row("plus sign", "-T +W f", false);
    row("two letters in one", "-TW f", false);
    row("value in the same argument", "-T -W -H3 f", false);
    row("lone hyphen", "-T -W - f", false);
    row("to standard output", "-T -W -c f", false);
    row("identify", "-i -v f", false);
    row("document mode", "-T -W -D f", false);
    row("other interpolations", "-T -W -q 1 f", false);
    row("other interpolations", "-T -W -q 2 f", false);
    row("unknown interpolation", "-T -W -q 4 f", false);
    row("stronger rebuilding", "-T -H 5 f", false);
    row("ten medians", "-T -W -m 10 f", false);
    row("three digits", "-T -W -m 001 f", false);
    row("fraction for a whole number", "-T -W -m 1.0 f", false);
    row("space of a name", "-T -W -o camera f", false);
    row("space of two digits", "-T -W -o 01 f", false);
    row("space 7", "-T -W -o 7 f", false);
    row("space 0", "-T -W -o 0 f", true);
    row("darkest", "-T -W -b 0.01 f", true);
    row("too dark", "-T -W -b 0.009 f", false);
    row("too bright", "-T -W -b 10000 f", false);
    row("negative", "-T -W -b -1 f", false);
    row("signed", "-T -W -b +1 f", false);
    row("exponent", "-T -W -b 1e1 f", false);
    row("point first", "-T -W -b .5 f", false);
    row("point last", "-T -W -b 5. f", true);
    row("two points", "-T -W -b 1.2.3 f", false);
    row("hexadecimal", "-T -W -b 0x10 f", false);
    row("20 digits", "-T -W -b 1.000000000000000000 f", true);
    row("21 characters", "-T -W -b 1.0000000000000000000 f", false);
    row("too few multipliers", "-T -W -r 1 1 1 f", false);
    row("power 0", "-T -W -g 0 1 f", false);
    row("power of more than 20", "-T -W -g 20.1 1 f", false);
    row("exponent of more than 20", "-T -W -g 0.04 1 f", false);
    row("slope of more than 1000", "-T -W -g 2 1001 f", false);
    row("value missing", "-T -W -b", false);
    QTest::newRow("empty value") << QStringList{QStringLiteral("-T"), QStringLiteral("-W"),
                                                QStringLiteral("-b"), QString(),
                                                QStringLiteral("f")}
                                 << false;
    QTest::newRow("empty name") << QStringList{QStringLiteral("-T"), QStringLiteral("-W"),
                                               QString()}
                                << false;
}

void TestDcrawOptions::whatIsCovered()
{
    QFETCH(QStringList, arguments);
    QFETCH(bool, covered);
    bool isCovered = true;
    try {
        parsed(arguments);
    } catch (const dcraw::NotCovered &) {
        isCovered = false;
    }
    QCOMPARE(isCovered, covered);
}

void TestDcrawOptions::outputBesideTheInput_data()
{
    QTest::addColumn<QString>("input");
    QTest::addColumn<QString>("output");
    QTest::newRow("extension") << "a/b.dng"
                               << "a/b.tiff";
    QTest::newRow("of several dots the last") << "a.b.dng"
                                              << "a.b.tiff";
    QTest::newRow("none") << "frame"
                          << "frame.tiff";
    QTest::newRow("a folder's dot counts, too") << "d.x/f"
                                                << "d.tiff";
    QTest::newRow("its own output") << "x.tiff"
                                    << "x.tiff";
}

void TestDcrawOptions::outputBesideTheInput()
{
    QFETCH(QString, input);
    QTEST(QString::fromStdString(dcraw::outputPath(input.toStdString())), "output");
}

FILMWRIGHT_TEST(TestDcrawOptions, QCoreApplication)
#include "tst_dcraw_options.moc"
