// SPDX-License-Identifier: MIT
// How the window is closed, and what stays behind.
#include "fakewindow.h"

#include "support/testprogram.h"

using namespace filmwright;

class TestQuitWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void closingIsRefusedWhileWorking();
    void closingEndsTheApplication();
    void quitAsksWhileWorking();
    void quitDuringABatchStopsIt();
    void quitRemovesTheTemporaryDirectory();
    void quitKeepsTheTemporaryDirectoryWhenTold();
};

void TestQuitWindow::closingIsRefusedWhileWorking()
{
    FakeWindow window;
    window.setExtraction(endless);
    window.launch({a});
    window.pressStart();
    QVERIFY(!window.delegate->window()->close());
    QVERIFY(window.delegate->window()->isVisible());
    QVERIFY(window.delegate->isWorking());
    QCOMPARE(window.alerts.shown, QStringList());
    window.pressStart();
    QVERIFY(window.delegate->windowShouldClose());
}

void TestQuitWindow::closingEndsTheApplication()
{
    FakeWindow window;
    window.launch();
    constexpr int timedOut = 99;
    QTimer::singleShot(10000, this, [] { QCoreApplication::exit(timedOut); });
    QTimer::singleShot(0, this, [&window] { QVERIFY(window.delegate->window()->close()); });
    QCOMPARE(QCoreApplication::exec(), 0);
}

void TestQuitWindow::quitAsksWhileWorking()
{
    FakeWindow window;
    window.setExtraction(endless);
    window.launch({a});
    window.pressStart();
    window.alerts.answers = {1};
    window.action(QStringLiteral("quitMenuItem"))->trigger();
    QCOMPARE(window.alerts.shown,
             QStringList{QStringLiteral("A batch is running|The recordings that are not finished "
                                        "yet would get no movie. Quit all the same?|Go on "
                                        "working|Quit")});
    QVERIFY(window.delegate->isWorking());
    window.pressStart();
}

void TestQuitWindow::quitDuringABatchStopsIt()
{
    FakeWindow window;
    window.setExtraction(endless);
    window.launch({a});
    window.pressStart();
    window.alerts.answers = {0};
    constexpr int timedOut = 99;
    QTimer::singleShot(10000, this, [] { QCoreApplication::exit(timedOut); });
    QTimer::singleShot(0, window.action(QStringLiteral("quitMenuItem")), &QAction::trigger);
    QCOMPARE(QCoreApplication::exec(), 0);
    QVERIFY(!window.delegate->isWorking());
    QCOMPARE(window.states(), QStringList{ready});
}

void TestQuitWindow::quitRemovesTheTemporaryDirectory()
{
    FakeWindow window(1);
    window.launch();
    window.calibrate(QStringLiteral("darkButton"), QStringLiteral("dark.MLV"));
    const QString directory = window.temporary(QString());
    QVERIFY(QFileInfo::exists(directory));
    window.quit();
    QVERIFY(!QFileInfo::exists(directory));
}

void TestQuitWindow::quitKeepsTheTemporaryDirectoryWhenTold()
{
    FakeWindow window(1);
    window.launch();
    window.action(QStringLiteral("keepTempDirectoryMenuItem"))->trigger();
    window.calibrate(QStringLiteral("darkButton"), QStringLiteral("dark.MLV"));
    const QString average = window.temporary(QStringLiteral("dark.mlv"));
    window.quit();
    QVERIFY(QFileInfo::exists(average));
}

FILMWRIGHT_TEST(TestQuitWindow, QApplication)
#include "tst_quit_window.moc"
