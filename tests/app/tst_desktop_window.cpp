// SPDX-License-Identifier: MIT
#include "fakewindow.h"

#include "app/showinfindertablecellview.h"

#include "support/launcherlistener.h"
#include "support/standinservice.h"
#include "support/testprogram.h"

#include <QDBusUnixFileDescriptor>

#include <unistd.h>

using namespace filmwright;

namespace {

/// Extracts until it is ended.

/// A lock of the login manager, of which nobody looks at the other end.
std::optional<QVariantList> suspendLock(const QString &, const QVariantList &)
{
    int ends[2];
    if (pipe(ends) != 0)
        return std::nullopt;
    const QDBusUnixFileDescriptor lock(ends[1]);
    close(ends[0]);
    close(ends[1]);
    return QVariantList{QVariant::fromValue(lock)};
}

} // namespace

/// What the desktop hears of the window's batches.
class TestDesktopWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();

    void displayStaysAwakeUntilTheEndOfTheBatch();
    void displayIsKeptAwakeOnce();
    void displayMaySleepAfterStop();
    void displayMaySleepAfterAnError();
    void displayMaySleepAfterQuit();
    void secondBatchTakesAnInhibitionOfItsOwn();
    void refusedStartTakesNoInhibition();
    void machineIsKeptFromSuspending();
    void endInTheBackgroundIsNotified();
    void batchThatAnErrorStopsIsNotified();
    void launcherShowsTheBatch();
    void shownRecordingIsRevealed();
    void showTellsWhenThereIsNoFileManager_data();
    void showTellsWhenThereIsNoFileManager();

private:
    const QString m_screenSaver = QStringLiteral("org.freedesktop.ScreenSaver");
    const QString m_inhibit = QStringLiteral("Inhibit(Filmwright, Working on MLV extraction.)");
    const QString m_uninhibit = QStringLiteral("UnInhibit(7)");
    const QString m_clip = QStringLiteral("clip.MLV");
};

void TestDesktopWindow::initTestCase()
{
    // Both buses are the test's private one.
    qputenv("DBUS_SYSTEM_BUS_ADDRESS", qgetenv("DBUS_SESSION_BUS_ADDRESS"));
}

void TestDesktopWindow::displayStaysAwakeUntilTheEndOfTheBatch()
{
    const StandInService screenSaver(m_screenSaver, alwaysAnswers({7U}));
    FakeWindow window;
    window.launch({QStringLiteral("a.MLV"), QStringLiteral("b.MLV")});
    QCOMPARE(screenSaver.calls(), QStringList());
    window.pressStart();
    QCOMPARE(screenSaver.calls(), QStringList{m_inhibit});
    QVERIFY(screenSaver.lastCallerIsThere());
    window.waitForEnd();
    QCOMPARE(screenSaver.calls(), (QStringList{m_inhibit, m_uninhibit}));
    window.quit();
    QCOMPARE(screenSaver.calls(), (QStringList{m_inhibit, m_uninhibit}));
}

void TestDesktopWindow::displayIsKeptAwakeOnce()
{
    const StandInService screenSaver(m_screenSaver, alwaysAnswers({7U}));
    FakeWindow window;
    window.launch();
    window.delegate->allowSleep();
    QCOMPARE(screenSaver.calls(), QStringList());
    window.delegate->avoidSleep();
    window.delegate->avoidSleep();
    QCOMPARE(screenSaver.calls(), QStringList{m_inhibit});
    window.delegate->allowSleep();
    QCOMPARE(screenSaver.calls(), (QStringList{m_inhibit, m_uninhibit}));
}

void TestDesktopWindow::displayMaySleepAfterStop()
{
    const StandInService screenSaver(m_screenSaver, alwaysAnswers({7U}));
    FakeWindow window;
    window.setExtraction(endless);
    window.launch({m_clip});
    window.pressStart();
    QCOMPARE(screenSaver.calls(), QStringList{m_inhibit});
    window.pressStart();
    QCOMPARE(screenSaver.calls(), (QStringList{m_inhibit, m_uninhibit}));
}

void TestDesktopWindow::displayMaySleepAfterAnError()
{
    const StandInService screenSaver(m_screenSaver, alwaysAnswers({7U}));
    FakeWindow window;
    window.setExtraction(QStringLiteral("echo '[ERROR] no frames'; sleep 60"));
    window.launch({m_clip});
    window.pressStart();
    window.waitForEnd();
    QTRY_COMPARE(screenSaver.calls(), (QStringList{m_inhibit, m_uninhibit}));
}

void TestDesktopWindow::displayMaySleepAfterQuit()
{
    const StandInService screenSaver(m_screenSaver, alwaysAnswers({7U}));
    FakeWindow window;
    window.setExtraction(endless);
    window.launch({m_clip});
    window.pressStart();
    window.quit();
    QCOMPARE(screenSaver.calls(), (QStringList{m_inhibit, m_uninhibit}));
}

