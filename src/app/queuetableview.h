// SPDX-License-Identifier: MIT
#pragma once

#include "app/queuetablemodel.h"

#include <QTableView>
#include <QTimer>

namespace filmwright {

class QueueTableDataSource;

/// The table of the queue: rows of three lines. Only rows that can be seen have cell views, so that
/// a long queue costs no more than a short one. The columns fill the width.
class QueueTableView : public QTableView
{
    Q_OBJECT

public:
    explicit QueueTableView(QWidget *parent = nullptr);

    /// Not owned; cleared by its owner before it goes away.
    void setDataSource(QueueTableDataSource *dataSource);

    /// Asks the data source anew for everything that is shown: for the number of rows at once, for
    /// the rest in the next event, so that many calls in a row cost no more than one.
    void reloadData();

    /// The view at a cell, which is made when there is none yet. Called by the data source while it
    /// is asked for that cell's view.
    template <typename View>
    View *makeView(const QString &column, int row);

    /// The selected rows in ascending order.
    QList<int> selectedRows() const;

    /// The columns' widths where there is room; in a narrow table some give way, but none of those
    /// that a person has chosen. The first column has what the others leave.
    void setColumnWidths(const QList<int> &usual, const QMap<int, int> &chosen);
    QMap<int, int> chosenWidths() const { return m_chosenWidths; }

    /// The first and the last row that can be seen; the last is before the first without any.
    std::pair<int, int> rowsInSight() const;
    /// The picture of a row has changed.
    void updatePicture(int row);

    /// That something may be dropped now.
    void showDropHighlight(bool shown);

    void reset() override;

Q_SIGNALS:
    void selectedRowsChanged();
    /// After a change of the rows, too.
    void rowsInSightChanged();

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void scrollContentsBy(int dx, int dy) override;
    void selectionChanged(const QItemSelection &selected,
                          const QItemSelection &deselected) override;

private:
    QModelIndex cell(const QString &column, int row) const;
    void fitRowHeight();
    void fillWidth();
    void updateVisibleViews();
    void showSelection();
    void paintInvitation();

    QueueTableModel m_model;
    QueueTableDataSource *m_dataSource = nullptr;
    QTimer m_updateViews;
    QList<QPersistentModelIndex> m_cellsWithViews;
    QList<int> m_usualWidths;
    QMap<int, int> m_chosenWidths; // by column
    bool m_fills = false;
    bool m_dropHighlight = false;
};

template <typename View>
View *QueueTableView::makeView(const QString &column, int row)
{
    const QModelIndex index = cell(column, row);
    if (auto *view = qobject_cast<View *>(indexWidget(index)))
        return view;
    auto *view = new View;
    setIndexWidget(index, view);
    return view;
}

} // namespace filmwright
