// SPDX-License-Identifier: MIT
// The window for people who don't see it well: texts stand out from what is behind them.
#include "fakewindow.h"

#include "app/imageview.h"
#include "app/readablepalette.h"
#include "support/testprogram.h"

#include <QApplication>
#include <QComboBox>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QSpinBox>
#include <QStyle>
#include <QToolButton>
#include <QToolTip>

using namespace filmwright;

namespace {

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
                     qPrintable(QStringLiteral("%1 '%2': %3 on %4")
                                    .arg(QLatin1String(widget.metaObject()->className()),
                                         widget.objectName(), text.name(), behind.name())));
        }
    }
}

} // namespace

class TestContrastWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { useTheme(QStringLiteral("light")); }

    void textsStandOut_data();
    void textsStandOut();
    void textsStandOutAfterAChangeOfTheme();
    void selectedStateStandsOut_data() { textsStandOut_data(); }
    void selectedStateStandsOut();
    void contrastIsTheGuidelines();
};

void TestContrastWindow::textsStandOut_data()
{
    QTest::addColumn<QString>("theme");
    QTest::newRow("light") << QStringLiteral("light");
    QTest::newRow("dark") << QStringLiteral("dark");
}

void TestContrastWindow::textsStandOut()
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

void TestContrastWindow::textsStandOutAfterAChangeOfTheme()
{
    FakeWindow window;
    window.launch();
    useTheme(QStringLiteral("dark"));
    QCoreApplication::processEvents();
    for (const QWidget *widget : window.delegate->window()->findChildren<QWidget *>())
        checkContrast(*widget);
}

void TestContrastWindow::selectedStateStandsOut()
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

void TestContrastWindow::contrastIsTheGuidelines()
{
    QCOMPARE(contrast(Qt::black, Qt::white), 21.0);
    QCOMPARE(contrast(Qt::red, Qt::red), 1.0);
    QCOMPARE(qRound(100 * contrast(Qt::white, QColor(119, 119, 119))), 448);
    QCOMPARE(contrast(Qt::white, Qt::blue), contrast(Qt::blue, Qt::white));
}

FILMWRIGHT_TEST(TestContrastWindow, QApplication)
#include "tst_contrast_window.moc"