void TestDesktopWindow::secondBatchTakesAnInhibitionOfItsOwn()
{
    const StandInService screenSaver(m_screenSaver, alwaysAnswers({7U}));
    FakeWindow window;
    window.launch({m_clip});
    for (int batch = 0; batch < 2; ++batch) {
        window.pressStart();
        window.waitForEnd();
    }
    QCOMPARE(screenSaver.calls(), (QStringList{m_inhibit, m_uninhibit, m_inhibit, m_uninhibit}));
}

void TestDesktopWindow::refusedStartTakesNoInhibition()
{
    const StandInService screenSaver(m_screenSaver, alwaysAnswers({7U}));
    FakeWindow window;
    window.launch({m_clip});
    window.calibrate(QStringLiteral("darkButton"), QStringLiteral("dark.MLV"));
    QVERIFY(QFile::remove(window.temporary(QStringLiteral("dark.mlv"))));
    window.pressStart();
    QVERIFY(!window.delegate->isWorking());
    QCOMPARE(screenSaver.calls(), QStringList());
}

void TestDesktopWindow::machineIsKeptFromSuspending()
{
    const StandInService loginManager(QStringLiteral("org.freedesktop.login1"), suspendLock);
    FakeWindow window;
    window.launch({m_clip});
    window.pressStart();
    window.waitForEnd();
    QCOMPARE(loginManager.calls(),
             QStringList{QStringLiteral(
                 "Inhibit(idle:sleep, Filmwright, Working on MLV extraction., block)")});
}

void TestDesktopWindow::endInTheBackgroundIsNotified()
{
    const StandInService notifications(
        QStringLiteral("org.freedesktop.Notifications"),
        [](const QString &method, const QVariantList &) -> QVariantList {
            return {method == QLatin1String("Notify") ? QVariant(1U) : QVariant(QStringList())};
        });
    FakeWindow window;
    window.launch({m_clip});
    QWidget other;
    other.show();
    other.activateWindow();
    QTRY_VERIFY(!window.delegate->window()->isActiveWindow());
    window.pressStart();
    window.waitForEnd();
    QTRY_COMPARE(notifications.lastArguments().value(4).toString(),
                 QStringLiteral("1 movie written"));
}

void TestDesktopWindow::batchThatAnErrorStopsIsNotified()
{
    const StandInService notifications(
        QStringLiteral("org.freedesktop.Notifications"),
        [](const QString &method, const QVariantList &) -> QVariantList {
            return {method == QLatin1String("Notify") ? QVariant(1U) : QVariant(QStringList())};
        });
    FakeWindow window;
    window.setExtraction(QStringLiteral("echo '[ERROR] no space'; sleep 60"));
    window.launch({m_clip});
    QWidget other;
    other.show();
    other.activateWindow();
    QTRY_VERIFY(!window.delegate->window()->isActiveWindow());
    window.pressStart();
    window.waitForEnd();
    QTRY_COMPARE(notifications.lastArguments().value(3).toString(),
                 QStringLiteral("The batch stops"));
    QCOMPARE(notifications.lastArguments().value(4).toString(),
             QStringLiteral("clip.MLV: no space"));
}

void TestDesktopWindow::launcherShowsTheBatch()
{
    const LauncherListener launcher;
    FakeWindow window;
    window.setExtraction(window.untilReleased() + FakeTools::extraction(2));
    window.launch({m_clip});
    QCOMPARE(launcher.updates(), QStringList());
    window.pressStart();
    QTRY_COMPARE(launcher.updates(), QStringList{QStringLiteral("0 shown")});
    window.release();
    window.waitForEnd();
    QTRY_COMPARE(launcher.updates().constLast(), QStringLiteral("0 hidden"));
}

void TestDesktopWindow::shownRecordingIsRevealed()
{
    const StandInService fileManager(QStringLiteral("org.freedesktop.FileManager1"));
    FakeWindow window;
    window.launch({QStringLiteral("Übergröße #1.MLV")});
    auto *cell = window.delegate->window()->findChild<ShowInFinderTableCellView *>();
    QTest::mouseClick(cell->openButton(), Qt::LeftButton);
    QTRY_COMPARE(fileManager.calls().size(), 1);
    const QUrl uri(fileManager.lastArguments().value(0).toStringList().value(0), QUrl::StrictMode);
    QCOMPARE(uri.toLocalFile(), window.delegate->projectList().front()->mlvPath());
}

void TestDesktopWindow::showTellsWhenThereIsNoFileManager_data()
{
    QTest::addColumn<bool>("byMenu");
    QTest::newRow("button of the row") << false;
    QTest::newRow("command of the menu") << true;
}

void TestDesktopWindow::showTellsWhenThereIsNoFileManager()
{
    QFETCH(const bool, byMenu);
    FakeWindow window;
    window.launch({m_clip});
    window.select(m_clip);
    auto *cell = window.delegate->window()->findChild<ShowInFinderTableCellView *>();
    if (byMenu)
        window.action(QStringLiteral("showMenuItem"))->trigger();
    else
        QTest::mouseClick(cell->openButton(), Qt::LeftButton);
    QTRY_COMPARE(
        window.status(),
        QStringLiteral("No file manager was found that shows %1").arg(window.recordings()));
}

FILMWRIGHT_TEST(TestDesktopWindow, QApplication)
#include "tst_desktop_window.moc"
