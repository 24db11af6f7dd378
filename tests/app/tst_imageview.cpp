// SPDX-License-Identifier: MIT
#include "app/imageview.h"

#include "support/testprogram.h"

#include <QMouseEvent>
#include <QSignalSpy>
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
        for (int x = 0; x < view.width(); ++x)
            if (view.pixelColor(x, y) == colour)
                area |= QRect(x, y, 1, 1);
    }
    return area;
}

/// Each pixel tells where it is.
QImage map(const QSize &size)
{
    QImage image(size, QImage::Format_RGB32);
    for (int y = 0; y < size.height(); ++y)
        for (int x = 0; x < size.width(); ++x)
            image.setPixel(x, y, qRgb(x % 256, y % 256, x / 256 + 16 * (y / 256)));
    return image;
}

/// The pixel of a map that is shown at a place of the view, in its device pixels.
QPoint shownAt(ImageView &view, const QPoint &place)
{
    const QRgb pixel = view.grab().toImage().pixel(place);
    return {qRed(pixel) + 256 * (qBlue(pixel) % 16), qGreen(pixel) + 256 * (qBlue(pixel) / 16)};
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
    void clickShowsPixelForPixelWhatWasClicked();
    void clickShowsTheWholeImageAgain();
    void dragMovesTheImageUpToItsEdges();
    void keysDoTheSame();
    void smallImageLiesInTheMiddleInActualSize();
    void nextImageOfThatSizeStaysInPlace();
    void emptyViewIsNotClicked();
};

void TestImageView::emptyViewSaysWhatItIsFor()
{
    ImageView view;
    view.resize(300, 200);
    view.setText(QStringLiteral("Nothing yet"));
    const QImage empty = view.grab().toImage();
    QCOMPARE(empty.size(), QSize(300, 200) * density);
    const QRgb background = empty.pixel(1, 1);
    bool hasText = false;
    for (int x = 0; x < empty.width(); ++x)
        for (int y = empty.height() / 3; y < 2 * empty.height() / 3; ++y)
            hasText = hasText || empty.pixel(x, y) != background;
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
    for (int y = 0; y < stripes.height(); ++y)
        for (int x = 0; x < stripes.width(); x += 2)
            stripes.setPixelColor(x, y, Qt::black);
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
    QCoreApplication::processEvents(); // a further painting would have been posted
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

void TestImageView::clickShowsPixelForPixelWhatWasClicked()
{
    ImageView view;
    view.resize(300, 200);
    view.setImage(map({1200, 800}));
    const QSignalSpy changes(&view, &ImageView::actualSizeChanged);
    QTest::mouseClick(&view, Qt::LeftButton, {}, {100, 120});
    QVERIFY(view.isActualSize());
    QCOMPARE(changes.size(), 1);
    QCOMPARE(view.centre(), QPoint(400, 480));
    QCOMPARE(shownAt(view, {300, 200}), QPoint(400, 480));
    QCOMPARE(shownAt(view, {310, 180}), QPoint(410, 460));
}

void TestImageView::clickShowsTheWholeImageAgain()
{
    ImageView view;
    view.resize(300, 200);
    view.setImage(plain({1200, 800}, Qt::red));
    const QImage whole = view.grab().toImage();
    QTest::mouseClick(&view, Qt::LeftButton, {}, {10, 10});
    QTest::mouseClick(&view, Qt::LeftButton, {}, {10, 10});
    QVERIFY(!view.isActualSize());
    QCOMPARE(view.grab().toImage(), whole);
}

void TestImageView::dragMovesTheImageUpToItsEdges()
{
    ImageView view;
    view.resize(300, 200);
    view.setImage(map({1200, 800}));
    view.setActualSize(true);
    QCOMPARE(view.centre(), QPoint(599, 399));
    const auto drag = [&view](const QPoint &way) {
        const QPoint start(150, 100);
        QTest::mousePress(&view, Qt::LeftButton, {}, start);
        QMouseEvent move(QEvent::MouseMove, start + way, view.mapToGlobal(start + way),
                         Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&view, &move);
        QTest::mouseRelease(&view, Qt::LeftButton, {}, start + way);
    };
    drag({-40, 30});
    QVERIFY(view.isActualSize());
    QCOMPARE(view.centre(), QPoint(679, 339));
    drag({1000, 1000});
    QCOMPARE(shownAt(view, {0, 0}), QPoint(0, 0));
    drag({-1000, -1000});
    QCOMPARE(shownAt(view, {599, 399}), QPoint(1199, 799));
}

void TestImageView::keysDoTheSame()
{
    ImageView view;
    view.resize(300, 200);
    view.setImage(map({1200, 800}));
    QTest::keyClick(&view, Qt::Key_Space);
    QVERIFY(view.isActualSize());
    QTest::keyClick(&view, Qt::Key_Right, Qt::ShiftModifier);
    QTest::keyClick(&view, Qt::Key_Up, Qt::ShiftModifier);
    QCOMPARE(view.centre(), QPoint(599 + 75, 399 - 50));
    QTest::keyClick(&view, Qt::Key_Left, Qt::ShiftModifier);
    QTest::keyClick(&view, Qt::Key_Down, Qt::ShiftModifier);
    QCOMPARE(view.centre(), QPoint(599, 399));
    QTest::keyClick(&view, Qt::Key_Space);
    QVERIFY(!view.isActualSize());
}

void TestImageView::smallImageLiesInTheMiddleInActualSize()
{
    ImageView view;
    view.resize(300, 200);
    view.setImage(plain({100, 40}, Qt::red));
    view.setActualSize(true);
    QCOMPARE(areaOf(view.grab().toImage(), Qt::red), QRect(250, 180, 100, 40));
}

void TestImageView::nextImageOfThatSizeStaysInPlace()
{
    ImageView view;
    view.resize(300, 200);
    view.setImage(map({1200, 800}));
    QTest::mouseClick(&view, Qt::LeftButton, {}, {100, 120});
    view.setImage(map({1200, 800}));
    QCOMPARE(view.centre(), QPoint(400, 480));
    view.setImage(map({1000, 600}));
    QCOMPARE(view.centre(), QPoint(499, 299));
}

void TestImageView::emptyViewIsNotClicked()
{
    ImageView view;
    view.resize(300, 200);
    QTest::mouseClick(&view, Qt::LeftButton, {}, {100, 120});
    QTest::keyClick(&view, Qt::Key_Space);
    QVERIFY(!view.isActualSize());
}

FILMWRIGHT_TEST(TestImageView, QApplication)
#include "tst_imageview.moc"
