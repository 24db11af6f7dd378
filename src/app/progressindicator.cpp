// SPDX-License-Identifier: MIT
#include "app/progressindicator.h"

#include <QStyleOptionProgressBar>
#include <QStylePainter>
#include <QTimerEvent>

#include <algorithm>
#include <chrono>
#include <cmath>

using namespace std::chrono_literals;

namespace filmwright {

namespace {

/// Steps of the whole bar: finer than any screen shows.
constexpr int barSteps = 10000;

constexpr auto wayThere = 1200ms;
constexpr int motionInterval = 40; // milliseconds

/// Where the moving part is, from 0 to 1; the same for all bars.
double placeNow()
{
    const auto now = std::chrono::steady_clock::now().time_since_epoch() % (2 * wayThere);
    return 1 - std::abs(1 - std::chrono::duration<double>(now) / wayThere);
}

} // namespace

ProgressIndicator::ProgressIndicator(QWidget *parent)
    : QProgressBar(parent)
{
    setTextVisible(false);
    refresh();
}

void ProgressIndicator::setIndeterminate(bool indeterminate)
{
    m_indeterminate = indeterminate;
    refresh();
}

void ProgressIndicator::setMinValue(double value)
{
    m_minValue = value;
    refresh();
}

void ProgressIndicator::setMaxValue(double value)
{
    m_maxValue = value;
    refresh();
}

void ProgressIndicator::setDoubleValue(double value)
{
    m_doubleValue = value;
    refresh();
}

void ProgressIndicator::startAnimation()
{
    m_animating = true;
    refresh();
}

void ProgressIndicator::stopAnimation()
{
    m_animating = false;
    refresh();
}

/// An empty bar is otherwise drawn in the colour of a table's rows, unseen in a dark theme, and a
/// full one in that of a selected row.
void ProgressIndicator::initStyleOption(QStyleOptionProgressBar *option) const
{
    QProgressBar::initStyleOption(option);
    const bool selected = parentWidget() && parentWidget()->backgroundRole() == QPalette::Highlight;
    option->palette.setBrush(QPalette::Base,
                             selected ? option->palette.highlight() : option->palette.window());
    if (selected)
        option->palette.setBrush(QPalette::Highlight, option->palette.highlightedText());
}

/// Styles paint a busy bar over its whole length, which looks like a full one.
void ProgressIndicator::paintEvent(QPaintEvent *event)
{
    if (!isBusy()) {
        QProgressBar::paintEvent(event);
        return;
    }
    QStyleOptionProgressBar option;
    initStyleOption(&option);
    option.maximum = option.minimum + 1;
    option.progress = option.minimum;
    QStylePainter painter(this);
    painter.drawControl(QStyle::CE_ProgressBar, option);
    const int length = width() / 4;
    painter.setClipRect(QRect(qRound((width() - length) * placeNow()), 0, length, height()));
    option.progress = option.maximum;
    painter.drawControl(QStyle::CE_ProgressBar, option);
}

void ProgressIndicator::timerEvent(QTimerEvent *event)
{
    if (event->timerId() == m_motion.timerId())
        update();
    else
        QProgressBar::timerEvent(event);
}

void ProgressIndicator::refresh()
{
    if (isBusy()) {
        setRange(0, 0);
        m_motion.start(motionInterval, this);
        return;
    }
    m_motion.stop();
    const double range = m_maxValue - m_minValue;
    const double part = m_indeterminate || range <= 0 ? 0 : (m_doubleValue - m_minValue) / range;
    setRange(0, barSteps);
    setValue(static_cast<int>(std::clamp(part, 0.0, 1.0) * barSteps));
}

} // namespace filmwright

#include "moc_progressindicator.cpp"
