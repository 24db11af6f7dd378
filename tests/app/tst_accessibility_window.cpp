// SPDX-License-Identifier: MIT
// The window for people who don't see it well, or who have no mouse.
#include "fakewindow.h"

#include "app/imageview.h"
#include "app/messageboxpresenter.h"
#include "app/readablepalette.h"

#include <QAccessible>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QMetaEnum>
#include <QProgressBar>
#include <QPushButton>
#include <QSpinBox>
#include <QTextDocument>
#include <QToolBar>
#include <QToolButton>
#include <QToolTip>

using namespace filmwright;

namespace {

const QString a = QStringLiteral("a.MLV");
const QString b = QStringLiteral("b.MLV");

/// Part of a control that is one for a person.
bool isInside(const QWidget &widget)
{
    for (const QWidget *parent = widget.parentWidget(); parent; parent = parent->parentWidget())
        if (qobject_cast<const QComboBox *>(parent) ||
            qobject_cast<const QAbstractSpinBox *>(parent))
            return true;
    return qobject_cast<const QHeaderView *>(&widget) ||
           widget.objectName().startsWith(QLatin1String("qt_")) ||
           widget.inherits("QTableCornerButton");
}

/// Something that can be used, or that tells a state.
bool isControl(const QWidget &widget)
{
    const bool used =
        qobject_cast<const QAbstractButton *>(&widget) ||
        qobject_cast<const QComboBox *>(&widget) || qobject_cast<const QLineEdit *>(&widget) ||
        qobject_cast<const QAbstractSpinBox *>(&widget) ||
        qobject_cast<const QAbstractItemView *>(&widget) || widget.focusPolicy() != Qt::NoFocus;
    const bool told =
        qobject_cast<const QProgressBar *>(&widget) || qobject_cast<const ImageView *>(&widget);
    return (used || told) && !widget.isWindow() && !qobject_cast<const QMenuBar *>(&widget) &&
           !isInside(widget);
}

QString nameOf(QWidget &widget)
{
    const QAccessibleInterface *interface = QAccessible::queryAccessibleInterface(&widget);
    return interface ? interface->text(QAccessible::Name) : QString();
}

QString described(const QWidget &widget)
{
    return QStringLiteral("%1 '%2' in %3")
        .arg(QLatin1String(widget.metaObject()->className()), widget.objectName(),
             widget.window()->objectName());
}

QList<QWidget *> controls(const FakeWindow &window)
{
    QList<QWidget *> found;
    for (QWidget *widget : window.delegate->window()->findChildren<QWidget *>())
        if (isControl(*widget))
            found << widget;
    return found;
}

void activate(QWidget &window)
{
    window.show();
    QCoreApplication::processEvents(); // a window that has just been closed gives up its place
    window.activateWindow();
    QTRY_VERIFY(window.isActiveWindow());
}

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

void useTheme(const QString &theme)
{
    QPalette palette = QApplication::style()->standardPalette();
    if (theme == QLatin1String("dark")) {
        palette = QPalette(QColor(53, 53, 53));
        const QColor text(Qt::white);
        for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text,
                                               QPalette::ButtonText, QPalette::HighlightedText})
            palette.setColor(role, text);
        palette.setColor(QPalette::Base, QColor(35, 35, 35));
        palette.setColor(QPalette::AlternateBase, QColor(45, 45, 45));
        palette.setColor(QPalette::Highlight, QColor(53, 132, 228));
        palette.setColor(QPalette::PlaceholderText, QColor(120, 120, 120));
    }
    QApplication::setPalette(palette);
}

using Roles = QPair<QPalette::ColorRole, QPalette::ColorRole>;

