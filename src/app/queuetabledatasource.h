// SPDX-License-Identifier: MIT
#pragma once

#include <QList>
#include <QUrl>

class QWidget;

namespace filmwright {

class QueueTableView;

/// Where the queue table has its rows from and who answers for its drops. Columns are named by
/// their identifiers. Main thread only.
class QueueTableDataSource
{
public:
    /// What a drag over the table may do.
    enum DragOperation : unsigned { DragOperationNone = 0, DragOperationCopy = 1 };

    virtual ~QueueTableDataSource() = default;

    virtual int numberOfRowsInTableView(QueueTableView &tableView) const = 0;

    // The operations below differ in their results alone, so they are named by their second word.

    /// The text of a cell; null for a column that shows a view.
    virtual QString objectValueForTableColumn(const QString &column, int row) const = 0;
    /// The view of a cell, made by QueueTableView::makeView(); null for a column of texts.
    virtual QWidget *viewForTableColumn(QueueTableView &tableView, const QString &column,
                                        int row) = 0;
    /// The whole text of a cell that may be shown cut.
    virtual QString toolTipForTableColumn(const QString &column, int row) const = 0;

    virtual DragOperation validateDrop(const QList<QUrl> &urls) const = 0;
    /// False when the drop is refused.
    virtual bool acceptDrop(const QList<QUrl> &urls) = 0;
};

} // namespace filmwright
