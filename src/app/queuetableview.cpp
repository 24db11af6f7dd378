// SPDX-License-Identifier: MIT
#include "app/queuetableview.h"

#include "app/queuetabledatasource.h"

#include <QEvent>
#include <QHeaderView>
#include <QKeyEvent>
#include <QPainter>

#include <algorithm>
#include <array>

namespace filmwright {

namespace {

constexpr int linesPerRow = 3;
constexpr int rowPadding = 10;
/// Of each column, in average letters.
constexpr std::array leastLetters{16, 10, 14, 22, 5};
constexpr std::array rowKeys{Qt::Key_Up,       Qt::Key_Down, Qt::Key_PageUp,
                             Qt::Key_PageDown, Qt::Key_Home, Qt::Key_End};

} // namespace

QueueTableView::QueueTableView(QWidget *parent)
    : QTableView(parent)
    , m_model(*this)
{
    setModel(&m_model);
    setSelectionBehavior(SelectRows);
    setAlternatingRowColors(true);
    setShowGrid(false);
    setWordWrap(false);
    setTextElideMode(Qt::ElideMiddle);
    setVerticalScrollMode(ScrollPerPixel);
    setHorizontalScrollMode(ScrollPerPixel);
    setTabKeyNavigation(false);
    verticalHeader()->hide();
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    horizontalHeader()->setHighlightSections(false);
    horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    fitRowHeight();
    for (int column = 0; column < m_model.columnCount(); ++column)
        m_usualWidths << columnWidth(column);
    connect(horizontalHeader(), &QHeaderView::sectionResized, this,
            [this](int column, int, int width) {
                if (m_fills || column == 0)
                    return;
                m_chosenWidths[column] = width;
                fillWidth();
            });
    m_updateViews.setSingleShot(true);
    connect(&m_updateViews, &QTimer::timeout, this, &QueueTableView::updateVisibleViews);
}

void QueueTableView::setDataSource(QueueTableDataSource *dataSource)
{
    m_dataSource = dataSource;
    m_model.setDataSource(dataSource);
    updateVisibleViews();
}

void QueueTableView::reloadData()
{
    m_model.reload();
    if (!m_updateViews.isActive())
        m_updateViews.start(0);
}

QModelIndex QueueTableView::cell(const QString &column, int row) const
{
    return m_model.index(row, static_cast<int>(queueTableColumns.indexOf(column)));
}

void QueueTableView::updateVisibleViews()
{
    const int rows = m_model.rowCount();
    // The queue may have changed and not been told of yet; the views come with the news.
    if (!m_dataSource || rows == 0 || rows != m_dataSource->numberOfRowsInTableView(*this))
        return;
    const auto [first, last] = rowsInSight();
    for (const QPersistentModelIndex &index : std::as_const(m_cellsWithViews))
        if (index.isValid() && (index.row() < first || index.row() > last))
            setIndexWidget(index, nullptr);
    m_cellsWithViews.clear();
    for (int row = first; row <= last; ++row) {
        for (const QString &column : queueTableColumns)
            if (m_dataSource->viewForTableColumn(*this, column, row))
                m_cellsWithViews << cell(column, row);
    }
    showSelection();
    Q_EMIT rowsInSightChanged();
}

std::pair<int, int> QueueTableView::rowsInSight() const
{
    const int below = rowAt(viewport()->height() - 1);
    return {qMax(rowAt(0), 0), below < 0 ? m_model.rowCount() - 1 : below};
}

void QueueTableView::updatePicture(int row)
{
    update(m_model.index(row, 0));
}

/// Texts of views take the colour that goes with the background behind them.
void QueueTableView::showSelection()
{
    for (const QPersistentModelIndex &index : std::as_const(m_cellsWithViews)) {
        if (QWidget *view = indexWidget(index))
            view->setBackgroundRole(selectionModel()->isSelected(index) ? QPalette::Highlight
                                                                        : QPalette::Base);
    }
}

QList<int> QueueTableView::selectedRows() const
{
    QList<int> rows;
    for (const QModelIndex &index : selectionModel()->selectedRows())
        rows << index.row();
    std::sort(rows.begin(), rows.end());
    return rows;
}

void QueueTableView::selectionChanged(const QItemSelection &selected,
                                      const QItemSelection &deselected)
{
    QTableView::selectionChanged(selected, deselected);
    showSelection();
    Q_EMIT selectedRowsChanged();
}

/// The selection goes without a word of its own.
void QueueTableView::reset()
{
    QTableView::reset();
    Q_EMIT selectedRowsChanged();
}

void QueueTableView::fitRowHeight()
{
    const int lines = linesPerRow * fontMetrics().lineSpacing();
    verticalHeader()->setDefaultSectionSize(lines + rowPadding);
    setIconSize({lines * 16 / 9, lines}); // the pictures'
}

void QueueTableView::setColumnWidths(const QList<int> &usual, const QMap<int, int> &chosen)
{
    m_usualWidths = usual;
    m_chosenWidths = chosen;
    fillWidth();
}

/// Those that give way do so from left to right.
void QueueTableView::fillWidth()
{
    const auto least = [this](int column) {
        const int letters = leastLetters.at(static_cast<std::size_t>(column));
        return letters * fontMetrics().averageCharWidth() + (column == 0 ? iconSize().width() : 0);
    };
    const auto wanted = [this](int column) {
        return m_chosenWidths.value(column, m_usualWidths.at(column));
    };
    m_fills = true;
    int missing = least(0) - viewport()->width();
    for (int column = 1; column < m_usualWidths.size(); ++column)
        missing += wanted(column);
    int left = viewport()->width();
    for (int column = 1; column < m_usualWidths.size(); ++column) {
        const int spare =
            m_chosenWidths.contains(column) ? 0 : std::max(0, wanted(column) - least(column));
        const int given = std::clamp(missing, 0, spare);
        setColumnWidth(column, wanted(column) - given);
        missing -= given;
        left -= wanted(column) - given;
    }
    setColumnWidth(0, std::max(least(0), left));
    m_fills = false;
}

void QueueTableView::changeEvent(QEvent *event)
{
    QTableView::changeEvent(event);
    if (event->type() == QEvent::FontChange)
        fitRowHeight();
}

/// A key that finds no other row selects the current one, which need not be selected yet.
void QueueTableView::keyPressEvent(QKeyEvent *event)
{
    QTableView::keyPressEvent(event);
    const bool isRowKey =
        std::find(rowKeys.cbegin(), rowKeys.cend(), event->key()) != rowKeys.cend();
    const bool selects = !event->modifiers().testFlag(Qt::ControlModifier);
    if (isRowKey && selects && !selectionModel()->hasSelection())
        selectRow(currentIndex().row());
}

void QueueTableView::resizeEvent(QResizeEvent *event)
{
    QTableView::resizeEvent(event);
    fillWidth();
    updateVisibleViews();
}

void QueueTableView::scrollContentsBy(int dx, int dy)
{
    QTableView::scrollContentsBy(dx, dy);
    updateVisibleViews();
}

void QueueTableView::paintEvent(QPaintEvent *event)
{
    QTableView::paintEvent(event);
    if (m_model.rowCount() == 0)
        paintInvitation();
    if (m_dropHighlight) {
        QPainter painter(viewport());
        painter.setPen(QPen(palette().color(QPalette::Highlight), 3));
        painter.drawRect(viewport()->rect().adjusted(1, 1, -2, -2));
    }
}

void QueueTableView::paintInvitation()
{
    QPainter painter(viewport());
    painter.setPen(palette().color(QPalette::Text));
    QFont large = font();
    large.setPointSizeF(large.pointSizeF() * 1.4);
    painter.setFont(large);
    const QRect middle = viewport()->rect().adjusted(16, 0, -16, 0);
    QRect written;
    painter.drawText(middle, Qt::AlignCenter | Qt::TextWordWrap,
                     QStringLiteral("Drop MLV recordings or folders here"), &written);
    painter.setFont(font());
    painter.drawText(middle.adjusted(0, written.bottom() + fontMetrics().lineSpacing() / 2, 0, 0),
                     Qt::AlignHCenter | Qt::TextWordWrap,
                     QStringLiteral("or choose them with Open… (Ctrl+O)"));
}

void QueueTableView::showDropHighlight(bool shown)
{
    m_dropHighlight = shown;
    viewport()->update();
}

} // namespace filmwright

#include "moc_queuetableview.cpp"