/// The texts of a widget and what is behind them, as the style draws them.
QList<Roles> textsOf(const QWidget &widget)
{
    const Roles selected(QPalette::HighlightedText, QPalette::Highlight);
    if (qobject_cast<const QLabel *>(&widget))
        return {{widget.foregroundRole(), widget.backgroundRole()}};
    if (qobject_cast<const QToolButton *>(&widget))
        return {{QPalette::ButtonText, QPalette::Button}, {QPalette::ButtonText, QPalette::Window}};
    if (qobject_cast<const QAbstractButton *>(&widget))
        return {{QPalette::ButtonText, QPalette::Button}};
    if (qobject_cast<const QComboBox *>(&widget))
        return {
            {QPalette::ButtonText, QPalette::Button}, {QPalette::Text, QPalette::Base}, selected};
    if (qobject_cast<const QLineEdit *>(&widget) || qobject_cast<const QAbstractSpinBox *>(&widget))
        return {{QPalette::Text, QPalette::Base},
                {QPalette::PlaceholderText, QPalette::Base},
                selected};
    if (qobject_cast<const QHeaderView *>(&widget))
        return {{QPalette::ButtonText, QPalette::Button}};
    if (qobject_cast<const QAbstractItemView *>(&widget))
        return {
            {QPalette::Text, QPalette::Base}, {QPalette::Text, QPalette::AlternateBase}, selected};
    if (qobject_cast<const QMenu *>(&widget) || qobject_cast<const QMenuBar *>(&widget))
        return {{QPalette::WindowText, QPalette::Window},
                {QPalette::ButtonText, QPalette::Button},
                selected};
    if (qobject_cast<const QGroupBox *>(&widget))
        return {{QPalette::WindowText, QPalette::Window}};
    return {};
}

void checkContrast(const QWidget &widget)
{
    for (const Roles &roles : textsOf(widget)) {
        for (const QPalette::ColorGroup group : {QPalette::Active, QPalette::Inactive}) {
            const QColor text = widget.palette().color(group, roles.first);
            const QColor behind = widget.palette().color(group, roles.second);
            QVERIFY2(contrast(text, behind) >= leastContrast,
                     qPrintable(QStringLiteral("%1: %2 on %3")
                                    .arg(described(widget), text.name(), behind.name())));
        }
    }
}

/// "Role: name" of everything in the tree that a screen reader walks.
QStringList textsBelow(const QAccessibleInterface &place)
{
    QStringList texts{QStringLiteral("%1: %2").arg(
        QString::fromLatin1(QMetaEnum::fromType<QAccessible::Role>().valueToKey(place.role())),
        place.text(QAccessible::Name))};
    for (int child = 0; child < place.childCount(); ++child)
        if (const QAccessibleInterface *below = place.child(child))
            texts += textsBelow(*below);
    return texts;
}

QStringList textsBelow(QWidget *window)
{
    return textsBelow(*QAccessible::queryAccessibleInterface(window));
}

} // namespace

class TestAccessibilityWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { useTheme(QStringLiteral("light")); }

    void everyControlHasAName();
    void cellsAreSpoken();
    void windowsTreeHasTheStatusAndEveryRow();
    void failureIsSpoken();
    void everyCommandHasAShortcut();
    void everyMenuAndLabelHasItsOwnLetter();
    void tabReachesEveryControl();
    void tabReachesEveryControlOfThePreferences();
    void recordingsAreChosenByTheArrows();
    void fieldIsEmptiedByItsKeys_data();
    void fieldIsEmptiedByItsKeys();
    void movieIsMadeByKeysAlone();
    void sheetsAndWindowsAreClosedByKeys();
    void alertIsAnsweredByKeys_data();
    void alertIsAnsweredByKeys();
    void alertIsPlainText();
    void textsStandOut_data();
    void textsStandOut();
    void textsStandOutAfterAChangeOfTheme();
    void selectedStateStandsOut_data() { textsStandOut_data(); }
    void selectedStateStandsOut();
    void contrastIsTheGuidelines();
};

void TestAccessibilityWindow::everyControlHasAName()
{
    FakeWindow window;
    window.launch({a});
    QTRY_VERIFY(window.stateView(0));
    const QList<QWidget *> found = controls(window);
    QVERIFY(found.size() > 20);
    for (QWidget *control : found)
        QVERIFY2(!nameOf(*control).trimmed().isEmpty(), qPrintable(described(*control)));
    for (const QDialog *dialog : window.delegate->window()->findChildren<QDialog *>())
        QVERIFY2(!dialog->windowTitle().isEmpty(), qPrintable(dialog->objectName()));
}

