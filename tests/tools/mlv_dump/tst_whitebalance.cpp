// SPDX-License-Identifier: MIT
#include "mlv_dump/whitebalance.h"

#include "recordingbuilder.h"
#include "support/testprogram.h"

#include <QTest>

#include <cmath>

using mlvdump::BalanceChoice;
using mlvdump::parseBalance;
using Kind = mlvdump::BalanceChoice::Kind;

class TestWhiteBalance : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void choices()
    {
        QVERIFY(parseBalance("camera").value().kind == Kind::Camera);
        QVERIFY(parseBalance("auto").value().kind == Kind::Auto);
        const auto kelvin = parseBalance("5600").value();
        QVERIFY(kelvin.kind == Kind::Kelvin);
        QCOMPARE(kelvin.kelvin, 5600.0);
    }

    void multipliersAreTheInverseOfWhatTheCameraSaw()
    {
        const auto given = parseBalance("2,1,1.6").value();
        QVERIFY(given.kind == Kind::Given);
        QCOMPARE(given.neutral[0], 0.5);
        QCOMPARE(given.neutral[1], 1.0);
        QCOMPARE(given.neutral[2], 0.625);
        QCOMPARE(parseBalance("4,2,3.2").value().neutral, given.neutral); // in the same measure
    }

    void nonsense_data()
    {
        QTest::addColumn<QByteArray>("text");
        for (const char *text :
             {"",       "tungsten", "Auto",   "1999",    "25001",     "-5600",   "5600K",   "5e3",
              "nan",    "inf",      "2,1",    "2,1,",    ",1,2",      "2,,1",    "2,1,1,1", "2,1,0",
              "2,-1,1", "2,1,x",    "2, 1,1", "101,1,1", "1,1,0.009", "nan,1,1", "1,inf,1"})
            QTest::newRow(text) << QByteArray(text);
    }

    void nonsense()
    {
        QFETCH(QByteArray, text);
        QVERIFY(!parseBalance(text.toStdString()));
    }

    void warmerTemperaturesSeeMoreRedAndLessBlue()
    {
        const auto matrix = mlvdump::colourMatrix(RecordingBuilder::rawInfo());
        auto before = mlvdump::neutralOfKelvin(2000, matrix);
        for (int kelvin = 2100; kelvin <= 25000; kelvin += 100) {
            const auto neutral = mlvdump::neutralOfKelvin(kelvin, matrix);
            QVERIFY2(neutral[0] < before[0] && neutral[2] > before[2],
                     qPrintable(QString::number(kelvin)));
            before = neutral;
        }
    }
};

FILMWRIGHT_TEST(TestWhiteBalance, QCoreApplication)
#include "tst_whitebalance.moc"
