// SPDX-License-Identifier: MIT
#include "desktop/suspendinhibitor.h"

#include "desktop/sessionbus.h"
#include "runner/systemlog.h"

#include <QDBusMessage>
#include <QDBusPendingReply>
#include <QUuid>

namespace filmwright {

namespace {

// Bits of the portal's Inhibit flags.
constexpr quint32 portalSuspend = 4;
constexpr quint32 portalIdle = 8;

const QString portalService = QStringLiteral("org.freedesktop.portal.Desktop");

/// Where the portal keeps the request of that token; known before it answers, so that a request can
/// be closed at any time.
QString portalRequestPath(const QDBusConnection &bus, const QString &token)
{
    QString sender = bus.baseService().mid(1);
    sender.replace(QLatin1Char('.'), QLatin1Char('_'));
    return QStringLiteral("/org/freedesktop/portal/desktop/request/%1/%2").arg(sender, token);
}

} // namespace

SuspendInhibitor::~SuspendInhibitor()
{
    release();
}

void SuspendInhibitor::inhibit(const QString &reason)
{
    if (m_request)
        return;
    m_request = std::make_unique<QObject>();
    askLoginManager(reason);
}

void SuspendInhibitor::release()
{
    m_request.reset();
    m_lock = QDBusUnixFileDescriptor();
    if (m_portalRequest.isEmpty())
        return;
    sessionBus().send(QDBusMessage::createMethodCall(
        portalService, m_portalRequest, QStringLiteral("org.freedesktop.portal.Request"),
        QStringLiteral("Close")));
    m_portalRequest.clear();
}

void SuspendInhibitor::askLoginManager(const QString &reason)
{
    QDBusMessage message = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.login1"), QStringLiteral("/org/freedesktop/login1"),
        QStringLiteral("org.freedesktop.login1.Manager"), QStringLiteral("Inhibit"));
    message << QStringLiteral("idle:sleep") << QStringLiteral("Filmwright") << reason
            << QStringLiteral("block");
    callAsynchronously(QDBusConnection::systemBus(), message, m_request.get(),
                       [this, reason](const QDBusPendingReply<QDBusUnixFileDescriptor> &lock) {
                           if (lock.isValid())
                               m_lock = lock.value();
                           else
                               askPortal(reason);
                       });
}

void SuspendInhibitor::askPortal(const QString &reason)
{
    const QDBusConnection bus = sessionBus();
    const QString token =
        QStringLiteral("filmwright_") + QUuid::createUuid().toString(QUuid::Id128);
    m_portalRequest = portalRequestPath(bus, token);
    QDBusMessage message = QDBusMessage::createMethodCall(
        portalService, QStringLiteral("/org/freedesktop/portal/desktop"),
        QStringLiteral("org.freedesktop.portal.Inhibit"), QStringLiteral("Inhibit"));
    message << QString() << (portalSuspend | portalIdle)
            << QVariantMap{{QStringLiteral("handle_token"), token},
                           {QStringLiteral("reason"), reason}};
    callAsynchronously(bus, message, m_request.get(), [this](const QDBusPendingCall &request) {
        if (!request.isError())
            return;
        m_portalRequest.clear();
        systemLog(QStringLiteral("The machine may suspend during a batch: %1")
                      .arg(request.error().message()));
    });
}

} // namespace filmwright
