// SPDX-License-Identifier: MIT
// The window for people who have no mouse: every command and every control by keys.
#include "fakewindow.h"

#include "app/messageboxpresenter.h"
#include "support/testprogram.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>

using namespace filmwright;

namespace {

/// What the Tab key (or the one backwards) reaches in a window, once around.
QStringList tabStops(QWidget &window, Qt::KeyboardModifiers modifiers = {})
{
    QStringList stops;
    for (int i = 0; i < 50; ++i) {
        QTest::keyClick(QApplication::focusWidget() ? QApplication::focusWidget() : &window,
                        modifiers ? Qt::Key_Backtab : Qt::Key_Tab, modifiers);
        const QWidget *stop = QApplication::focusWidget();
        const QString name = !stop ? QString()
                             : stop->objectName().isEmpty()
                                 ? QLatin1String(stop->metaObject()->className())
                                 : stop->objectName();
        if (stops.contains(name))
            break;
        stops << name;
    }
    stops.sort();
    return stops;
}

void type(Qt::Key key, Qt::KeyboardModifiers modifiers = {})
{
    QWidget *focus = QApplication::focusWidget();
    QTest::keyClick(focus ? focus : QApplication::activeWindow(), key, modifiers);
}

} // namespace

class TestKeysWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyCommandHasAShortcut();
    void everyMenuAndLabelHasItsOwnLetter();
    void tabReachesEveryControl();
    void tabReachesEveryControlOfThePreferences();
    void recordingsAreChosenByTheArrows();
    void arrowChoosesTheOnlyRecording_data();
    void arrowChoosesTheOnlyRecording();
    void fieldIsEmptiedByItsKeys_data();
    void fieldIsEmptiedByItsKeys();
    void movieIsMadeByKeysAlone();
    void sheetsAndWindowsAreClosedByKeys();
    void alertIsAnsweredByKeys_data();
    void alertIsAnsweredByKeys();
};

void TestKeysWindow::everyCommandHasAShortcut()
{
    FakeWindow window;
    window.launch();
    QStringList shortcuts;
    for (const QAction *action : window.delegate->window()->findChildren<QAction *>()) {
        const bool command =
            action->objectName().endsWith(QLatin1String("Item")) && !action->menu();
        if (!command)
            continue;
        QVERIFY2(!action->shortcut().isEmpty(), qPrintable(action->objectName()));
        shortcuts << action->shortcut().toString();
    }
    QVERIFY(shortcuts.size() >= 12);
    for (const char *button : {"darkButton", "flatButton", "flatDarkButton"}) {
        const QKeySequence keys = window.widget<QPushButton>(QLatin1String(button))->shortcut();
        QVERIFY2(!keys.isEmpty(), button);
        shortcuts << keys.toString();
    }
    const auto all = shortcuts.size();
    QCOMPARE(shortcuts.removeDuplicates(), 0);
    QCOMPARE(shortcuts.size(), all);
}

void TestKeysWindow::everyMenuAndLabelHasItsOwnLetter()
{
    FakeWindow window;
    window.launch();
    QStringList letters;
    for (const QAction *menu : window.widget<QMenuBar>(QStringLiteral("menuBar"))->actions())
        letters << QKeySequence::mnemonic(menu->text()).toString();
    QVERIFY(!letters.contains(QString()));
    for (const char *label :
         {"movieFormatLabel", "movieQualityLabel", "movieRecipeLabel", "movieFolderLabel"}) {
        letters << QKeySequence::mnemonic(window.widget<QLabel>(QLatin1String(label))->text())
                       .toString();
        QVERIFY(window.widget<QLabel>(QLatin1String(label))->buddy());
    }
    for (const char *box : {"repairPixelsCheckBox", "repairColumnsCheckBox"}) {
        letters << QKeySequence::mnemonic(window.widget<QCheckBox>(QLatin1String(box))->text())
                       .toString();
    }
    QCOMPARE(letters.removeDuplicates(), 0);
    for (const QMenu *menu : window.delegate->window()->findChildren<QMenu *>()) {
        QStringList entries;
        for (const QAction *entry : menu->actions()) {
            const QString letter = QKeySequence::mnemonic(entry->text()).toString();
            if (!letter.isEmpty())
                entries << letter;
        }
        QVERIFY2(entries.removeDuplicates() == 0, qPrintable(menu->title()));
    }
}

