// SPDX-License-Identifier: MIT
#include "app/imageview.h"

#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QStyleOptionFocusRect>

#include <algorithm>

namespace filmwright {

namespace {

/// Where a stretch of so many pixels has its middle, so that it lies within the image; an image
/// that is shorter lies in the middle itself.
int centreWithin(int wanted, int shown, int whole)
{
    if (shown >= whole)
        return whole / 2;
    return std::clamp(wanted, shown / 2, whole - (shown - shown / 2));
}

} // namespace

ImageView::ImageView(QWidget *parent)
    : QWidget(parent)
{
    setAccessibleName(QStringLiteral("Preview"));
    setMinimumSize(80, 45);
    setFocusPolicy(Qt::StrongFocus);
}

void ImageView::setImage(const QImage &image)
{
    const bool otherSize = image.size() != m_image.size();
    m_image = image;
    m_scaled = QPixmap();
    if (otherSize)
        m_centre = m_image.rect().center();
    updateCursor();
    update();
}

void ImageView::setText(const QString &text)
{
    m_text = text;
    update();
}

void ImageView::setActualSize(bool actualSize)
{
    if (actualSize != m_actualSize)
        look(m_image.rect().center(), actualSize);
}

void ImageView::look(const QPoint &centre, bool actualSize)
{
    const QSize shown = sizeInPixels();
    m_centre = {centreWithin(centre.x(), shown.width(), m_image.width()),
                centreWithin(centre.y(), shown.height(), m_image.height())};
    if (m_actualSize != actualSize) {
        m_actualSize = actualSize;
        Q_EMIT actualSizeChanged(actualSize);
    }
    updateCursor();
    update();
}

void ImageView::updateCursor()
{
    if (m_image.isNull())
        unsetCursor();
    else
        setCursor(m_actualSize ? Qt::OpenHandCursor : Qt::PointingHandCursor);
}

QSize ImageView::sizeInPixels() const
{
    return (QSizeF(size()) * devicePixelRatioF()).toSize();
}

/// Scaled in device pixels, so that a high-density screen gets all it can show.
const QPixmap &ImageView::scaledImage()
{
    const QSize fitting = m_image.size().scaled(sizeInPixels(), Qt::KeepAspectRatio);
    if (m_scaled.isNull() || m_scaled.size() != fitting) {
        m_scaled = QPixmap::fromImage(
            m_image.scaled(fitting, Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
        m_scaled.setDevicePixelRatio(devicePixelRatioF());
    }
    return m_scaled;
}

/// In the view's coordinates; in actual size it may reach beyond the view.
QRectF ImageView::placeOfImage() const
{
    if (!m_actualSize) {
        const QSizeF shown = QSizeF(m_image.size()).scaled(QSizeF(size()), Qt::KeepAspectRatio);
        return {QPointF((width() - shown.width()) / 2, (height() - shown.height()) / 2), shown};
    }
    const double ratio = devicePixelRatioF();
    const QPoint middle(sizeInPixels().width() / 2, sizeInPixels().height() / 2);
    return {QPointF(middle - m_centre) / ratio, QSizeF(m_image.size()) / ratio};
}

void ImageView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.fillRect(rect(), palette().color(QPalette::Window).darker(115));
    if (m_image.isNull()) {
        painter.setPen(palette().color(QPalette::WindowText));
        painter.drawText(rect(), Qt::AlignCenter | Qt::TextWordWrap, m_text);
    } else if (m_actualSize) {
        painter.drawImage(placeOfImage(), m_image);
    } else {
        const QPixmap &pixmap = scaledImage();
        const QSizeF shown = pixmap.deviceIndependentSize();
        painter.drawPixmap(QPointF((width() - shown.width()) / 2, (height() - shown.height()) / 2),
                           pixmap);
    }
    if (hasFocus()) {
        QStyleOptionFocusRect option;
        option.initFrom(this);
        style()->drawPrimitive(QStyle::PE_FrameFocusRect, &option, &painter, this);
    }
}

void ImageView::resizeEvent(QResizeEvent *)
{
    look(m_centre, m_actualSize);
}

void ImageView::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton || m_image.isNull())
        return;
    m_pressed = event->pos();
    m_centreWhenPressed = m_centre;
    m_isDragged = false;
}

void ImageView::mouseMoveEvent(QMouseEvent *event)
{
    if (!(event->buttons() & Qt::LeftButton) || !m_actualSize)
        return;
    const QPoint way = event->pos() - m_pressed;
    m_isDragged = m_isDragged || way.manhattanLength() >= QApplication::startDragDistance();
    if (m_isDragged) {
        setCursor(Qt::ClosedHandCursor);
        look(m_centreWhenPressed - (QPointF(way) * devicePixelRatioF()).toPoint(), true);
    }
}

void ImageView::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton || m_image.isNull())
        return;
    if (!m_isDragged) {
        const QRectF place = placeOfImage();
        const QPointF part((event->pos().x() - place.x()) / place.width(),
                           (event->pos().y() - place.y()) / place.height());
        look(QPointF(part.x() * m_image.width(), part.y() * m_image.height()).toPoint(),
             !m_actualSize);
    }
    updateCursor();
}

void ImageView::keyPressEvent(QKeyEvent *event)
{
    const QSize step = sizeInPixels() / 8;
    const bool moves = m_actualSize && event->modifiers() == Qt::ShiftModifier;
    if (event->key() == Qt::Key_Space && !m_image.isNull())
        look(m_centre, !m_actualSize);
    else if (moves && event->key() == Qt::Key_Left)
        look(m_centre - QPoint(step.width(), 0), true);
    else if (moves && event->key() == Qt::Key_Right)
        look(m_centre + QPoint(step.width(), 0), true);
    else if (moves && event->key() == Qt::Key_Up)
        look(m_centre - QPoint(0, step.height()), true);
    else if (moves && event->key() == Qt::Key_Down)
        look(m_centre + QPoint(0, step.height()), true);
    else
        QWidget::keyPressEvent(event);
}

} // namespace filmwright

#include "moc_imageview.cpp"
