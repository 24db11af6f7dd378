// SPDX-License-Identifier: MIT
#include "desktop/displaysleep.h"
#include "support/logcapture.h"
#include "support/standinservice.h"
#include "support/testprogram.h"

#include <QTest>

using namespace filmwright;

class TestDisplaySleep : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cookieIsTheServices();
    void cookieIsGivenBack();
    void inhibitionsInTurn();
    void withoutAServiceThereIsNoCookie();
    void grantAfterTheWaitIsTakenBack();

private:
    const QString m_name = QStringLiteral("org.freedesktop.ScreenSaver");
    const QString m_reason = QStringLiteral("Working on MLV extraction.");
    const QString m_inhibit = QStringLiteral("Inhibit(Filmwright, Working on MLV extraction.)");
};

void TestDisplaySleep::cookieIsTheServices()
{
    const StandInService screenSaver(m_name, alwaysAnswers({4000000000U}));
    QCOMPARE(inhibitDisplaySleep(m_reason), 4000000000U);
    QCOMPARE(screenSaver.calls(), QStringList{m_inhibit});
    QCOMPARE(screenSaver.paths(), QStringList{QStringLiteral("/org/freedesktop/ScreenSaver")});
    QVERIFY(screenSaver.lastCallerIsThere());
    uninhibitDisplaySleep(4000000000U);
}

void TestDisplaySleep::cookieIsGivenBack()
{
    const StandInService screenSaver(m_name, alwaysAnswers({7U}));
    uninhibitDisplaySleep(inhibitDisplaySleep(m_reason));
    QCOMPARE(screenSaver.calls(), (QStringList{m_inhibit, QStringLiteral("UnInhibit(7)")}));
}

void TestDisplaySleep::inhibitionsInTurn()
{
    const StandInService screenSaver(m_name, alwaysAnswers({7U}));
    for (int batch = 0; batch < 2; ++batch)
        uninhibitDisplaySleep(inhibitDisplaySleep(m_reason));
    const QString uninhibit = QStringLiteral("UnInhibit(7)");
    QCOMPARE(screenSaver.calls(), (QStringList{m_inhibit, uninhibit, m_inhibit, uninhibit}));
}

void TestDisplaySleep::withoutAServiceThereIsNoCookie()
{
    const LogCapture log;
    QCOMPARE(inhibitDisplaySleep(m_reason), 0U);
    QCOMPARE(LogCapture::lines().size(), 1);
    QVERIFY(
        LogCapture::lines().first().startsWith(QStringLiteral("The display may go to sleep: ")));
}

void TestDisplaySleep::grantAfterTheWaitIsTakenBack()
{
    StandInService screenSaver(m_name);
    screenSaver.fallSilent();
    const LogCapture log;
    QCOMPARE(inhibitDisplaySleep(m_reason), 0U);
    QCOMPARE(LogCapture::lines().size(), 1);
    QCOMPARE(screenSaver.calls(), QStringList{m_inhibit});
    QTRY_VERIFY(!screenSaver.lastCallerIsThere());
}

FILMWRIGHT_TEST(TestDisplaySleep, QCoreApplication)
#include "tst_displaysleep.moc"
