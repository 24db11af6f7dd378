// SPDX-License-Identifier: MIT
#include "app/frameslider.h"

#include <QMouseEvent>
#include <QPainter>
#include <QStyleOptionSlider>

#include <algorithm>
#include <cmath>
#include <limits>

namespace filmwright {

namespace {

constexpr int bandHeight = 4;

int frameNumber(quint64 frame)
{
    return static_cast<int>(std::min<quint64>(frame, quint64(std::numeric_limits<int>::max())));
}

} // namespace

FrameSlider::FrameSlider(QWidget *parent)
    : QSlider(Qt::Horizontal, parent)
{
    setAccessibleName(QStringLiteral("Frame"));
    setRange(1, 1);
}

void FrameSlider::setFrames(quint64 frames, double framesPerSecond)
{
    const bool wasBlocked = blockSignals(true);
    setRange(1, std::max(1, frameNumber(frames)));
    setPageStep(std::clamp(static_cast<int>(std::lround(framesPerSecond)), 1, maximum()));
    setValue(1);
    blockSignals(wasBlocked);
}

void FrameSlider::setSelection(const FrameSelection &selection)
{
    m_selection = selection;
    update();
}

/// What the middle of the handle can reach.
QRect FrameSlider::span() const
{
    QStyleOptionSlider option;
    initStyleOption(&option);
    const QRect groove =
        style()->subControlRect(QStyle::CC_Slider, &option, QStyle::SC_SliderGroove, this);
    const int handle = style()->pixelMetric(QStyle::PM_SliderLength, &option, this);
    return groove.adjusted(handle / 2, 0, handle / 2 - handle, 0);
}

int FrameSlider::positionOf(int frame) const
{
    const QRect reach = span();
    return reach.x() + QStyle::sliderPositionFromValue(minimum(), maximum(), frame, reach.width());
}

QRect FrameSlider::placeOfSelection() const
{
    if (m_selection.isWhole())
        return {};
    const int first = positionOf(frameNumber(m_selection.first));
    const int last = positionOf(m_selection.last == 0 ? maximum() : frameNumber(m_selection.last));
    return {first, height() - bandHeight, std::max(2, last - first + 1), bandHeight};
}

void FrameSlider::paintEvent(QPaintEvent *event)
{
    QSlider::paintEvent(event);
    QPainter(this).fillRect(placeOfSelection(), palette().color(QPalette::Highlight));
}

void FrameSlider::mousePressEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton) {
        const QRect reach = span();
        setValue(QStyle::sliderValueFromPosition(minimum(), maximum(), event->pos().x() - reach.x(),
                                                 reach.width()));
    }
    QSlider::mousePressEvent(event);
}

} // namespace filmwright

#include "moc_frameslider.cpp"
