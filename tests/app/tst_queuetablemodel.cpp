// SPDX-License-Identifier: MIT
#include "app/queuetabledatasource.h"
#include "app/queuetableview.h"

#include "support/testprogram.h"

#include <QAbstractItemModelTester>
#include <QLabel>
#include <QSignalSpy>
#include <QTest>

using namespace filmwright;

namespace {

/// A queue of names, newest first.
class Names : public QueueTableDataSource
{
public:
    int numberOfRowsInTableView(QueueTableView &) const override
    {
        return static_cast<int>(names.size());
    }
    QString objectValueForTableColumn(const QString &column, int row) const override
    {
        return column == QLatin1String("File") ? names.at(row) : QString();
    }
    QWidget *viewForTableColumn(QueueTableView &tableView, const QString &column, int row) override
    {
        if (column != QLatin1String("State"))
            return nullptr;
        ++viewsAsked;
        auto *view = tableView.makeView<QLabel>(column, row);
        view->setText(names.at(row));
        return view;
    }
    QString toolTipForTableColumn(const QString &column, int row) const override
    {
        return column + QLatin1Char(' ') + names.at(row);
    }

    QStringList names;
    int viewsAsked = 0;
};

QStringList shown(const QAbstractItemModel &model)
{
    QStringList names;
    for (int row = 0; row < model.rowCount(); ++row)
        names << model.index(row, 0).data().toString();
    return names;
}

} // namespace

class TestQueueTableModel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void withoutDataSourceThereIsNothing();
    void columnsHaveTitles();
    void newRowsComeOnTop();
    void fewerRowsAreANewTable();
    void sameRowsMayHaveChanged();
    void cellsHaveTextsAndToolTips();
    void cellsHaveNoChildren();
    void anotherDataSourceIsAnotherTable();
    void manyReloadsAskForTheViewsOnce();
    void rowsAreKnownAtOnce();
    void viewsFollowTheirRows();
    void queueThatIsNotToldOfYetShowsNothingWrong();

private:
    std::unique_ptr<Names> m_names;
    std::unique_ptr<QueueTableView> m_view;
    std::unique_ptr<QAbstractItemModelTester> m_tester;
};

void TestQueueTableModel::init()
{
    m_names = std::make_unique<Names>();
    m_view = std::make_unique<QueueTableView>();
    m_view->resize(600, 400);
    m_view->show();
    m_tester = std::make_unique<QAbstractItemModelTester>(
        m_view->model(), QAbstractItemModelTester::FailureReportingMode::QtTest);
    m_view->setDataSource(m_names.get());
}

void TestQueueTableModel::cleanup()
{
    m_tester.reset();
    m_view.reset();
    m_names.reset();
}

void TestQueueTableModel::withoutDataSourceThereIsNothing()
{
    m_names->names = QStringList{QStringLiteral("a")};
    m_view->reloadData();
    m_view->setDataSource(nullptr);
    QCOMPARE(m_view->model()->rowCount(), 0);
    m_view->reloadData();
    QCOMPARE(m_view->model()->rowCount(), 0);
}

void TestQueueTableModel::columnsHaveTitles()
{
    QStringList titles;
    for (int column = 0; column < m_view->model()->columnCount(); ++column)
        titles << m_view->model()->headerData(column, Qt::Horizontal).toString();
    QCOMPARE(titles, QStringList({QStringLiteral("File"), QStringLiteral("Camera"),
                                  QStringLiteral("Exposure"), QStringLiteral("State"),
                                  QStringLiteral("Show")}));
    QVERIFY(!m_view->model()->headerData(0, Qt::Vertical).isValid());
}

void TestQueueTableModel::newRowsComeOnTop()
{
    QSignalSpy inserted(m_view->model(), &QAbstractItemModel::rowsInserted);
    m_names->names = QStringList{QStringLiteral("a")};
    m_view->reloadData();
    m_names->names = QStringList{QStringLiteral("c"), QStringLiteral("b"), QStringLiteral("a")};
    m_view->reloadData();
    QCOMPARE(inserted.size(), 2);
    QCOMPARE(inserted.at(1).at(1).toInt(), 0);
    QCOMPARE(inserted.at(1).at(2).toInt(), 1);
    QCOMPARE(shown(*m_view->model()), m_names->names);
}

void TestQueueTableModel::fewerRowsAreANewTable()
{
    m_names->names = QStringList{QStringLiteral("b"), QStringLiteral("a")};
    m_view->reloadData();
    QSignalSpy reset(m_view->model(), &QAbstractItemModel::modelReset);
    m_names->names.removeFirst();
    m_view->reloadData();
    QCOMPARE(reset.size(), 1);
    QCOMPARE(shown(*m_view->model()), QStringList{QStringLiteral("a")});
}

