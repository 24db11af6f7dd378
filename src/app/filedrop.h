// SPDX-License-Identifier: MIT
#pragma once

#include <QList>
#include <QObject>
#include <QUrl>

#include <functional>

class QWidget;

namespace filmwright {

/// Makes a widget a place where files can be dropped, its children included that take no drops
/// themselves. Owned by the widget; main thread only.
class FileDrop : public QObject
{
public:
    /// Whether files are welcome, asked once for each drag over the widget.
    using Welcome = std::function<bool(const QList<QUrl> &urls)>;
    /// Takes them; false when they are refused after all.
    using Drop = std::function<bool(const QList<QUrl> &urls)>;
    /// Whether a welcome drag is over the widget.
    using Hover = std::function<void(bool over)>;

    FileDrop(QWidget &widget, Welcome welcome, Drop drop, Hover hover = {});

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void setOver(bool over);

    const Welcome m_welcome;
    const Drop m_drop;
    const Hover m_hover;
    bool m_over = false;
};

} // namespace filmwright