void TestKeysWindow::tabReachesEveryControl()
{
    FakeWindow window;
    window.launch({a});
    window.select(a);
    activate(*window.delegate->window());
    const QStringList stops = tabStops(*window.delegate->window());
    QStringList expected{QStringLiteral("queueTableView"),
                         QStringLiteral("imageView"),
                         QStringLiteral("frameSlider"),
                         QStringLiteral("darkTextField"),
                         QStringLiteral("darkButton"),
                         QStringLiteral("flatTextField"),
                         QStringLiteral("flatButton"),
                         QStringLiteral("flatDarkTextField"),
                         QStringLiteral("flatDarkButton"),
                         QStringLiteral("calibrationHelpButton"),
                         QStringLiteral("movieFormatPopUpButton"),
                         QStringLiteral("movieQualityPopUpButton"),
                         QStringLiteral("repairPixelsCheckBox"),
                         QStringLiteral("repairColumnsCheckBox"),
                         QStringLiteral("movieRecipePopUpButton"),
                         QStringLiteral("movieFolderPopUpButton")};
    for (const QString &name : expected)
        QVERIFY2(stops.contains(name), qPrintable(name));
    QCOMPARE(tabStops(*window.delegate->window(), Qt::ShiftModifier), stops);
}

void TestKeysWindow::tabReachesEveryControlOfThePreferences()
{
    FakeWindow window;
    window.launch();
    window.action(QStringLiteral("preferencesMenuItem"))->trigger();
    auto *preferences = window.widget<QDialog>(QStringLiteral("prefWindow"));
    activate(*preferences);
    QTest::keyClick(window.widget<QComboBox>(QStringLiteral("prefTempFolderPopUpButton")),
                    Qt::Key_End);
    const QStringList stops = tabStops(*preferences);
    for (const char *name : {"prefTempFolderPopUpButton", "prefTempFolderTextField",
                             "prefTempFolderButton", "prefWorkersField"})
        QVERIFY2(stops.contains(QLatin1String(name)), name);
}

void TestKeysWindow::recordingsAreChosenByTheArrows()
{
    FakeWindow window;
    window.launch({a, b});
    activate(*window.delegate->window());
    window.table()->setFocus();
    type(Qt::Key_Home, Qt::ControlModifier);
    type(Qt::Key_Down);
    QCOMPARE(window.table()->selectedRows(), QList<int>{1});
    type(Qt::Key_Up);
    QCOMPARE(window.table()->selectedRows(), QList<int>{0});
    type(Qt::Key_Down, Qt::ShiftModifier);
    QCOMPARE(window.table()->selectedRows(), QList<int>({0, 1}));
    type(Qt::Key_Up);
    type(Qt::Key_H, Qt::ControlModifier | Qt::ShiftModifier);
    QVERIFY(window.delegate->projectList().at(1)->dualISO());
    type(Qt::Key_D, Qt::ControlModifier | Qt::ShiftModifier);
    QVERIFY(window.delegate->projectList().at(1)->blendsAlternatingRows());
    type(Qt::Key_Delete);
    QCOMPARE(window.queue(), QStringList{a});
}

void TestKeysWindow::arrowChoosesTheOnlyRecording_data()
{
    QTest::addColumn<Qt::Key>("key");
    QTest::newRow("Down") << Qt::Key_Down;
    QTest::newRow("Up") << Qt::Key_Up;
    QTest::newRow("Home") << Qt::Key_Home;
    QTest::newRow("End") << Qt::Key_End;
}

