// SPDX-License-Identifier: MIT
#include "app/flowlayout.h"

#include <QStyle>
#include <QWidget>

#include <algorithm>

namespace filmwright {

namespace {

int heightOf(const std::vector<QLayoutItem *> &line)
{
    int height = 0;
    for (const QLayoutItem *item : line)
        height = std::max(height, item->sizeHint().height());
    return height;
}

bool expands(const QLayoutItem *item)
{
    return item->expandingDirections().testFlag(Qt::Horizontal);
}

} // namespace

FlowLayout::FlowLayout(QWidget *parent)
    : QLayout(parent)
{
}

FlowLayout::~FlowLayout() = default;

void FlowLayout::addItem(QLayoutItem *item)
{
    m_items.emplace_back(item);
}

void FlowLayout::addLayout(QLayout *layout)
{
    addChildLayout(layout);
    addItem(layout);
}

QLayoutItem *FlowLayout::itemAt(int index) const
{
    return index >= 0 && index < count() ? m_items.at(static_cast<std::size_t>(index)).get()
                                         : nullptr;
}

QLayoutItem *FlowLayout::takeAt(int index)
{
    if (index < 0 || index >= count())
        return nullptr;
    QLayoutItem *item = m_items.at(static_cast<std::size_t>(index)).release();
    m_items.erase(m_items.begin() + index);
    return item;
}

int FlowLayout::widthOf(const Line &line) const
{
    int width = spacing() * (static_cast<int>(line.size()) - 1);
    for (const QLayoutItem *item : line)
        width += item->minimumSize().expandedTo(expands(item) ? QSize() : item->sizeHint()).width();
    return width;
}

std::vector<FlowLayout::Line> FlowLayout::linesFor(int width) const
{
    std::vector<Line> lines;
    for (const auto &item : m_items) {
        if (item->isEmpty())
            continue;
        if (!lines.empty()) {
            lines.back().push_back(item.get());
            if (widthOf(lines.back()) <= width)
                continue;
            lines.back().pop_back();
        }
        lines.push_back({item.get()});
    }
    return lines;
}

int FlowLayout::heightForWidth(int width) const
{
    const QMargins margins = contentsMargins();
    int height = margins.top() + margins.bottom() - spacing();
    for (const Line &line : linesFor(width - margins.left() - margins.right()))
        height += heightOf(line) + spacing();
    return std::max(height, 0);
}

QSize FlowLayout::withMargins(const QSize &size) const
{
    const QMargins margins = contentsMargins();
    return size + QSize(margins.left() + margins.right(), margins.top() + margins.bottom());
}

QSize FlowLayout::sizeHint() const
{
    int width = 0;
    int height = 0;
    for (const auto &item : m_items) {
        width += item->sizeHint().width() + spacing();
        height = std::max(height, item->sizeHint().height());
    }
    return withMargins(QSize(std::max(width - spacing(), 0), height));
}

QSize FlowLayout::minimumSize() const
{
    QSize least;
    for (const auto &item : m_items)
        least = least.expandedTo(item->minimumSize());
    return withMargins(least);
}

void FlowLayout::setGeometry(const QRect &rect)
{
    QLayout::setGeometry(rect);
    QRect room = rect.marginsRemoved(contentsMargins());
    for (const Line &line : linesFor(room.width())) {
        room.setHeight(heightOf(line));
        place(line, room);
        room.translate(0, room.height() + spacing());
    }
}

void FlowLayout::place(const Line &line, const QRect &room) const
{
    const auto expanding = static_cast<int>(std::count_if(line.cbegin(), line.cend(), expands));
    const int spare = std::max(room.width() - widthOf(line), 0);
    int left = room.left();
    for (QLayoutItem *item : line) {
        const int width =
            widthOf({item}) + (expanding > 0 && expands(item) ? spare / expanding : 0);
        const QRect place(left, room.top(), std::min(width, room.width()), room.height());
        item->setGeometry(QStyle::visualRect(parentWidget()->layoutDirection(), room, place));
        left += width + spacing();
    }
}

} // namespace filmwright

#include "moc_flowlayout.cpp"
