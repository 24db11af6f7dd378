// SPDX-License-Identifier: MIT
#pragma once

#include <QAbstractTableModel>
#include <QStringList>

namespace filmwright {

class QueueTableDataSource;
class QueueTableView;

// The columns' identifiers, which are their titles too, from left to right.
inline const QStringList queueTableColumns{QStringLiteral("File"), QStringLiteral("Camera"),
                                           QStringLiteral("Exposure"), QStringLiteral("State"),
                                           QStringLiteral("Show")};

/// What Qt's table asks, answered by the data source. Holds nothing but the number of rows it has
/// told.
class QueueTableModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    explicit QueueTableModel(QueueTableView &tableView);

    /// Not owned; cleared by its owner before it goes away.
    void setDataSource(QueueTableDataSource *dataSource);

    /// Everything may have changed. New rows are taken to be at the top, where the queue grows.
    void reload();

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    int sourceRow(int row) const;
    QString wholeText(const QString &column, int row) const;

    QueueTableView &m_tableView;
    QueueTableDataSource *m_dataSource = nullptr;
    int m_rows = 0;
};

} // namespace filmwright
