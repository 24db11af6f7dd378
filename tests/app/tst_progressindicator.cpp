// SPDX-License-Identifier: MIT
#include "app/progressindicator.h"

#include "support/testprogram.h"

#include <QTest>

using namespace filmwright;

namespace {

/// How much of the bar is filled, in percent; -1 for a bar that moves to and fro.
int filled(const ProgressIndicator &bar)
{
    if (bar.maximum() == bar.minimum())
        return -1;
    return qRound(100.0 * (bar.value() - bar.minimum()) / (bar.maximum() - bar.minimum()));
}

/// How many of a hundred places of the bar aren't painted as those of an empty one.
int painted(ProgressIndicator &bar)
{
    ProgressIndicator emptyBar;
    emptyBar.resize(bar.size());
    const QImage empty = emptyBar.grab().toImage();
    const QImage image = bar.grab().toImage();
    int count = 0;
    for (int place = 0; place < 100; ++place) {
        const QPoint pixel(image.width() * place / 100, image.height() / 2);
        count += image.pixel(pixel) != empty.pixel(pixel) ? 1 : 0;
    }
    return count;
}

} // namespace

class TestProgressIndicator : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void newBarIsEmptyAndStill();
    void valueFillsItsPartOfTheRange();
    void rangeNeedNotStartAtZero();
    void valueBeyondTheRangeIsKept();
    void emptyRangeIsAnEmptyBar();
    void workOfUnknownLengthMovesWhileItGoesOn();
    void busyBarDoesNotLookFull();
    void rangeAndValueOutliveWorkOfUnknownLength();
    void animationOfADeterminateBarLeavesItsValue();
};

void TestProgressIndicator::newBarIsEmptyAndStill()
{
    const ProgressIndicator bar;
    QVERIFY(!bar.isIndeterminate());
    QVERIFY(!bar.isAnimating());
    QCOMPARE(bar.doubleValue(), 0.0);
    QCOMPARE(filled(bar), 0);
}

void TestProgressIndicator::valueFillsItsPartOfTheRange()
{
    ProgressIndicator bar;
    bar.setMinValue(0);
    bar.setMaxValue(4);
    bar.setDoubleValue(1);
    QCOMPARE(filled(bar), 25);
    bar.setDoubleValue(2.5);
    QCOMPARE(bar.doubleValue(), 2.5);
    QCOMPARE(filled(bar), 63);
    bar.setMaxValue(2.5);
    QCOMPARE(filled(bar), 100);
}

void TestProgressIndicator::rangeNeedNotStartAtZero()
{
    ProgressIndicator bar;
    bar.setMinValue(-1);
    bar.setMaxValue(1);
    bar.setDoubleValue(0);
    QCOMPARE(filled(bar), 50);
}

void TestProgressIndicator::valueBeyondTheRangeIsKept()
{
    ProgressIndicator bar;
    bar.setMaxValue(2);
    bar.setDoubleValue(3);
    QCOMPARE(bar.doubleValue(), 3.0);
    QCOMPARE(filled(bar), 100);
    bar.setDoubleValue(-1);
    QCOMPARE(filled(bar), 0);
}

void TestProgressIndicator::emptyRangeIsAnEmptyBar()
{
    ProgressIndicator bar;
    bar.setMaxValue(0);
    bar.setDoubleValue(0);
    QCOMPARE(filled(bar), 0);
}

void TestProgressIndicator::workOfUnknownLengthMovesWhileItGoesOn()
{
    ProgressIndicator bar;
    bar.setIndeterminate(true);
    QCOMPARE(filled(bar), 0);
    bar.startAnimation();
    QVERIFY(bar.isAnimating());
    QCOMPARE(filled(bar), -1);
    bar.stopAnimation();
    QVERIFY(!bar.isAnimating());
    QCOMPARE(filled(bar), 0);
}

void TestProgressIndicator::busyBarDoesNotLookFull()
{
    ProgressIndicator bar;
    bar.resize(300, 20);
    bar.setIndeterminate(true);
    bar.startAnimation();
    bar.show();
    const QImage before = bar.grab().toImage();
    QVERIFY2(painted(bar) > 10 && painted(bar) < 40, qPrintable(QString::number(painted(bar))));
    QTRY_VERIFY(bar.grab().toImage() != before);
    bar.stopAnimation();
    QCOMPARE(painted(bar), 0);
}

void TestProgressIndicator::rangeAndValueOutliveWorkOfUnknownLength()
{
    ProgressIndicator bar;
    bar.setMaxValue(3);
    bar.setDoubleValue(1.5);
    bar.setIndeterminate(true);
    bar.startAnimation();
    QCOMPARE(bar.doubleValue(), 1.5);
    QCOMPARE(bar.maxValue(), 3.0);
    bar.setIndeterminate(false);
    QCOMPARE(filled(bar), 50);
}

void TestProgressIndicator::animationOfADeterminateBarLeavesItsValue()
{
    ProgressIndicator bar;
    bar.setMaxValue(2);
    bar.setDoubleValue(1);
    bar.startAnimation();
    QCOMPARE(filled(bar), 50);
    bar.stopAnimation();
    QCOMPARE(filled(bar), 50);
}

FILMWRIGHT_TEST(TestProgressIndicator, QApplication)
#include "tst_progressindicator.moc"