/// The first row is the current one as soon as the table has the focus, but isn't selected.
void TestKeysWindow::arrowChoosesTheOnlyRecording()
{
    QFETCH(const Qt::Key, key);
    FakeWindow window;
    window.launch({a});
    activate(*window.delegate->window());
    window.table()->setFocus();
    QCOMPARE(window.table()->selectedRows(), QList<int>());
    type(key, Qt::ControlModifier);
    QCOMPARE(window.table()->selectedRows(), QList<int>());
    type(key);
    QCOMPARE(window.table()->selectedRows(), QList<int>{0});
}

void TestKeysWindow::fieldIsEmptiedByItsKeys_data()
{
    QTest::addColumn<Qt::Key>("key");
    QTest::newRow("Delete") << Qt::Key_Delete;
    QTest::newRow("Backspace") << Qt::Key_Backspace;
}

/// The key also removes the selected recording, but not while a field has the focus.
void TestKeysWindow::fieldIsEmptiedByItsKeys()
{
    QFETCH(const Qt::Key, key);
    FakeWindow window(1);
    window.launch({a});
    window.calibrate(QStringLiteral("darkButton"), QStringLiteral("dark.MLV"));
    activate(*window.delegate->window());
    window.select(a);
    auto *field = window.widget<CustomTextField>(QStringLiteral("darkTextField"));
    field->setFocus();
    type(key);
    QCOMPARE(field->stringValue(), QString());
    QVERIFY(!QFileInfo::exists(window.temporary(QStringLiteral("dark.mlv"))));
    QCOMPARE(window.queue(), QStringList{a});
    type(key);
    QCOMPARE(window.queue(), QStringList{a});
}

void TestKeysWindow::movieIsMadeByKeysAlone()
{
    FakeWindow window(1);
    window.launch();
    activate(*window.delegate->window());
    window.panel.chosen = window.makeRecordings({a});
    type(Qt::Key_O, Qt::ControlModifier);
    window.waitUntilRead();
    QCOMPARE(window.queue(), QStringList{a});
    auto *sheet = window.widget<QDialog>(QStringLiteral("preprocessPanel"));
    const QList<QPair<Qt::Key, const char *>> fields{{Qt::Key_1, "darkTextField"},
                                                     {Qt::Key_2, "flatTextField"},
                                                     {Qt::Key_3, "flatDarkTextField"}};
    for (const auto &[key, field] : fields) {
        window.panel.chosen = window.makeRecordings({QStringLiteral("calibration.MLV")});
        QTest::keyClick(window.delegate->window(), key, Qt::ControlModifier);
        QTRY_COMPARE(window.widget<CustomTextField>(QLatin1String(field))->stringValue(),
                     QStringLiteral("calibration.MLV"));
        QTRY_VERIFY(!sheet->isVisible());
        activate(*window.delegate->window());
    }
    QTRY_VERIFY(window.delegate->checkCalibrationIntegrity());
    QTRY_VERIFY(!sheet->isVisible());
    QTest::keyClick(window.delegate->window(), Qt::Key_M, Qt::AltModifier);
    QCOMPARE(QApplication::focusWidget()->objectName(), QStringLiteral("movieFormatPopUpButton"));
    type(Qt::Key_Down);
    QTest::keyClick(window.delegate->window(), Qt::Key_Q, Qt::AltModifier);
    type(Qt::Key_Down);
    type(Qt::Key_Return, Qt::ControlModifier);
    QVERIFY(window.delegate->isWorking());
    type(Qt::Key_Return, Qt::ControlModifier);
    QVERIFY(!window.delegate->isWorking());
    QTest::keyClick(window.delegate->window(), Qt::Key_Return, Qt::ControlModifier);
    QVERIFY(window.delegate->isWorking());
    window.waitForEnd();
    const MLVProjectController &project = *window.delegate->projectList().front();
    QCOMPARE(project.state(), QStringLiteral("Finished"));
    QCOMPARE(project.movieFormat(), 1);
    QCOMPARE(project.movieQuality(), 1);
    QVERIFY(project.moviePath().endsWith(QLatin1String(".mov")));
}

