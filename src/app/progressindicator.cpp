// SPDX-License-Identifier: MIT
#include "app/progressindicator.h"

#include <QStyleOptionProgressBar>

#include <algorithm>

namespace filmwright {

namespace {

/// Steps of the whole bar: finer than any screen shows.
constexpr int steps = 10000;

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

void ProgressIndicator::refresh()
{
    if (m_indeterminate && m_animating) {
        setRange(0, 0);
        return;
    }
    const double range = m_maxValue - m_minValue;
    const double part = m_indeterminate || range <= 0 ? 0 : (m_doubleValue - m_minValue) / range;
    setRange(0, steps);
    setValue(static_cast<int>(std::clamp(part, 0.0, 1.0) * steps));
}

} // namespace filmwright
