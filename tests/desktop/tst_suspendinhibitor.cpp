// SPDX-License-Identifier: MIT
#include "desktop/suspendinhibitor.h"
#include "support/logcapture.h"
#include "support/standinservice.h"
#include "support/testprogram.h"

#include <QDBusArgument>
#include <QDBusObjectPath>
#include <QTest>

#include <poll.h>
#include <unistd.h>

using namespace filmwright;

namespace {

/// A login manager that gives the write end of a pipe as its lock: the read end tells whether
/// somebody still holds it.
class LoginManager
{
public:
    LoginManager()
        : m_opened(pipe(m_ends) == 0)
        , m_service(QStringLiteral("org.freedesktop.login1"),
                    [this](const QString &, const QVariantList &) { return grant(); })
    {
    }
    ~LoginManager() { close(m_ends[0]); }

    const StandInService &service() const { return m_service; }
    bool isHeld() const
    {
        pollfd end = {m_ends[0], POLLIN, 0};
        return m_opened && poll(&end, 1, 0) == 0;
    }

private:
    std::optional<QVariantList> grant()
    {
        const QDBusUnixFileDescriptor lock(m_ends[1]); // a copy, which the message takes along
        close(m_ends[1]);
        return QVariantList{QVariant::fromValue(lock)};
    }

    int m_ends[2] = {-1, -1};
    const bool m_opened;
    StandInService m_service;
};

} // namespace

class TestSuspendInhibitor : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        // Both buses are the test's private one.
        qputenv("DBUS_SYSTEM_BUS_ADDRESS", qgetenv("DBUS_SESSION_BUS_ADDRESS"));
    }

    void loginManagersLockIsHeldUntilReleased();
    void lockEndsWithTheInhibitor();
    void secondInhibitAsksNobody();
    void portalIsAskedWhenTheLoginManagerRefuses();
    void portalsRequestIsClosed();
    void requestWithoutAnAnswerIsClosedToo();
    void releaseBeforeTheRefusalAsksNobodyElse();
    void withoutEitherALineSaysSo();

private:
    static QString portalsToken(const StandInService &portal)
    {
        return qdbus_cast<QVariantMap>(portal.lastArguments().value(2))
            .value(QStringLiteral("handle_token"))
            .toString();
    }

    const QString m_portal = QStringLiteral("org.freedesktop.portal.Desktop");
    const StandInService::Answer m_portalsAnswer =
        alwaysAnswers({QVariant::fromValue(QDBusObjectPath(QStringLiteral("/request")))});
    const QString m_reason = QStringLiteral("Working on MLV extraction.");
};

void TestSuspendInhibitor::loginManagersLockIsHeldUntilReleased()
{
    const LoginManager manager;
    SuspendInhibitor inhibitor;
    inhibitor.inhibit(m_reason);
    QTRY_COMPARE(manager.service().calls(),
                 QStringList{QStringLiteral(
                     "Inhibit(idle:sleep, Filmwright, Working on MLV extraction., block)")});
    manager.service().answerCalls(QDBusConnection::systemBus());
    QVERIFY(manager.isHeld());
    inhibitor.release();
    QTRY_VERIFY(!manager.isHeld());
}

void TestSuspendInhibitor::lockEndsWithTheInhibitor()
{
    const LoginManager manager;
    {
        SuspendInhibitor inhibitor;
        inhibitor.inhibit(m_reason);
        QTRY_COMPARE(manager.service().calls().size(), 1);
    }
    QTRY_VERIFY(!manager.isHeld());
}

void TestSuspendInhibitor::secondInhibitAsksNobody()
{
    const LoginManager manager;
    SuspendInhibitor inhibitor;
    inhibitor.inhibit(m_reason);
    inhibitor.inhibit(m_reason);
    manager.service().answerCalls(QDBusConnection::systemBus());
    QCOMPARE(manager.service().calls().size(), 1);
}

void TestSuspendInhibitor::portalIsAskedWhenTheLoginManagerRefuses()
{
    const StandInService manager(
        QStringLiteral("org.freedesktop.login1"),
        [](const QString &, const QVariantList &) { return std::nullopt; });
    const StandInService portal(m_portal, m_portalsAnswer);
    const LogCapture log;
    SuspendInhibitor inhibitor;
    inhibitor.inhibit(m_reason);
    QTRY_COMPARE(portal.calls().size(), 1);
    QCOMPARE(portal.paths(), QStringList{QStringLiteral("/org/freedesktop/portal/desktop")});
    QCOMPARE(portal.lastArguments().value(0).toString(), QString());
    QCOMPARE(portal.lastArguments().value(1).toUInt(), 4U + 8U);
    QCOMPARE(qdbus_cast<QVariantMap>(portal.lastArguments().value(2))
                 .value(QStringLiteral("reason"))
                 .toString(),
             m_reason);
    QCOMPARE(LogCapture::lines(), QStringList());
}

void TestSuspendInhibitor::portalsRequestIsClosed()
{
    const StandInService portal(m_portal, m_portalsAnswer);
    SuspendInhibitor inhibitor;
    inhibitor.inhibit(m_reason);
    QTRY_COMPARE(portal.calls().size(), 1);
    QString sender = QDBusConnection::sessionBus().baseService().mid(1);
    sender.replace(QLatin1Char('.'), QLatin1Char('_'));
    const QString request = QStringLiteral("/org/freedesktop/portal/desktop/request/%1/%2")
                                .arg(sender, portalsToken(portal));
    portal.answerCalls(QDBusConnection::sessionBus());
    inhibitor.release();
    QTRY_COMPARE(portal.calls().size(), 2);
    QCOMPARE(portal.calls().last(), QStringLiteral("Close()"));
    QCOMPARE(portal.paths().last(), request);
    inhibitor.release();
    portal.answerCalls(QDBusConnection::sessionBus());
    QCOMPARE(portal.calls().size(), 2);
}

void TestSuspendInhibitor::requestWithoutAnAnswerIsClosedToo()
{
    StandInService portal(m_portal);
    portal.fallSilent();
    SuspendInhibitor inhibitor;
    inhibitor.inhibit(m_reason);
    QTRY_COMPARE(portal.calls().size(), 1);
    inhibitor.release();
    QTRY_COMPARE(portal.calls().size(), 2);
    QCOMPARE(portal.calls().last(), QStringLiteral("Close()"));
}

void TestSuspendInhibitor::releaseBeforeTheRefusalAsksNobodyElse()
{
    const StandInService portal(m_portal, m_portalsAnswer);
    SuspendInhibitor inhibitor;
    inhibitor.inhibit(m_reason);
    inhibitor.release();
    portal.answerCalls(QDBusConnection::systemBus()); // so that the refusal has come
    portal.answerCalls(QDBusConnection::sessionBus());
    QCOMPARE(portal.calls(), QStringList());
}

void TestSuspendInhibitor::withoutEitherALineSaysSo()
{
    const LogCapture log;
    SuspendInhibitor inhibitor;
    inhibitor.inhibit(m_reason);
    QTRY_COMPARE(LogCapture::lines().size(), 1);
    QVERIFY(LogCapture::lines().first().startsWith(
        QStringLiteral("The machine may suspend during a batch: ")));
}

FILMWRIGHT_TEST(TestSuspendInhibitor, QCoreApplication)
#include "tst_suspendinhibitor.moc"
