// SPDX-License-Identifier: MIT
#include "desktop/applicationservice.h"
#include "desktop/desktopnotification.h"
#include "desktop/displaysleep.h"
#include "desktop/filereveal.h"
#include "desktop/suspendinhibitor.h"
#include "support/events.h"
#include "support/logcapture.h"
#include "support/testprogram.h"

#include <QDesktopServices>
#include <QTest>

using namespace filmwright;

/// A machine without a session bus and without a system bus.
class TestWithoutBus : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void oneLineTellsWhatIsMissing();
    void everyInstanceStandsAlone();
    void displaySleepHasNoCookie();
    void suspendIsNotKeptOff();
    void notificationIsNotShown();
    void folderIsOpenedInstead();

    void open(const QUrl &url) { m_opened << url.toLocalFile(); }

private:
    QStringList m_opened;
};

void TestWithoutBus::oneLineTellsWhatIsMissing()
{
    const LogCapture log;
    ApplicationService service;
    QVERIFY(service.registerService());
    QCOMPARE(inhibitDisplaySleep(QStringLiteral("Working")), 0U);
    QCOMPARE(inhibitDisplaySleep(QStringLiteral("Working")), 0U);
    QCOMPARE(LogCapture::lines().size(), 1);
    QVERIFY(LogCapture::lines().first().startsWith(QStringLiteral("No session bus: ")));
}

void TestWithoutBus::everyInstanceStandsAlone()
{
    ApplicationService first;
    ApplicationService second;
    QVERIFY(first.registerService());
    QVERIFY(second.registerService());
    QVERIFY(!ApplicationService::handOver({QStringLiteral("/clip.MLV")}));
}

void TestWithoutBus::displaySleepHasNoCookie()
{
    QCOMPARE(inhibitDisplaySleep(QStringLiteral("Working")), 0U);
    uninhibitDisplaySleep(0);
}

void TestWithoutBus::suspendIsNotKeptOff()
{
    const LogCapture log;
    SuspendInhibitor inhibitor;
    inhibitor.inhibit(QStringLiteral("Working"));
    QTRY_COMPARE(LogCapture::lines().size(), 1);
    inhibitor.release();
    QVERIFY(LogCapture::lines().first().startsWith(
        QStringLiteral("The machine may suspend during a batch: ")));
}

void TestWithoutBus::notificationIsNotShown()
{
    const LogCapture log;
    showDesktopNotification(QStringLiteral("Batch finished"), QStringLiteral("clip.MLV"));
    deliverEvents();
    QCOMPARE(LogCapture::lines(), QStringList());
}

void TestWithoutBus::folderIsOpenedInstead()
{
    QDesktopServices::setUrlHandler(QStringLiteral("file"), this, "open");
    revealFile(QStringLiteral("/my footage/take #2.MLV"));
    QTRY_COMPARE(m_opened, QStringList{QStringLiteral("/my footage")});
    QDesktopServices::unsetUrlHandler(QStringLiteral("file"));
}

FILMWRIGHT_TEST(TestWithoutBus, QCoreApplication)
#include "tst_withoutbus.moc"
