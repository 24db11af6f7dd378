// SPDX-License-Identifier: MIT
#pragma once

#include <QIcon>
#include <QString>

class QWidget;

namespace filmwright {

class QueueTableView;

/// Where the queue table has its rows from. Columns are named by
/// their identifiers. Main thread only.
class QueueTableDataSource
{
public:
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
    /// The picture in front of the text of a row's first cell, which is as large as the table's
    /// icons; null: none.
    virtual QIcon pictureForRow(int) const { return {}; }
};

} // namespace filmwright
