// SPDX-License-Identifier: MIT
#include "app/imageview.h"

#include <QTest>

using namespace filmwright;

namespace {

constexpr int density = 2;

QImage plain(const QSize &size, const QColor &colour)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(colour);
    return image;
}

/// The part of the view, in its device pixels, that has the colour.
QRect areaOf(const QImage &view, const QColor &colour)
{
    QRect area;
    for (int y = 0; y < view.height(); ++y) {
        for (int x = 0; x < view.width(); ++x) {
            if (view.pixelColor(x, y) == colour)
                area |= QRect(x, y, 1, 1);
        }
    }
    return area;
}

/// Counts the repaints of a widget.
class PaintCounter : public QObject
{
public:
    explicit PaintCounter(QWidget &widget) { widget.installEventFilter(this); }

    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::Paint)
            ++paints;
        return false;
    }

    int paints = 0;
};

} // namespace

class TestImageView : public QObject
{
    Q_OBJECT

public:
    /// Before the application: a screen with two device pixels a point.
    static void initMain() { qputenv("QT_SCALE_FACTOR", QByteArray::number(density)); }

private Q_SLOTS:
    void emptyViewSaysWhatItIsFor();
    void nullImageEmptiesTheView();
    void imageFillsWhatItsProportionsAllow_data();
    void imageFillsWhatItsProportionsAllow();
    void imageIsAsSharpAsTheScreen();
    void onlyTheNewestImageIsDrawn();
    void imageFollowsTheSizeOfTheView();
};

void TestImageView::emptyViewSaysWhatItIsFor()
{
    ImageView view;
    view.resize(300, 200);
    const QImage empty = view.grab().toImage();
    QCOMPARE(empty.size(), QSize(300, 200) * density);
    const QRgb background = empty.pixel(1, 1);
    bool hasText = false;
    for (int x = 0; x < empty.width(); ++x) {
        for (int y = empty.height() / 3; y < 2 * empty.height() / 3; ++y)
            hasText = hasText || empty.pixel(x, y) != background;
    }
    QVERIFY(hasText);
    QVERIFY(view.image().isNull());
    QCOMPARE(view.accessibleName(), QStringLiteral("Preview"));
}

void TestImageView::nullImageEmptiesTheView()
{
    ImageView view;
    view.resize(300, 200);
    const QImage empty = view.grab().toImage();
    view.setImage(plain({30, 20}, Qt::red));
    QVERIFY(view.grab().toImage() != empty);
    view.setImage(QImage());
    QVERIFY(view.image().isNull());
    QCOMPARE(view.grab().toImage(), empty);
}

void TestImageView::imageFillsWhatItsProportionsAllow_data()
{
    QTest::addColumn<QSize>("image");
    QTest::addColumn<QRect>("shown");
    QTest::newRow("same proportions, smaller") << QSize(30, 20) << QRect(0, 0, 300, 200);
    QTest::newRow("same proportions, larger") << QSize(1200, 800) << QRect(0, 0, 300, 200);
    QTest::newRow("wide") << QSize(600, 200) << QRect(0, 50, 300, 100);
    QTest::newRow("high") << QSize(100, 200) << QRect(100, 0, 100, 200);
}

void TestImageView::imageFillsWhatItsProportionsAllow()
{
    QFETCH(const QSize, image);
    QFETCH(const QRect, shown);
    ImageView view;
    view.resize(300, 200);
    view.setImage(plain(image, Qt::red));
    QCOMPARE(areaOf(view.grab().toImage(), Qt::red),
             QRect(shown.topLeft() * density, shown.size() * density));
}

void TestImageView::imageIsAsSharpAsTheScreen()
{
    ImageView view;
    view.resize(200, 100);
    QImage stripes = plain(view.size() * density, Qt::white);
    for (int y = 0; y < stripes.height(); ++y) {
        for (int x = 0; x < stripes.width(); x += 2)
            stripes.setPixelColor(x, y, Qt::black);
    }
    view.setImage(stripes);
    const QImage shown = view.grab().toImage().convertToFormat(stripes.format());
    QCOMPARE(shown.size(), stripes.size());
    for (int x = 0; x < shown.width(); ++x)
        QCOMPARE(shown.pixelColor(x, 50), stripes.pixelColor(x, 50));
}

void TestImageView::onlyTheNewestImageIsDrawn()
{
    ImageView view;
    view.resize(300, 200);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    QCoreApplication::processEvents();
    const PaintCounter counter(view);
    for (const QColor colour : {Qt::red, Qt::green, Qt::blue})
        view.setImage(plain({30, 20}, colour));
    QCOMPARE(counter.paints, 0);
    QTRY_COMPARE(counter.paints, 1);
    QTest::qWait(50);
    QCOMPARE(counter.paints, 1);
    QCOMPARE(view.image().pixelColor(0, 0), QColor(Qt::blue));
    QCOMPARE(view.grab().toImage().pixelColor(300, 200), QColor(Qt::blue));
}

void TestImageView::imageFollowsTheSizeOfTheView()
{
    ImageView view;
    view.resize(300, 200);
    view.setImage(plain({30, 20}, Qt::red));
    QCOMPARE(areaOf(view.grab().toImage(), Qt::red), QRect(0, 0, 600, 400));
    view.resize(200, 200);
    const QRect area = areaOf(view.grab().toImage(), Qt::red);
    QCOMPARE(area.width(), 400);
    QVERIFY(qAbs(area.height() - 267) <= 1);
}

QTEST_MAIN(TestImageView)
#include "tst_imageview.moc"