void TestQueueTableModel::sameRowsMayHaveChanged()
{
    m_names->names = QStringList{QStringLiteral("b"), QStringLiteral("a")};
    m_view->reloadData();
    QSignalSpy changed(m_view->model(), &QAbstractItemModel::dataChanged);
    QSignalSpy inserted(m_view->model(), &QAbstractItemModel::rowsInserted);
    m_names->names[1] = QStringLiteral("z");
    m_view->reloadData();
    QCOMPARE(changed.size(), 1);
    QCOMPARE(inserted.size(), 0);
    QCOMPARE(changed.at(0).at(0).toModelIndex(), m_view->model()->index(0, 0));
    QCOMPARE(changed.at(0).at(1).toModelIndex(), m_view->model()->index(1, 4));
    QCOMPARE(shown(*m_view->model()), m_names->names);
}

void TestQueueTableModel::cellsHaveTextsAndToolTips()
{
    m_names->names = QStringList{QStringLiteral("a")};
    m_view->reloadData();
    const QModelIndex file = m_view->model()->index(0, 0);
    QCOMPARE(file.data(Qt::ToolTipRole).toString(), QStringLiteral("File a"));
    QCOMPARE(file.data(Qt::AccessibleTextRole).toString(), QStringLiteral("a\nFile a"));
    QVERIFY(!file.data(Qt::DecorationRole).isValid());
    QVERIFY(m_view->model()->index(0, 3).data().toString().isEmpty());
}

void TestQueueTableModel::cellsHaveNoChildren()
{
    m_names->names = QStringList{QStringLiteral("a")};
    m_view->reloadData();
    const QModelIndex cell = m_view->model()->index(0, 0);
    QCOMPARE(m_view->model()->rowCount(cell), 0);
    QCOMPARE(m_view->model()->columnCount(cell), 0);
}

void TestQueueTableModel::anotherDataSourceIsAnotherTable()
{
    m_names->names = QStringList{QStringLiteral("b"), QStringLiteral("a")};
    m_view->reloadData();
    Names others;
    others.names = QStringList{QStringLiteral("x")};
    m_view->setDataSource(&others);
    QCOMPARE(shown(*m_view->model()), others.names);
    m_view->setDataSource(nullptr);
}

void TestQueueTableModel::manyReloadsAskForTheViewsOnce()
{
    m_names->names = QStringList{QStringLiteral("a")};
    m_view->reloadData();
    QTRY_VERIFY(m_names->viewsAsked > 0);
    QCoreApplication::processEvents();
    m_names->viewsAsked = 0;
    for (int i = 0; i < 100; ++i)
        m_view->reloadData();
    QCOMPARE(m_names->viewsAsked, 0);
    QTRY_COMPARE(m_names->viewsAsked, 1);
    QCoreApplication::processEvents();
    QCOMPARE(m_names->viewsAsked, 1);
}

void TestQueueTableModel::rowsAreKnownAtOnce()
{
    m_names->names = QStringList{QStringLiteral("b"), QStringLiteral("a")};
    m_view->reloadData();
    QCOMPARE(m_view->model()->rowCount(), 2);
    QCOMPARE(m_names->viewsAsked, 0);
}

void TestQueueTableModel::viewsFollowTheirRows()
{
    m_names->names = QStringList{QStringLiteral("a")};
    m_view->reloadData();
    const auto viewOf = [this](int row) {
        return qobject_cast<QLabel *>(m_view->indexWidget(m_view->model()->index(row, 3)));
    };
    QTRY_VERIFY(viewOf(0));
    const QLabel *view = viewOf(0);
    m_names->names.prepend(QStringLiteral("b"));
    m_view->reloadData();
    QTRY_VERIFY(viewOf(0));
    QCOMPARE(viewOf(1), view);
    QCOMPARE(viewOf(0)->text(), QStringLiteral("b"));
    QCOMPARE(viewOf(1)->text(), QStringLiteral("a"));
}

void TestQueueTableModel::queueThatIsNotToldOfYetShowsNothingWrong()
{
    m_names->names = QStringList{QStringLiteral("b"), QStringLiteral("a")};
    m_view->reloadData();
    QTRY_VERIFY(m_names->viewsAsked > 0);
    m_names->names.prepend(QStringLiteral("c"));
    QCOMPARE(shown(*m_view->model()), QStringList({QStringLiteral("b"), QStringLiteral("a")}));
    m_names->names.clear();
    QCOMPARE(shown(*m_view->model()), QStringList({QString(), QString()}));
    m_names->viewsAsked = 0;
    m_view->resize(500, 300);
    m_view->grab();
    QCOMPARE(m_names->viewsAsked, 0);
    m_view->reloadData();
    QCOMPARE(shown(*m_view->model()), QStringList());
}

FILMWRIGHT_TEST(TestQueueTableModel, QApplication)
#include "tst_queuetablemodel.moc"
