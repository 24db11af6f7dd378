// SPDX-License-Identifier: MIT
#include "desktop/applicationservice.h"
#include "support/logcapture.h"
#include "support/standinservice.h"
#include "support/testprogram.h"

#include <QDBusArgument>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDir>
#include <QTest>

using namespace filmwright;

class TestApplicationService : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanup();

    void openedUrisArriveAsPaths();
    void remoteUrisAreLeftOut();
    void activationBringsTheWindowToTheFront();
    void unknownActionBringsTheWindowToTheFront();
    void callerIsAnsweredWhileAHandlerStillRuns();
    void idIsFreeAgainAtTheEnd();
    void secondInstanceIsRefused();
    void filesAreHandedOver();
    void relativePathsAreHandedOverAbsolute();
    void startWithoutFilesOnlyActivates();
    void activationTokenTravels();
    void nobodyTakesOver();

private:
    QDBusPendingCall call(const QString &method, const QVariantList &arguments) const
    {
        QDBusMessage message = QDBusMessage::createMethodCall(
            m_id, m_path, QStringLiteral("org.freedesktop.Application"), method);
        message.setArguments(arguments);
        return m_desktop.asyncCall(message);
    }

    const QString m_id = QStringLiteral("org.filmwright.Filmwright");
    const QString m_path = QStringLiteral("/org/filmwright/Filmwright");
    /// Who calls the application: a connection of its own, as it has in life.
    QDBusConnection m_desktop{QString()};
};

/// Notes the service's signals in their order.
class Listener : public ApplicationService
{
public:
    Listener()
    {
        connect(this, &ApplicationService::activated, this,
                [this] { events << QStringLiteral("activated"); });
        connect(this, &ApplicationService::filesOpened, this,
                [this](const QStringList &paths) { events << paths; });
    }

    QStringList events;
};

void TestApplicationService::initTestCase()
{
    m_desktop =
        QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("desktop"));
    QVERIFY(m_desktop.isConnected());
}

void TestApplicationService::cleanup()
{
    qunsetenv("XDG_ACTIVATION_TOKEN");
    qunsetenv("DESKTOP_STARTUP_ID");
}

void TestApplicationService::openedUrisArriveAsPaths()
{
    Listener service;
    QVERIFY(service.registerService());
    call(QStringLiteral("Open"),
         {QStringList{QStringLiteral("file:///my%20footage/take%20%232.MLV"),
                      QStringLiteral("file:///Aufnahmen/100%25%20gr%C3%BCn.MLV")},
          QVariantMap()});
    QTRY_COMPARE(service.events, (QStringList{QStringLiteral("activated"),
                                              QStringLiteral("/my footage/take #2.MLV"),
                                              QStringLiteral("/Aufnahmen/100% grün.MLV")}));
}

void TestApplicationService::remoteUrisAreLeftOut()
{
    Listener service;
    QVERIFY(service.registerService());
    const LogCapture log;
    call(QStringLiteral("Open"),
         {QStringList{QStringLiteral("smb://server/clip.MLV"), QStringLiteral("file:///clip.MLV")},
          QVariantMap()});
    QTRY_COMPARE(service.events,
                 (QStringList{QStringLiteral("activated"), QStringLiteral("/clip.MLV")}));
    QCOMPARE(LogCapture::lines(),
             QStringList{QStringLiteral("Not a local file, left out: smb://server/clip.MLV")});
}

void TestApplicationService::activationBringsTheWindowToTheFront()
{
    Listener service;
    QVERIFY(service.registerService());
    call(QStringLiteral("Activate"),
         {QVariantMap{{QStringLiteral("activation-token"), QStringLiteral("token")}}});
    QTRY_COMPARE(service.events, QStringList{QStringLiteral("activated")});
    QCOMPARE(qgetenv("XDG_ACTIVATION_TOKEN"), QByteArray("token"));
}

void TestApplicationService::unknownActionBringsTheWindowToTheFront()
{
    Listener service;
    QVERIFY(service.registerService());
    call(QStringLiteral("ActivateAction"),
         {QStringLiteral("unknown"), QVariantList(), QVariantMap()});
    QTRY_COMPARE(service.events, QStringList{QStringLiteral("activated")});
}

void TestApplicationService::callerIsAnsweredWhileAHandlerStillRuns()
{
    ApplicationService service;
    QVERIFY(service.registerService());
    bool answered = false;
    const QDBusPendingCall opened = call(
        QStringLiteral("Open"), {QStringList{QStringLiteral("file:///clip.MLV")}, QVariantMap()});
    connect(&service, &ApplicationService::filesOpened, this,
            [&] { answered = QTest::qWaitFor([&] { return opened.isFinished(); }); });
    QTRY_VERIFY(answered);
}

void TestApplicationService::idIsFreeAgainAtTheEnd()
{
    {
        ApplicationService service;
        QVERIFY(service.registerService());
        QVERIFY(m_desktop.interface()->isServiceRegistered(m_id));
    }
    QVERIFY(!m_desktop.interface()->isServiceRegistered(m_id));
}

void TestApplicationService::secondInstanceIsRefused()
{
    const StandInService first(m_id);
    ApplicationService second;
    QVERIFY(!second.registerService());
    QVERIFY(m_desktop.interface()->isServiceRegistered(m_id));
}

void TestApplicationService::filesAreHandedOver()
{
    const StandInService first(m_id);
    QVERIFY(ApplicationService::handOver(
        {QStringLiteral("/my footage/take #2.MLV"), QStringLiteral("/Aufnahmen/100% grün.MLV")}));
    QCOMPARE(first.calls().size(), 1);
    QVERIFY(first.calls().first().startsWith(QStringLiteral("Open(")));
    QCOMPARE(first.paths(), QStringList{m_path});
    QCOMPARE(first.lastArguments().first().toStringList(),
             (QStringList{QStringLiteral("file:///my%20footage/take%20%232.MLV"),
                          QStringLiteral("file:///Aufnahmen/100%25%20gr%C3%BCn.MLV")}));
}

void TestApplicationService::relativePathsAreHandedOverAbsolute()
{
    const StandInService first(m_id);
    QVERIFY(ApplicationService::handOver({QStringLiteral("clip.MLV")}));
    QCOMPARE(
        first.lastArguments().first().toStringList(),
        QStringList{QStringLiteral("file://") + QDir::currentPath() + QStringLiteral("/clip.MLV")});
}

void TestApplicationService::startWithoutFilesOnlyActivates()
{
    const StandInService first(m_id);
    QVERIFY(ApplicationService::handOver({}));
    QCOMPARE(first.calls().size(), 1);
    QVERIFY(first.calls().first().startsWith(QStringLiteral("Activate(")));
}

void TestApplicationService::activationTokenTravels()
{
    qputenv("XDG_ACTIVATION_TOKEN", "token");
    qputenv("DESKTOP_STARTUP_ID", "start-up");
    const StandInService first(m_id);
    QVERIFY(ApplicationService::handOver({}));
    QCOMPARE(qdbus_cast<QVariantMap>(first.lastArguments().first()),
             (QVariantMap{{QStringLiteral("activation-token"), QStringLiteral("token")},
                          {QStringLiteral("desktop-startup-id"), QStringLiteral("start-up")}}));
}

void TestApplicationService::nobodyTakesOver()
{
    QVERIFY(!ApplicationService::handOver({QStringLiteral("/clip.MLV")}));
}

FILMWRIGHT_TEST(TestApplicationService, QCoreApplication)
#include "tst_applicationservice.moc"
