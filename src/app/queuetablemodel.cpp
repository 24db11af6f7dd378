// SPDX-License-Identifier: MIT
#include "app/queuetablemodel.h"

#include "app/plaintext.h"
#include "app/queuetabledatasource.h"

namespace filmwright {

QueueTableModel::QueueTableModel(QueueTableView &tableView)
    : m_tableView(tableView)
{
}

void QueueTableModel::setDataSource(QueueTableDataSource *dataSource)
{
    m_dataSource = dataSource;
    reload();
}

void QueueTableModel::reload()
{
    const int rows = m_dataSource ? m_dataSource->numberOfRowsInTableView(m_tableView) : 0;
    if (rows > m_rows) {
        beginInsertRows({}, 0, rows - m_rows - 1);
        m_rows = rows;
        endInsertRows();
    } else if (rows < m_rows) {
        beginResetModel();
        m_rows = rows;
        endResetModel();
    }
    if (rows > 0)
        Q_EMIT dataChanged(index(0, 0), index(rows - 1, columnCount() - 1));
}

int QueueTableModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_rows;
}

int QueueTableModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(queueTableColumns.size());
}

QVariant QueueTableModel::data(const QModelIndex &index, int role) const
{
    if (!m_dataSource || !index.isValid())
        return {};
    const int row = sourceRow(index.row());
    if (row < 0)
        return {};
    const QString &column = queueTableColumns.at(index.column());
    switch (role) {
    case Qt::DisplayRole:
        return m_dataSource->objectValueForTableColumn(column, row);
    case Qt::DecorationRole: {
        const QIcon picture = index.column() == 0 ? m_dataSource->pictureForRow(row) : QIcon();
        return picture.isNull() ? QVariant() : picture;
    }
    case Qt::ToolTipRole:
        return shownAsItStands(m_dataSource->toolTipForTableColumn(column, row));
    case Qt::AccessibleTextRole:
        return wholeText(column, row);
    case Qt::TextAlignmentRole:
        return QVariant::fromValue(Qt::Alignment(Qt::AlignLeft | Qt::AlignVCenter));
    default:
        return {};
    }
}

/// For those who hear the row: what is shown, and what is only told by the tooltip.
QString QueueTableModel::wholeText(const QString &column, int row) const
{
    QStringList texts{m_dataSource->objectValueForTableColumn(column, row),
                      m_dataSource->toolTipForTableColumn(column, row)};
    texts.removeAll(QString());
    texts.removeDuplicates();
    return texts.join(QLatin1Char('\n'));
}

/// The queue may have grown at the top, and not been told of yet.
int QueueTableModel::sourceRow(int row) const
{
    return row + m_dataSource->numberOfRowsInTableView(m_tableView) - m_rows;
}

QVariant QueueTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    return queueTableColumns.value(section);
}

} // namespace filmwright

#include "moc_queuetablemodel.cpp"
