// SPDX-License-Identifier: MIT
#pragma once

#include <QLayout>

#include <memory>
#include <vector>

namespace filmwright {

/// Items side by side, in as many lines as the width asks for. What is left of a line's width goes
/// to those that expand.
class FlowLayout : public QLayout
{
    Q_OBJECT

public:
    explicit FlowLayout(QWidget *parent = nullptr);
    ~FlowLayout() override;

    void addItem(QLayoutItem *item) override;
    void addLayout(QLayout *layout);
    int count() const override { return static_cast<int>(m_items.size()); }
    QLayoutItem *itemAt(int index) const override;
    QLayoutItem *takeAt(int index) override;

    Qt::Orientations expandingDirections() const override { return {}; }
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;
    /// That of one line; the least width is that of the widest item.
    QSize sizeHint() const override;
    QSize minimumSize() const override;
    void setGeometry(const QRect &rect) override;

private:
    using Line = std::vector<QLayoutItem *>;
    std::vector<Line> linesFor(int width) const;
    int widthOf(const Line &line) const;
    void place(const Line &line, const QRect &room) const;
    QSize withMargins(const QSize &size) const;

    std::vector<std::unique_ptr<QLayoutItem>> m_items;
};

} // namespace filmwright