void TestKeysWindow::sheetsAndWindowsAreClosedByKeys()
{
    FakeWindow window;
    window.launch();
    activate(*window.delegate->window());
    type(Qt::Key_F1);
    auto *help = window.widget<QDialog>(QStringLiteral("calibrationHelpPanel"));
    QVERIFY(help->isVisible());
    QTest::keyClick(help, Qt::Key_Escape);
    QVERIFY(!help->isVisible());
    activate(*window.delegate->window());
    type(Qt::Key_Comma, Qt::ControlModifier);
    auto *preferences = window.widget<QDialog>(QStringLiteral("prefWindow"));
    QVERIFY(preferences->isVisible());
    QTest::keyClick(preferences, Qt::Key_Escape);
    QVERIFY(!preferences->isVisible());
    activate(*window.delegate->window());
    type(Qt::Key_F1, Qt::ShiftModifier);
    QCOMPARE(window.alerts.shown.size(), 1);
    QVERIFY(window.alerts.shown.constFirst().startsWith(QLatin1String("Filmwright ")));
    constexpr int timedOut = 99;
    QTimer::singleShot(10000, this, [] { QCoreApplication::exit(timedOut); });
    QTimer::singleShot(0, this, [] { type(Qt::Key_Q, Qt::ControlModifier); });
    QCOMPARE(QCoreApplication::exec(), 0);
}

void TestKeysWindow::alertIsAnsweredByKeys_data()
{
    QTest::addColumn<QStringList>("buttons");
    QTest::addColumn<QList<int>>("keys");
    QTest::addColumn<int>("answer");
    const QStringList one{QStringLiteral("Ok"), {}, {}};
    const QStringList two{QStringLiteral("No"), QStringLiteral("Yes"), {}};
    const QStringList three{QStringLiteral("Yes"), QStringLiteral("Replace"),
                            QStringLiteral("Cancel")};
    const QList<int> enter{Qt::Key_Return};
    const QList<int> escape{Qt::Key_Escape};
    QTest::newRow("one button, Enter") << one << enter << 1;
    QTest::newRow("one button, Escape") << one << escape << 1;
    QTest::newRow("two buttons, Enter") << two << enter << 1;
    QTest::newRow("two buttons, Escape") << two << escape << 1;
    QTest::newRow("two buttons, the alternate one") << two << QList<int>{0} << 0;
    QTest::newRow("three buttons, Enter") << three << enter << 1;
    QTest::newRow("three buttons, Escape") << three << escape << -1;
    QTest::newRow("three buttons, the alternate one") << three << QList<int>{0} << 0;
}

/// A 0 stands for the Tab key until the alternate button has the focus, and the space bar.
void TestKeysWindow::alertIsAnsweredByKeys()
{
    QFETCH(const QStringList, buttons);
    QFETCH(const QList<int>, keys);
    QFETCH(const int, answer);
    MessageBoxPresenter presenter;
    QTimer::singleShot(0, this, [&] {
        auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
        QVERIFY(box);
        QVERIFY(QTest::qWaitForWindowActive(box));
        if (keys.constFirst() != 0) {
            QTest::keyClick(box->focusWidget(), static_cast<Qt::Key>(keys.constFirst()));
            return;
        }
        for (int tab = 0; tab < 10; ++tab) {
            const auto *button = qobject_cast<QPushButton *>(box->focusWidget());
            if (button && button->text().remove(QLatin1Char('&')) == buttons.at(1))
                break;
            QTest::keyClick(box->focusWidget(), Qt::Key_Tab);
        }
        QTest::keyClick(box->focusWidget(), Qt::Key_Space);
    });
    QCOMPARE(presenter.runAlert(QStringLiteral("Title"), QStringLiteral("Message"), buttons.at(0),
                                buttons.at(1), buttons.at(2)),
             answer);
}

FILMWRIGHT_TEST(TestKeysWindow, QApplication)
#include "tst_keys_window.moc"
