// SPDX-License-Identifier: MIT
#include "app/filedrop.h"

#include <QDropEvent>
#include <QMimeData>
#include <QWidget>

#include <utility>

namespace filmwright {

FileDrop::FileDrop(QWidget &widget, Welcome welcome, Drop drop, Hover hover)
    : QObject(&widget)
    , m_welcome(std::move(welcome))
    , m_drop(std::move(drop))
    , m_hover(std::move(hover))
{
    widget.setAcceptDrops(true);
    widget.installEventFilter(this);
}

void FileDrop::setOver(bool over)
{
    if (std::exchange(m_over, over) != over && m_hover)
        m_hover(over);
}

/// What is dragged is judged when it comes; where in the widget it is dropped doesn't matter.
bool FileDrop::eventFilter(QObject *watched, QEvent *event)
{
    switch (event->type()) {
    case QEvent::DragEnter:
        setOver(m_welcome(static_cast<QDropEvent *>(event)->mimeData()->urls()));
        break;
    case QEvent::DragMove:
        break;
    case QEvent::DragLeave:
        setOver(false);
        return true;
    case QEvent::Drop:
        setOver(false);
        static_cast<QDropEvent *>(event)->setDropAction(Qt::CopyAction);
        event->setAccepted(m_drop(static_cast<QDropEvent *>(event)->mimeData()->urls()));
        return true;
    default:
        return QObject::eventFilter(watched, event);
    }
    static_cast<QDropEvent *>(event)->setDropAction(Qt::CopyAction);
    event->setAccepted(m_over);
    return true;
}

} // namespace filmwright
