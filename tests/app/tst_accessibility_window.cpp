// SPDX-License-Identifier: MIT
// The window for people who have it read to them.
#include "fakewindow.h"

#include "app/imageview.h"
#include "app/messageboxpresenter.h"
#include "support/testprogram.h"

#include <QAccessible>
#include <QApplication>
#include <QComboBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QMessageBox>
#include <QMetaEnum>
#include <QProgressBar>
#include <QSpinBox>
#include <QTextDocument>
#include <QTimer>

using namespace filmwright;

namespace {

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
    void everyControlHasAName();
    void cellsAreSpoken();
    void windowsTreeHasTheStatusAndEveryRow();
    void failureIsSpoken();
    void alertIsPlainText();
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

FILMWRIGHT_TEST(TestAccessibilityWindow, QApplication)
#include "tst_accessibility_window.moc"
