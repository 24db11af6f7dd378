// SPDX-License-Identifier: MIT
#include "app/imageview.h"

#include <QPainter>

namespace filmwright {

ImageView::ImageView(QWidget *parent)
    : QWidget(parent)
{
    setAccessibleName(QStringLiteral("Preview"));
    setMinimumSize(160, 90);
}

void ImageView::setImage(const QImage &image)
{
    m_image = image;
    m_scaled = QPixmap();
    update();
}

/// Scaled in device pixels, so that a high-density screen gets all it can show.
QPixmap ImageView::scaledImage()
{
    const QSize available = (QSizeF(size()) * devicePixelRatioF()).toSize();
    const QSize fitting = m_image.size().scaled(available, Qt::KeepAspectRatio);
    if (m_scaled.isNull() || m_scaled.size() != fitting) {
        m_scaled = QPixmap::fromImage(
            m_image.scaled(fitting, Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
        m_scaled.setDevicePixelRatio(devicePixelRatioF());
    }
    return m_scaled;
}

void ImageView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.fillRect(rect(), palette().color(QPalette::Window).darker(115));
    if (m_image.isNull()) {
        painter.setPen(palette().color(QPalette::WindowText));
        painter.drawText(rect(), Qt::AlignCenter | Qt::TextWordWrap,
                         QStringLiteral("Frames appear here while they are converted"));
        return;
    }
    const QPixmap pixmap = scaledImage();
    const QSizeF shown = pixmap.deviceIndependentSize();
    painter.drawPixmap(QPointF((width() - shown.width()) / 2, (height() - shown.height()) / 2),
                       pixmap);
}

} // namespace filmwright