void TestAccessibilityWindow::cellsAreSpoken()
{
    FakeWindow window;
    window.launch({a});
    QAccessibleInterface *table = QAccessible::queryAccessibleInterface(window.table());
    QVERIFY(table && table->tableInterface());
    for (int column = 0; column < 4; ++column) {
        const QAccessibleInterface *cell = table->tableInterface()->cellAt(0, column);
        QVERIFY(cell);
        QVERIFY2(!cell->text(QAccessible::Name).isEmpty(),
                 qPrintable(queueTableColumns.at(column)));
    }
    QCOMPARE(table->tableInterface()->cellAt(0, 3)->text(QAccessible::Name),
             QStringLiteral("Ready"));
}

/// Found as a screen reader finds it, from the window down: the status in words, and all of what a
/// row shows, the lines of the first cell included.
void TestAccessibilityWindow::windowsTreeHasTheStatusAndEveryRow()
{
    FakeWindow window;
    window.setRawInformation(QStringLiteral("1920x1080"), 14);
    window.setBlock(QStringLiteral("IDNT"),
                    {{4, QStringLiteral("'Canon EOS 5D'")}, {5, QStringLiteral("'1'")}});
    window.launch({a});
    QTRY_VERIFY(window.stateView(0));
    const QStringList texts = textsBelow(window.delegate->window());
    QVERIFY2(texts.contains(QStringLiteral("StaticText: 1 recording in the queue")),
             qPrintable(texts.join(QLatin1Char('|'))));
    const QString path = window.delegate->projectList().front()->mlvPath();
    const QStringList cells{QStringLiteral("Cell: a.MLV\n1920x1080\n2 frames\n%1").arg(path),
                            QStringLiteral("Cell: Canon EOS 5D\n%1")
                                .arg(window.delegate->projectList().front()->lens()),
                            QStringLiteral("Cell: ") + window.cell(QStringLiteral("Exposure"), 0),
                            QStringLiteral("Cell: Ready")};
    for (const QString &cell : cells)
        QVERIFY2(texts.contains(cell), qPrintable(cell + texts.join(QLatin1Char('|'))));
    window.pressStart();
    window.waitForEnd();
    QTRY_VERIFY(textsBelow(window.delegate->window())
                    .contains(QStringLiteral("StaticText: 1 movie written")));
    QVERIFY(textsBelow(window.delegate->window()).contains(QStringLiteral("Cell: Finished")));
}

void TestAccessibilityWindow::failureIsSpoken()
{
    FakeWindow window;
    window.setEncoding(QStringLiteral("exit 1"));
    window.launch({a});
    window.pressStart();
    window.waitForEnd();
    QTRY_VERIFY(!window.stateView(0)->error().isNull());
    for (const QLabel *label : window.stateView(0)->findChildren<QLabel *>()) {
        if (label->pixmap().isNull())
            continue;
        QCOMPARE(label->accessibleName(), QStringLiteral("Failed"));
        QCOMPARE(label->accessibleDescription(), window.stateView(0)->error());
    }
    QVERIFY(window.table()
                ->model()
                ->index(0, 3)
                .data(Qt::AccessibleTextRole)
                .toString()
                .contains(QLatin1String("ffmpeg ended with status 1")));
}

void TestAccessibilityWindow::everyCommandHasAShortcut()
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

void TestAccessibilityWindow::everyMenuAndLabelHasItsOwnLetter()
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

void TestAccessibilityWindow::tabReachesEveryControl()
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

void TestAccessibilityWindow::tabReachesEveryControlOfThePreferences()
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

void TestAccessibilityWindow::recordingsAreChosenByTheArrows()
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

void TestAccessibilityWindow::fieldIsEmptiedByItsKeys_data()
{
    QTest::addColumn<Qt::Key>("key");
    QTest::newRow("Delete") << Qt::Key_Delete;
    QTest::newRow("Backspace") << Qt::Key_Backspace;
}

