// SPDX-License-Identifier: MIT
// What the window remembers from one start to the next.
#include "fakewindow.h"

#include "support/testprogram.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFileInfo>
#include <QHeaderView>
#include <QSplitter>
#include <QTemporaryDir>

using namespace filmwright;

class TestMemoryWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void windowIsRemembered();
    void columnsAreRemembered();
    void formatAndQualityAreRemembered();
    void repairIsRemembered();
    void recipeIsRememberedWhileItIsThere();
    void folderOfTheMoviesIsRemembered();
};

void TestMemoryWindow::windowIsRemembered()
{
    FakeWindow window;
    window.launch();
    window.delegate->window()->resize(777, 555);
    auto *splitter = window.widget<QSplitter>(QStringLiteral("splitter"));
    splitter->setSizes({400, 350});
    const QList<int> sizes = splitter->sizes();
    const QSize size = window.delegate->window()->size();
    window.launch();
    QCOMPARE(window.delegate->window()->size(), size);
    QTRY_COMPARE(window.widget<QSplitter>(QStringLiteral("splitter"))->sizes(), sizes);
}

void TestMemoryWindow::columnsAreRemembered()
{
    FakeWindow window;
    window.launch();
    window.table()->horizontalHeader()->resizeSection(1, 77);
    window.launch();
    QCOMPARE(window.table()->columnWidth(1), 77);
}

void TestMemoryWindow::formatAndQualityAreRemembered()
{
    FakeWindow window;
    const auto indexes = [&window] {
        return QList<int>{
            window.widget<QComboBox>(QStringLiteral("movieFormatPopUpButton"))->currentIndex(),
            window.widget<QComboBox>(QStringLiteral("movieQualityPopUpButton"))->currentIndex()};
    };
    window.launch();
    QCOMPARE(indexes(), QList<int>({0, 0}));
    window.widget<QComboBox>(QStringLiteral("movieFormatPopUpButton"))->setCurrentIndex(1);
    window.widget<QComboBox>(QStringLiteral("movieQualityPopUpButton"))->setCurrentIndex(1);
    window.launch();
    QCOMPARE(indexes(), QList<int>({1, 1}));
}

void TestMemoryWindow::repairIsRemembered()
{
    FakeWindow window;
    const QStringList boxes{QStringLiteral("repairPixelsCheckBox"),
                            QStringLiteral("repairColumnsCheckBox")};
    window.launch();
    for (const QString &box : boxes) {
        QVERIFY(!window.widget<QCheckBox>(box)->isChecked());
        window.widget<QCheckBox>(box)->click();
    }
    window.launch();
    for (const QString &box : boxes)
        QVERIFY(window.widget<QCheckBox>(box)->isChecked());
}

void TestMemoryWindow::recipeIsRememberedWhileItIsThere()
{
    FakeWindow window;
    const QString path = window.addRecipe(QStringLiteral("mine"), "-c:v x");
    window.launch();
    const auto popUp = [&window] {
        return window.widget<QComboBox>(QStringLiteral("movieRecipePopUpButton"));
    };
    QCOMPARE(popUp()->currentIndex(), 0);
    QCOMPARE(popUp()->currentText(), QStringLiteral("None"));
    popUp()->setCurrentIndex(popUp()->findData(QStringLiteral("mine")));
    QCOMPARE(popUp()->currentIndex(), 1);
    window.launch();
    QCOMPARE(popUp()->currentData().toString(), QStringLiteral("mine"));
    QVERIFY(!window.widget<QComboBox>(QStringLiteral("movieFormatPopUpButton"))->isEnabled());
    QVERIFY(QFile::remove(path));
    window.launch();
    QCOMPARE(popUp()->currentIndex(), 0);
    QVERIFY(window.widget<QComboBox>(QStringLiteral("movieFormatPopUpButton"))->isEnabled());
}

void TestMemoryWindow::folderOfTheMoviesIsRemembered()
{
    FakeWindow window;
    const QTemporaryDir folder;
    window.launch();
    const auto popUp = [&window] {
        return window.widget<QComboBox>(QStringLiteral("movieFolderPopUpButton"));
    };
    const auto choose = [&popUp](int index) {
        popUp()->setCurrentIndex(index);
        Q_EMIT popUp()->activated(index);
    };
    QCOMPARE(popUp()->currentText(), QStringLiteral("beside the recordings"));
    choose(1); // and cancelled
    QCOMPARE(popUp()->currentIndex(), 0);
    window.panel.chosen = QStringList{folder.path()};
    choose(1);
    QCOMPARE(popUp()->currentText(),
             QStringLiteral("in %1…").arg(QFileInfo(folder.path()).fileName()));
    window.panel.chosen.clear();
    choose(1); // cancelled: the folder stays
    window.launch();
    QCOMPARE(popUp()->currentIndex(), 1);
    QCOMPARE(popUp()->toolTip(), folder.path());
    window.add({QStringLiteral("a.MLV")});
    window.pressStart();
    window.waitForEnd();
    QVERIFY(QFile::exists(folder.filePath(QStringLiteral("a.avi"))));
    QVERIFY(!QFile::exists(window.recordings() + QStringLiteral("/a.avi")));
    choose(0);
    window.launch();
    QCOMPARE(popUp()->currentIndex(), 0);
}

FILMWRIGHT_TEST(TestMemoryWindow, QApplication)
#include "tst_memory_window.moc"
