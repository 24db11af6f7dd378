// SPDX-License-Identifier: MIT
#include "app/flowlayout.h"

#include "support/testprogram.h"

#include <QTest>
#include <QWidget>

using namespace filmwright;

namespace {

constexpr int height = 20;

/// A row of widgets, 10 pixels apart.
class Row
{
public:
    Row()
    {
        m_layout->setContentsMargins({});
        m_layout->setSpacing(10);
    }

    QWidget *add(int width)
    {
        auto *item = new QWidget(&window);
        item->setFixedSize(width, height);
        m_layout->addWidget(item);
        return item;
    }

    QWidget *addExpanding(int leastWidth)
    {
        QWidget *item = add(leastWidth);
        item->setMaximumWidth(QWIDGETSIZE_MAX);
        item->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
        return item;
    }

    void layOut(int width)
    {
        m_layout->activate();
        m_layout->setGeometry({0, 0, width, m_layout->heightForWidth(width)});
    }

    const FlowLayout &layout() const { return *m_layout; }

    QWidget window;

private:
    FlowLayout *m_layout = new FlowLayout(&window);
};

} // namespace

class TestFlowLayout : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void whatFitsIsOneLine();
    void whatDoesNotFitBeginsTheNextLine();
    void restOfALineGoesToThoseThatExpand();
    void hiddenItemTakesNoRoom();
    void rightToLeftBeginsAtTheRight();
    void leastWidthIsThatOfTheWidestItem();
    void marginsAreKept();
};

void TestFlowLayout::whatFitsIsOneLine()
{
    Row row;
    const QWidget *first = row.add(40);
    const QWidget *second = row.add(50);
    row.layOut(100);
    QCOMPARE(first->geometry(), QRect(0, 0, 40, height));
    QCOMPARE(second->geometry(), QRect(50, 0, 50, height));
    QCOMPARE(row.layout().heightForWidth(100), height);
    QCOMPARE(row.layout().sizeHint(), QSize(100, height));
}

void TestFlowLayout::whatDoesNotFitBeginsTheNextLine()
{
    Row row;
    row.add(40);
    const QWidget *second = row.add(50);
    const QWidget *third = row.add(30);
    row.layOut(99);
    QCOMPARE(second->geometry(), QRect(0, 30, 50, height));
    QCOMPARE(third->geometry(), QRect(60, 30, 30, height));
    QCOMPARE(row.layout().heightForWidth(99), 2 * height + 10);
}

void TestFlowLayout::restOfALineGoesToThoseThatExpand()
{
    Row row;
    row.add(40);
    const QWidget *field = row.addExpanding(50);
    const QWidget *other = row.addExpanding(50);
    row.layOut(200);
    QCOMPARE(field->geometry(), QRect(50, 0, 70, height));
    QCOMPARE(other->geometry(), QRect(130, 0, 70, height));
}

void TestFlowLayout::hiddenItemTakesNoRoom()
{
    Row row;
    row.add(40)->hide();
    const QWidget *shown = row.add(50);
    row.layOut(60);
    QCOMPARE(shown->geometry(), QRect(0, 0, 50, height));
    QCOMPARE(row.layout().heightForWidth(60), height);
}

void TestFlowLayout::rightToLeftBeginsAtTheRight()
{
    Row row;
    row.window.setLayoutDirection(Qt::RightToLeft);
    const QWidget *first = row.add(40);
    const QWidget *second = row.add(50);
    row.layOut(200);
    QCOMPARE(first->geometry(), QRect(160, 0, 40, height));
    QCOMPARE(second->geometry(), QRect(100, 0, 50, height));
}

void TestFlowLayout::leastWidthIsThatOfTheWidestItem()
{
    Row row;
    row.add(40);
    row.add(90);
    row.add(50);
    QCOMPARE(row.layout().minimumSize(), QSize(90, height));
}

void TestFlowLayout::marginsAreKept()
{
    Row row;
    const QWidget *item = row.add(40);
    row.window.layout()->setContentsMargins(1, 2, 3, 4);
    row.layOut(100);
    QCOMPARE(item->geometry(), QRect(1, 2, 40, height));
    QCOMPARE(row.layout().heightForWidth(100), 2 + height + 4);
    QCOMPARE(row.layout().sizeHint(), QSize(1 + 40 + 3, 2 + height + 4));
}

FILMWRIGHT_TEST(TestFlowLayout, QApplication)
#include "tst_flowlayout.moc"
