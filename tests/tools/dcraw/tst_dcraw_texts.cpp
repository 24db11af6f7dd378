// SPDX-License-Identifier: MIT
#include "dcraw/notcovered.h"
#include "dcraw/texts.h"

#include "support/testprogram.h"

#include <QString>
#include <QTest>

class TestDcrawTexts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cameraNames_data();
    void cameraNames();
    void camerasWithRulesOfTheirOwn_data();
    void camerasWithRulesOfTheirOwn();
    void descriptionStaysAsItIs();
    void dates_data();
    void dates();
    void extremeDates_data();
    void extremeDates();
};

void TestDcrawTexts::cameraNames_data()
{
    QTest::addColumn<QString>("make");
    QTest::addColumn<QString>("model");
    QTest::addColumn<QString>("shownMake");
    QTest::addColumn<QString>("shownModel");
    const auto row = [](const char *make, const char *model, const char *shownMake,
                        const char *shownModel) {
        QTest::addRow("%s, %s", make, model)
            << QString::fromLatin1(make) << QString::fromLatin1(model)
            << QString::fromLatin1(shownMake) << QString::fromLatin1(shownModel);
    };
    row("Canon", "Canon EOS 5D", "Canon", "EOS 5D");
    row("CANON INC.", "canon EOS M", "Canon", "EOS M");
    row("X", "X", "X", "X");
    row("X", "XY", "X", "XY");
    row("NIKON CORPORATION", "NIKON D800  ", "Nikon", "D800");
    row("Some  ", "Camera ", "Some", "Camera");
    row("RICOH", "PENTAX 5", "Pentax", "5");
    row("of phase one", "P45", "Phase One", "P45");
    row("sony and canon", "x", "Canon", "x");
}

void TestDcrawTexts::cameraNames()
{
    QFETCH(QString, make);
    QFETCH(QString, model);
    const auto texts = dcraw::normalised({{}, make.toStdString(), model.toStdString()});
    QTEST(QString::fromStdString(texts.make), "shownMake");
    QTEST(QString::fromStdString(texts.model), "shownModel");
}

void TestDcrawTexts::camerasWithRulesOfTheirOwn_data()
{
    QTest::addColumn<QString>("make");
    QTest::addColumn<QString>("model");
    const auto row = [](const char *make, const char *model) {
        QTest::addRow("%s, %s", make, model)
            << QString::fromLatin1(make) << QString::fromLatin1(model);
    };
    row("Eastman Kodak", "DCS");
    row("LEICA CAMERA", "M");
    row("X", "K-1");
    row("RICOH", "PENTAX K-1");
    row("X", "645D");
    row("Fujifilm", "FinePix S");
    row("X", "Digital Camera S");
    row("", "model");
    row("make", "");
    row("  ", "model");
    row("make", "   ");
    row("ma\nke", "model");
    row("make", "mo\ndel");
}

void TestDcrawTexts::camerasWithRulesOfTheirOwn()
{
    QFETCH(QString, make);
    QFETCH(QString, model);
    QVERIFY_THROWS_EXCEPTION(dcraw::NotCovered,
                             dcraw::normalised({{}, make.toStdString(), model.toStdString()}));
}

void TestDcrawTexts::descriptionStaysAsItIs()
{
    const auto texts = dcraw::normalised({" two\nlines ", "a", "b"});
    QCOMPARE(texts.description, std::string(" two\nlines "));
}

void TestDcrawTexts::dates_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("shown");
    const auto row = [](const char *text, const char *shown) {
        QTest::newRow(text) << QString::fromLatin1(text) << QString::fromLatin1(shown);
    };
    row("2026:03:21 14:30:02", "2026:03:21 14:30:02");
    row("2026:04:31 00:00:00", "2026:05:01 00:00:00");
    row("2025:13:01 00:00:00", "2026:01:01 00:00:00");
    row("2025:12:31 25:61:61", "2026:01:01 02:02:01");
    row("2026:3:1 4:5:6", "2026:03:01 04:05:06");
    row("1970:01:01 00:00:01", "1970:01:01 00:00:01");
    row("1970:01:01 00:00:00", "1970:01:01 00:00:00");
    row("1969:12:31 23:59:59", "1970:01:01 00:00:00");
    row("0000:00:00 00:00:00", "1970:01:01 00:00:00");
    row("2026-03-21T14:30:02", "1970:01:01 00:00:00");
    row("2026:03:21 14:30", "1970:01:01 00:00:00");
    row("", "1970:01:01 00:00:00");
}

void TestDcrawTexts::dates()
{
    QFETCH(QString, text);
    QTEST(QString::fromStdString(dcraw::timeText(dcraw::parseTime(text.toStdString()))), "shown");
}

void TestDcrawTexts::extremeDates_data()
{
    QTest::addColumn<QString>("text");
    for (const char *text : {"10000:1:1 0:0:0", "2026:999999:1 0:0:0"})
        QTest::newRow(text) << QString::fromLatin1(text);
}

void TestDcrawTexts::extremeDates()
{
    QFETCH(QString, text);
    QVERIFY_THROWS_EXCEPTION(dcraw::NotCovered, dcraw::parseTime(text.toStdString()));
}

FILMWRIGHT_TEST(TestDcrawTexts, QCoreApplication)
#include "tst_dcraw_texts.moc"
