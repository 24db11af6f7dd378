// SPDX-License-Identifier: MIT
#include "app/histogramview.h"

#include "runner/readabletext.h"

#include <QPainter>
#include <QPolygonF>

#include <algorithm>
#include <cmath>

namespace filmwright {

namespace {

constexpr int curvesHeight = 72;

/// As high as the square root of its samples, so that small parts can be seen, too.
QPolygonF curveOf(const Histogram::Channel &channel, quint32 highest, const QRectF &area)
{
    QPolygonF curve{area.bottomLeft()};
    for (std::size_t value = 0; value < Histogram::values; ++value) {
        const double x = area.left() + area.width() * static_cast<double>(value) /
                                           static_cast<double>(Histogram::values - 1);
        const double part = std::sqrt(static_cast<double>(channel.counts[value]) /
                                      static_cast<double>(std::max(1U, highest)));
        curve << QPointF(x, area.bottom() - part * area.height());
    }
    return curve << area.bottomRight();
}

} // namespace

HistogramView::HistogramView(QWidget *parent)
    : QWidget(parent)
{
    setAccessibleName(QStringLiteral("Histogram"));
    setAccessibleDescription(text());
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
}

void HistogramView::setHistogram(const Histogram &histogram)
{
    m_histogram = histogram;
    setAccessibleDescription(text());
    update();
}

QString HistogramView::text() const
{
    const auto &[red, green, blue] = m_histogram.channels;
    return QStringLiteral("Clipped: red %1, green %2, blue %3")
        .arg(shareText(red.clipped), shareText(green.clipped), shareText(blue.clipped));
}

QSize HistogramView::sizeHint() const
{
    return {256, curvesHeight + fontMetrics().height()};
}

void HistogramView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF area(0, 0, width(), height() - fontMetrics().height());
    painter.fillRect(area, Qt::black);
    painter.setPen(Qt::NoPen);
    // Added up, the three colours are white where they agree.
    painter.setCompositionMode(QPainter::CompositionMode_Plus);
    const quint32 highest = m_histogram.highestCount();
    const std::array<QColor, 3> colours{QColor(200, 0, 0), QColor(0, 200, 0), QColor(0, 0, 200)};
    for (std::size_t channel = 0; channel < colours.size(); ++channel) {
        painter.setBrush(colours[channel]);
        painter.drawPolygon(curveOf(m_histogram.channels[channel], highest, area));
    }
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    painter.setPen(palette().color(QPalette::WindowText));
    const QRectF below(0, area.bottom(), width(), fontMetrics().height());
    painter.drawText(below, Qt::AlignVCenter,
                     fontMetrics().elidedText(text(), Qt::ElideRight, width()));
}

} // namespace filmwright

#include "moc_histogramview.cpp"