/// The key also removes the selected recording, but not while a field has the focus.
void TestAccessibilityWindow::fieldIsEmptiedByItsKeys()
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

void TestAccessibilityWindow::movieIsMadeByKeysAlone()
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

void TestAccessibilityWindow::sheetsAndWindowsAreClosedByKeys()
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

void TestAccessibilityWindow::alertIsAnsweredByKeys_data()
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
void TestAccessibilityWindow::alertIsAnsweredByKeys()
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

/// Tools and recordings have their say in alerts.
void TestAccessibilityWindow::alertIsPlainText()
{
    const QString text = QStringLiteral("<img src='x'><b>a</b> & 100 %");
    MessageBoxPresenter presenter;
    QTimer::singleShot(0, this, [&text] {
        auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
        QVERIFY(box);
        int shown = 0;
        for (const QLabel *label : box->findChildren<QLabel *>()) {
            QTextDocument document;
            if (label->textFormat() != Qt::PlainText && Qt::mightBeRichText(label->text()))
                document.setHtml(label->text());
            else
                document.setPlainText(label->text());
            shown += document.toPlainText() == text ? 1 : 0;
        }
        box->close();
        QCOMPARE(shown, 2);
    });
    presenter.runAlert(text, text, QStringLiteral("Ok"), {}, {});
}

void TestAccessibilityWindow::textsStandOut_data()
{
    QTest::addColumn<QString>("theme");
    QTest::newRow("light") << QStringLiteral("light");
    QTest::newRow("dark") << QStringLiteral("dark");
}

void TestAccessibilityWindow::textsStandOut()
{
    QFETCH(const QString, theme);
    useTheme(theme);
    FakeWindow window;
    window.launch({a});
    QTRY_VERIFY(window.stateView(0));
    int checked = 0;
    for (const QWidget *widget : window.delegate->window()->findChildren<QWidget *>()) {
        checkContrast(*widget);
        checked += textsOf(*widget).isEmpty() ? 0 : 1;
    }
    QVERIFY(checked > 30);
    // Where frames will appear, the view draws a text of its own.
    auto *preview = window.widget<ImageView>(QStringLiteral("imageView"));
    QVERIFY(contrast(preview->palette().color(QPalette::WindowText),
                     preview->grab().toImage().pixelColor(1, 1)) >= leastContrast);
    const QPalette toolTips = QToolTip::palette();
    QVERIFY(contrast(toolTips.color(QPalette::ToolTipText),
                     toolTips.color(QPalette::ToolTipBase)) >= leastContrast);
}

void TestAccessibilityWindow::textsStandOutAfterAChangeOfTheme()
{
    FakeWindow window;
    window.launch();
    useTheme(QStringLiteral("dark"));
    QCoreApplication::processEvents();
    for (const QWidget *widget : window.delegate->window()->findChildren<QWidget *>())
        checkContrast(*widget);
}

void TestAccessibilityWindow::selectedStateStandsOut()
{
    QFETCH(const QString, theme);
    useTheme(theme);
    FakeWindow window;
    window.launch({a, b});
    QTRY_VERIFY(window.stateView(0) && window.stateView(1));
    window.select(b);
    const QLabel &selected = *window.stateView(0)->textField();
    const QLabel &other = *window.stateView(1)->textField();
    QCOMPARE(selected.foregroundRole(), QPalette::HighlightedText);
    QCOMPARE(other.foregroundRole(), QPalette::Text);
    checkContrast(selected);
    checkContrast(other);
    window.table()->clearSelection();
    QCOMPARE(selected.foregroundRole(), QPalette::Text);
}

void TestAccessibilityWindow::contrastIsTheGuidelines()
{
    QCOMPARE(contrast(Qt::black, Qt::white), 21.0);
    QCOMPARE(contrast(Qt::red, Qt::red), 1.0);
    QCOMPARE(qRound(100 * contrast(Qt::white, QColor(119, 119, 119))), 448);
    QCOMPARE(contrast(Qt::white, Qt::blue), contrast(Qt::blue, Qt::white));
}

QTEST_MAIN(TestAccessibilityWindow)
#include "tst_accessibility_window.moc"
