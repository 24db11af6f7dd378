// SPDX-License-Identifier: MIT
// What is told of one recording, beside its row.
#include "fakewindow.h"

#include "app/detailswindow.h"
#include "support/testprogram.h"

#include <QClipboard>
#include <QDialogButtonBox>
#include <QGuiApplication>
#include <QPlainTextEdit>
#include <QPushButton>

using namespace filmwright;

class TestDetailsWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void factsAreShown();
    void selectionIsFollowed();
    void toolsLinesAreShownAndCopied();
    void doubleClickWithoutAMovieShowsThem();
    void textsAreNoMarkup();
    void buttonsAreInReachOnALowScreen();

private:
    static DetailsWindow *details(const FakeWindow &window)
    {
        return window.widget<DetailsWindow>(QStringLiteral("detailsWindow"));
    }
    static void show(FakeWindow &window, const QString &name)
    {
        window.select(name);
        window.action(QStringLiteral("detailsMenuItem"))->trigger();
    }
};

void TestDetailsWindow::factsAreShown()
{
    FakeWindow window(50);
    window.setRawInformation(QStringLiteral(" 1920x1080"), 14);
    window.launch();
    QVERIFY(!window.action(QStringLiteral("detailsMenuItem"))->isEnabled());
    window.add({a});
    show(window, a);
    QVERIFY(details(window)->isVisible());
    const QStringList lines = details(window)->wholeText().split(QLatin1Char('\n'));
    QCOMPARE(lines.value(0), a);
    QVERIFY2(lines.contains(QStringLiteral("Length: 0:02, 50 frames")),
             qPrintable(lines.join(u'|')));
    QVERIFY(lines.contains(QStringLiteral("Rate: 25 frames/s")));
    QVERIFY(lines.contains(QStringLiteral("Frame: 1920x1080, 14 bits")));
    QVERIFY(lines.contains(QStringLiteral("File: %1/%2").arg(window.recordings(), a)));
}

void TestDetailsWindow::selectionIsFollowed()
{
    FakeWindow window;
    window.launch({a, b});
    show(window, a);
    QCOMPARE(details(window)->windowTitle(), a);
    window.select(b);
    QCOMPARE(details(window)->windowTitle(), b);
    window.action(QStringLiteral("mergeNeighboursMenuItem"))->trigger();
    window.action(QStringLiteral("detailsMenuItem"))->trigger();
    QVERIFY(details(window)->wholeText().contains(QLatin1String("\nChosen: HDR\n")));
    window.action(QStringLiteral("removeMenuItem"))->trigger();
    QCOMPARE(details(window)->windowTitle(), b);
}

void TestDetailsWindow::toolsLinesAreShownAndCopied()
{
    FakeWindow window;
    window.setEncoding(QStringLiteral("echo 'Unknown encoder <h264>'; exit 1"));
    window.launch({a});
    show(window, a);
    window.pressStart();
    window.waitForEnd();
    const auto *log = window.widget<QPlainTextEdit>(QStringLiteral("detailsLog"));
    QVERIFY(log->isReadOnly());
    QTRY_VERIFY2(log->toPlainText()
                     .split(QLatin1Char('\n'))
                     .contains(QStringLiteral("ffmpeg: Unknown encoder <h264>")),
                 qPrintable(log->toPlainText()));
    QTRY_VERIFY(details(window)->wholeText().contains(QLatin1String("\nWarnings: ")));
    auto *buttons = details(window)->findChild<QDialogButtonBox *>();
    for (QAbstractButton *button : buttons->buttons())
        if (buttons->buttonRole(button) == QDialogButtonBox::ActionRole)
            button->click();
    const QString copied = QGuiApplication::clipboard()->text();
    QCOMPARE(copied, details(window)->wholeText());
    QVERIFY(copied.startsWith(QStringLiteral("a.MLV\n")));
    QVERIFY(copied.contains(QLatin1String("\nWarnings: ")));
    QVERIFY(copied.contains(QLatin1String("\nffmpeg: Unknown encoder <h264>\n")));
}

void TestDetailsWindow::doubleClickWithoutAMovieShowsThem()
{
    FakeWindow window;
    window.launch({a});
    QWidget *viewport = window.table()->viewport();
    const QPoint place = window.table()->visualRect(window.table()->model()->index(0, 0)).center();
    QTest::mouseClick(viewport, Qt::LeftButton, {}, place);
    QVERIFY(!details(window)->isVisible());
    QTest::mouseDClick(viewport, Qt::LeftButton, {}, place);
    QVERIFY(details(window)->isVisible());
    QCOMPARE(details(window)->windowTitle(), a);
}

void TestDetailsWindow::textsAreNoMarkup()
{
    DetailsWindow details(nullptr);
    details.showRecording(a, {{QStringLiteral("Lens"), QStringLiteral("<b>x</b>")}},
                          {QStringLiteral("<i>y</i>")});
    bool found = false;
    for (const QLabel *label : details.findChildren<QLabel *>()) {
        if (label->text() == QLatin1String("<b>x</b>")) {
            found = true;
            QCOMPARE(label->textFormat(), Qt::PlainText);
        }
    }
    QVERIFY(found);
    QCOMPARE(details.wholeText(), QStringLiteral("a.MLV\nLens: <b>x</b>\n\n<i>y</i>\n"));
}

void TestDetailsWindow::buttonsAreInReachOnALowScreen()
{
    QList<RecordingFact> facts;
    for (int number = 0; number < 16; ++number)
        facts << RecordingFact{QStringLiteral("Fact %1").arg(number), QStringLiteral("something")};
    DetailsWindow details(nullptr);
    details.showRecording(a, facts, {QStringLiteral("mlv_dump: done")});
    details.show();
    // 1366x768, as a person sees it at 200 %, without the bar of the title and that of the desktop.
    details.resize(600, 310);
    QCOMPARE(details.height(), 310);
    const auto *buttons = details.findChild<QDialogButtonBox *>();
    QVERIFY(details.rect().contains(buttons->geometry()));
    QVERIFY(details.height() <= details.screen()->availableSize().height());
}

FILMWRIGHT_TEST(TestDetailsWindow, QApplication)
#include "tst_details_window.moc"
