// SPDX-License-Identifier: MIT
#include "app/frameslider.h"

#include "support/testprogram.h"

#include <QSignalSpy>
#include <QTest>

using namespace filmwright;

class TestFrameSlider : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void framesAreCountedFromOne();
    void otherRecordingBeginsAtItsFirstFrameWithoutAWord();
    void pageMovesByASecond();
    void keysLeadToTheEnds();
    void pressTakesTheHandleThere();
    void selectionLiesBelowItsFrames();
    void allFramesAreNotMarked();

private:
    std::unique_ptr<FrameSlider> m_slider;
};

void TestFrameSlider::init()
{
    m_slider = std::make_unique<FrameSlider>();
    m_slider->resize(400, 30);
    m_slider->setFrames(200, 25);
}

void TestFrameSlider::framesAreCountedFromOne()
{
    QCOMPARE(m_slider->minimum(), 1);
    QCOMPARE(m_slider->maximum(), 200);
    m_slider->setFrames(0, 0);
    QCOMPARE(m_slider->maximum(), 1);
    QCOMPARE(m_slider->pageStep(), 1);
}

void TestFrameSlider::otherRecordingBeginsAtItsFirstFrameWithoutAWord()
{
    m_slider->setValue(120);
    const QSignalSpy changes(m_slider.get(), &QSlider::valueChanged);
    m_slider->setFrames(50, 25);
    QCOMPARE(m_slider->value(), 1);
    QCOMPARE(changes.size(), 0);
}

void TestFrameSlider::pageMovesByASecond()
{
    m_slider->setFrames(200, 23.976);
    QTest::keyClick(m_slider.get(), Qt::Key_PageUp);
    QCOMPARE(m_slider->value(), 25);
    QTest::keyClick(m_slider.get(), Qt::Key_PageDown);
    QCOMPARE(m_slider->value(), 1);
}

void TestFrameSlider::keysLeadToTheEnds()
{
    QTest::keyClick(m_slider.get(), Qt::Key_Right);
    QCOMPARE(m_slider->value(), 2);
    QTest::keyClick(m_slider.get(), Qt::Key_End);
    QCOMPARE(m_slider->value(), 200);
    QTest::keyClick(m_slider.get(), Qt::Key_Left);
    QCOMPARE(m_slider->value(), 199);
    QTest::keyClick(m_slider.get(), Qt::Key_Home);
    QCOMPARE(m_slider->value(), 1);
}

void TestFrameSlider::pressTakesTheHandleThere()
{
    QTest::mousePress(m_slider.get(), Qt::LeftButton, {}, {200, 15});
    QVERIFY2(qAbs(m_slider->value() - 100) <= 2, qPrintable(QString::number(m_slider->value())));
    QVERIFY(m_slider->isSliderDown());
    QTest::mouseMove(m_slider.get(), {300, 15});
    QTest::mouseRelease(m_slider.get(), Qt::LeftButton, {}, {300, 15});
    QVERIFY(!m_slider->isSliderDown());
}

void TestFrameSlider::selectionLiesBelowItsFrames()
{
    m_slider->setSelection({1, 100});
    const QRect firstHalf = m_slider->placeOfSelection();
    m_slider->setSelection({101, 0});
    const QRect secondHalf = m_slider->placeOfSelection();
    QVERIFY(firstHalf.width() > 150);
    QVERIFY(qAbs(firstHalf.width() - secondHalf.width()) <= 2);
    QVERIFY(secondHalf.left() > firstHalf.right());
    QVERIFY(secondHalf.left() <= firstHalf.right() + 3);
    m_slider->setSelection({50, 50});
    QCOMPARE(m_slider->placeOfSelection().width(), 2);
    const QRect mark = m_slider->placeOfSelection();
    const QColor highlight = m_slider->palette().color(QPalette::Highlight);
    QCOMPARE(m_slider->grab().toImage().pixelColor(mark.topLeft()), highlight);
}

void TestFrameSlider::allFramesAreNotMarked()
{
    QVERIFY(m_slider->placeOfSelection().isEmpty());
}

FILMWRIGHT_TEST(TestFrameSlider, QApplication)
#include "tst_frameslider.moc"
